#include "app/tui/key_bindings.hpp"

#include <algorithm>

#include "selfml/sfonode.hpp"

namespace vx::tui {
namespace {

// The entries of a bindings text: the lists inside (keys ...), or at the top level.
std::vector<SFONodePtr> entriesOf(const SFONodePtr& root) {
    std::vector<SFONodePtr> entries;
    for (const auto& list : root->extractLists()) {
        if (list->head() == "keys") {
            for (const auto& entry : list->extractLists()) entries.push_back(entry);
        } else {
            entries.push_back(list);
        }
    }
    return entries;
}

}  // namespace

KeyBindings KeyBindings::defaults() {
    KeyBindings bindings;
    std::vector<std::string> problems;
    bindings.apply(defaultBindingsText(), problems);
    return bindings;
}

void KeyBindings::apply(std::string_view selfmlText, std::vector<std::string>& problems) {
    auto root = SFONode::nodeFromString(selfmlText);
    if (!root) return;
    for (const auto& entry : entriesOf(root)) {
        std::string command = entry->head();
        if (command.empty()) continue;
        std::erase_if(m_commands, [&](const auto& pair) { return pair.second == command; });
        if (std::find(m_order.begin(), m_order.end(), command) == m_order.end()) m_order.push_back(command);
        for (const auto& name : entry->extractStrings()) {
            auto key = parseKeyName(name);
            if (!key) {
                problems.push_back("'" + name + "' is not a key (in " + command + ")");
                continue;
            }
            m_commands[*key] = command;
        }
    }
}

std::optional<std::string> KeyBindings::commandForKey(const KeyEvent& key) const {
    auto found = m_commands.find(normalizedKey(key));
    if (found == m_commands.end()) return std::nullopt;
    return found->second;
}

std::vector<KeyEvent> KeyBindings::keysForCommand(std::string_view command) const {
    std::vector<KeyEvent> keys;
    for (const auto& [key, name] : m_commands)
        if (name == command) keys.push_back(key);
    std::sort(keys.begin(), keys.end(), [](const KeyEvent& a, const KeyEvent& b) {
        std::string na = keyName(a), nb = keyName(b);
        return na.size() != nb.size() ? na.size() < nb.size() : na < nb;
    });
    return keys;
}

std::vector<std::string> KeyBindings::commands() const {
    std::vector<std::string> bound;
    for (const auto& command : m_order)
        if (!keysForCommand(command).empty()) bound.push_back(command);
    return bound;
}

}  // namespace vx::tui
