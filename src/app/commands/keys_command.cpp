// vx keys: the built-in key bindings, in the format of the user's keys.selfml.
#include "app/commands/command.hpp"
#include "app/tui/key_bindings.hpp"

namespace vx::cli {
namespace {

void registerKeys(CLI::App& app) {
    auto* keys = app.add_subcommand("keys", "Print the built-in key bindings (the format of keys.selfml)");
    keys->callback([] { writeOutput(std::string(tui::KeyBindings::defaultBindingsText())); });
}

const CommandRegistration registration("keys", registerKeys);

}  // namespace
}  // namespace vx::cli
