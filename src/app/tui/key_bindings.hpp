// Which command each key runs, read from self-ml:
//
//     (keys
//         (save ctrl+s)
//         (redo ctrl+shift+z ctrl+y)
//         (quit))                       # a command with no keys is unbound
//
// The editor starts from its built-in defaults and applies the user's file over them: every
// command the file names gets exactly the keys given there, and a key given there is taken away
// from whatever command had it before.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "app/tui/key.hpp"

namespace vx::tui {

class KeyBindings {
public:
    // The built-in bindings.
    static KeyBindings defaults();
    static std::string_view defaultBindingsText();

    // Applies bindings text over these. What cannot be used is skipped and described in
    // `problems` with its line ("line 3: 'ctrl+banana' is not a key (in quit)"): a key name that
    // is not a key, and, when `isCommand` is given, an entry naming no command. An entry whose
    // keys are all unusable leaves the command's keys as they were.
    void apply(std::string_view selfmlText, std::vector<std::string>& problems,
               const std::function<bool(std::string_view)>& isCommand = {});

    std::optional<std::string> commandForKey(const KeyEvent& key) const;
    // The keys of a command, in a stable order (for help texts).
    std::vector<KeyEvent> keysForCommand(std::string_view command) const;
    std::vector<std::string> commands() const;

private:
    std::unordered_map<KeyEvent, std::string, KeyHash> m_commands;
    std::vector<std::string> m_order;  // commands in the order they were first bound
};

}  // namespace vx::tui
