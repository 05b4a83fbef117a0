#include "app/main_job.hpp"

#include "app/editor/terminal_front_end.hpp"

namespace vx::app {

// `vx` alone, or with files and folders: the editor in the terminal.
int runMainJob(const std::vector<std::string>& paths) {
    return editor::runTerminalEditor(paths);
}

}  // namespace vx::app
