#include "app/main_job.hpp"

#include "app/editor/terminal_front_end.hpp"
#include "settings/user_defaults_settings_context.hpp"

namespace vx::app {

// `vx` alone, or with files and folders: the editor in the terminal.
int runMainJob(const std::vector<std::string>& paths) {
    const int status = editor::runTerminalEditor(paths);
    // The periodic writer stops with the run loop: settings changed in its last interval are
    // written now rather than lost.
    auto& settings = VXUserDefaultsSettingsContext::globalContext();
    if (settings.hasChanged()) settings.write();
    return status;
}

}  // namespace vx::app
