// Quick open in the editor (Ctrl-P): type a few letters of a path, pick a row with the arrows,
// Enter opens it, Escape closes. A query ending in "/" looks for a folder and lists what is in it.
//
// Every keystroke starts a search on the index's own queue and returns at once, so typing never
// waits for the search; the rows of the newest search replace the shown ones when it finishes, and
// a search overtaken by a newer keystroke is dropped (its delegate is let go).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/editor/modal.hpp"
#include "projects/quick_open.hpp"

namespace vx {
class VXProject;
}

namespace vx::editor {

class QuickOpenPanel final : public Modal {
public:
    explicit QuickOpenPanel(std::string root, QuickOpenIndex& index = ActionPanelFileModule::sharedIndex());
    bool handleKey(Editor& editor, const tui::KeyEvent& key) override;
    bool handlePaste(Editor& editor, std::string_view text) override;
    void draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const override;

    struct Results;

private:
    void search();

    std::string m_root;
    QuickOpenIndex& m_index;
    std::string m_query;
    std::shared_ptr<Results> m_results;
    std::shared_ptr<QuickOpenDelegate> m_delegate;
    int m_selected = 0;
    mutable int m_top = 0;  // the first row shown
};

// Makes the project of a file or folder the editor's current one: registers it, points quick open
// at its folder and keeps the index following the tree. Answers the project.
std::shared_ptr<VXProject> openProjectForPath(const std::string& path);
// The editor's current project, if one was opened.
std::shared_ptr<VXProject> currentProject();

// Shows the quick-open panel over the current project (opening the active file's project, or the
// working folder's, when there is none yet).
void showQuickOpen(Editor& editor);

// Registers quick-open.
void registerQuickOpenCommands(Editor& editor);

}  // namespace vx::editor
