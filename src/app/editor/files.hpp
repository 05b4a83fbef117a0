// Files in the editor: opening paths into tabs, the file list for folders, saving, closing with
// a prompt when there are unsaved changes, and recovery files that keep unsaved text when the
// terminal hangs up or the process is told to end.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "document/single_file_document.hpp"

namespace vx::editor {

class Editor;
class Tab;

// A new, untitled document that chooses its language from the bundled and user truffles.
std::unique_ptr<VXSingleFileDocument> newDocument();

// Opens each file in a tab and each folder as a file list; with no paths, the bundled samples.
// "file:LINE[:COLUMN]" and "+LINE file" open the file at that place (see file_location.hpp).
void openStartupPaths(Editor& editor, const std::vector<std::string>& paths);
// Opens a file in a new tab (or shows the tab that has it already); a path that does not exist
// yet opens an empty tab that saving creates. False, with the reason on the message line, when
// the file cannot be read.
bool openFile(Editor& editor, const std::string& path);
// Puts the caret at a 1-based line and column (in characters), clamped to the text.
void goToLocation(Tab& tab, uint64_t line, uint64_t column);
// Lists the files under a folder to choose one to open.
void showFileList(Editor& editor, const std::string& folder);

// Saves a tab to its path, or to `path` (save as). False, with the reason on the message line,
// when the file cannot be written; the file on disk and the text are then as they were.
bool saveTab(Editor& editor, Tab& tab, const std::string& path = {});

// "~" and "~/x" name the home folder, "~user/x" another user's; other paths stand as they are.
std::string expandTilde(const std::string& path);

// The folder recovery files go to: Recovery in the user data folder.
std::string recoveryDirectory();
// Writes every tab with unsaved changes to the recovery folder; answers how many were written.
int writeRecoveryFiles(Editor& editor);
// When recovery files are waiting, asks whether to open them; `then` runs once the question is
// answered (at once when there is none).
void offerRecoveredFiles(Editor& editor, std::function<void(Editor&)> then = {});

// Registers save, save-as, open, new-file, close-tab and quit.
void registerFileCommands(Editor& editor);

}  // namespace vx::editor
