#include "app/tui/key_bindings.hpp"

#include <algorithm>
#include <cctype>

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

// Finds the 1-based line of each entry in the text: entry i is the next "(" followed by its head
// after where entry i-1 was found.
class EntryLines {
public:
    explicit EntryLines(std::string_view text) : m_text(text) {}
    size_t lineOf(std::string_view head) {
        for (size_t at = m_text.find('(', m_position); at != std::string_view::npos; at = m_text.find('(', at + 1)) {
            size_t start = at + 1;
            while (start < m_text.size() && (m_text[start] == ' ' || m_text[start] == '\t')) ++start;
            const size_t end = start + head.size();
            if (m_text.substr(start, head.size()) != head) continue;
            if (end < m_text.size() && !std::isspace(static_cast<unsigned char>(m_text[end])) && m_text[end] != ')') continue;
            m_line += static_cast<size_t>(std::count(m_text.begin() + static_cast<std::ptrdiff_t>(m_position),
                                                     m_text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
            m_position = at;
            return m_line;
        }
        return m_line;
    }

private:
    std::string_view m_text;
    size_t m_position = 0;
    size_t m_line = 1;
};

}  // namespace

KeyBindings KeyBindings::defaults() {
    KeyBindings bindings;
    std::vector<std::string> problems;
    bindings.apply(defaultBindingsText(), problems);
    return bindings;
}

void KeyBindings::apply(std::string_view selfmlText, std::vector<std::string>& problems,
                        const std::function<bool(std::string_view)>& isCommand) {
    auto root = SFONode::nodeFromString(selfmlText);
    if (!root) return;
    EntryLines lines(selfmlText);
    for (const auto& entry : entriesOf(root)) {
        std::string command = entry->head();
        if (command.empty()) continue;
        const std::string where = "line " + std::to_string(lines.lineOf(command)) + ": ";
        if (isCommand && !isCommand(command)) {
            problems.push_back(where + "there is no command '" + command + "'");
            continue;
        }
        std::vector<KeyEvent> keys;
        const auto names = entry->extractStrings();
        for (const auto& name : names) {
            if (auto key = parseKeyName(name)) keys.push_back(*key);
            else problems.push_back(where + "'" + name + "' is not a key (in " + command + ")");
        }
        // Keys given but none usable: the command keeps the keys it had rather than losing them all.
        if (!names.empty() && keys.empty()) continue;
        std::erase_if(m_commands, [&](const auto& pair) { return pair.second == command; });
        if (std::find(m_order.begin(), m_order.end(), command) == m_order.end()) m_order.push_back(command);
        for (const auto& key : keys) m_commands[key] = command;
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
