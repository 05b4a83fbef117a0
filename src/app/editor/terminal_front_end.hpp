// The editor in the real terminal: raw mode, the event loop, drawing frames, and what happens on
// resize, suspend, hang-up and termination.
#pragma once

#include <string>
#include <vector>

namespace vx::editor {

class Editor;

// Opens the paths (files, or folders through the file list) and runs until the user quits.
// Answers the process's exit status.
int runTerminalEditor(const std::vector<std::string>& paths);

// Where the user's key bindings live: keys.selfml in the configuration folder.
std::string userKeyBindingsPath();
// Applies the user's key bindings over the defaults; problems go to the message line.
void loadUserKeyBindings(Editor& editor);

}  // namespace vx::editor
