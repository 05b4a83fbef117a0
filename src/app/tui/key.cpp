#include "app/tui/key.hpp"

#include <array>
#include <span>
#include <utility>

#include "app/tui/utf8.hpp"

namespace vx::tui {
namespace {

constexpr std::array<std::pair<std::string_view, Key>, 27> kKeyNames{{
    {"enter", Key::Enter}, {"tab", Key::Tab}, {"backspace", Key::Backspace}, {"escape", Key::Escape},
    {"up", Key::Up}, {"down", Key::Down}, {"left", Key::Left}, {"right", Key::Right},
    {"home", Key::Home}, {"end", Key::End}, {"pageup", Key::PageUp}, {"pagedown", Key::PageDown},
    {"insert", Key::Insert}, {"delete", Key::Delete},
    {"f1", Key::F1}, {"f2", Key::F2}, {"f3", Key::F3}, {"f4", Key::F4}, {"f5", Key::F5}, {"f6", Key::F6},
    {"f7", Key::F7}, {"f8", Key::F8}, {"f9", Key::F9}, {"f10", Key::F10}, {"f11", Key::F11}, {"f12", Key::F12},
    {"character", Key::Character},
}};

// Other spellings people use; the first column of kKeyNames is what keyName writes.
constexpr std::array<std::pair<std::string_view, Key>, 7> kKeyAliases{{
    {"return", Key::Enter}, {"esc", Key::Escape}, {"pgup", Key::PageUp}, {"pgdn", Key::PageDown},
    {"del", Key::Delete}, {"ins", Key::Insert}, {"bs", Key::Backspace},
}};

constexpr std::array<std::pair<std::string_view, char32_t>, 5> kCharacterNames{{
    {"space", U' '}, {"plus", U'+'}, {"minus", U'-'}, {"lt", U'<'}, {"gt", U'>'},
}};

std::string lowerAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

std::optional<uint8_t> modifierNamed(std::string_view name) {
    if (name == "ctrl" || name == "control" || name == "c") return kCtrl;
    if (name == "shift" || name == "s") return kShift;
    if (name == "alt" || name == "meta" || name == "a" || name == "m") return kAlt;
    if (name == "super" || name == "cmd") return kSuper;
    return std::nullopt;
}

}  // namespace

KeyEvent normalizedKey(KeyEvent key) {
    if (key.key != Key::Character) return key;
    char32_t c = key.codepoint;
    bool chord = key.modifiers & (kCtrl | kAlt | kSuper);
    if (chord && c >= U'A' && c <= U'Z') {
        key.codepoint = c - U'A' + U'a';
        key.modifiers |= kShift;
    } else if (!chord && (key.modifiers & kShift) && c >= U'a' && c <= U'z') {
        key.codepoint = c - U'a' + U'A';
        key.modifiers &= ~kShift;
    } else if (!chord && (key.modifiers & kShift) && c != U' ') {
        // A shifted symbol already is the symbol the terminal sent ("!" for shift+1).
        key.modifiers &= ~kShift;
    }
    return key;
}

std::string keyName(const KeyEvent& key) {
    std::string name;
    if (key.modifiers & kCtrl) name += "ctrl+";
    if (key.modifiers & kAlt) name += "alt+";
    if (key.modifiers & kSuper) name += "super+";
    if (key.modifiers & kShift) name += "shift+";
    if (key.key != Key::Character) {
        for (auto [text, value] : kKeyNames)
            if (value == key.key) return name + std::string(text);
    }
    for (auto [text, value] : kCharacterNames)
        if (value == key.codepoint) return name + std::string(text);
    appendUtf8(name, key.codepoint);
    return name;
}

std::optional<KeyEvent> parseKeyName(std::string_view name) {
    if (name.empty()) return std::nullopt;
    // The key is what follows the last separator, except that a name ending in a separator
    // ("ctrl+-") names the separator itself.
    size_t keyStart = 0;
    for (size_t i = 0; i + 1 < name.size(); ++i)
        if (name[i] == '+' || name[i] == '-') keyStart = i + 1;
    std::string_view keyPart = name.substr(keyStart);

    KeyEvent key;
    size_t partStart = 0;
    while (keyStart > 0 && partStart < keyStart - 1) {
        size_t end = partStart;
        while (end < keyStart - 1 && name[end] != '+' && name[end] != '-') ++end;
        auto modifier = modifierNamed(lowerAscii(name.substr(partStart, end - partStart)));
        if (!modifier) return std::nullopt;
        key.modifiers |= *modifier;
        partStart = end + 1;
    }

    size_t position = 0;
    char32_t first = decodeUtf8(keyPart, position);
    if (position == keyPart.size() && first != kReplacementCharacter) {
        // "Ctrl-S" means ctrl+s; Shift is written out when it is meant.
        if ((key.modifiers & (kCtrl | kAlt | kSuper)) && first >= U'A' && first <= U'Z') first += U'a' - U'A';
        key.codepoint = first;
        return normalizedKey(key);
    }
    std::string lower = lowerAscii(keyPart);
    for (auto [text, value] : kCharacterNames)
        if (text == lower) {
            key.codepoint = value;
            return normalizedKey(key);
        }
    using Table = std::span<const std::pair<std::string_view, Key>>;
    for (Table table : {Table(kKeyNames), Table(kKeyAliases)})
        for (auto [text, value] : table)
            if (text == lower && value != Key::Character) {
                key.key = value;
                return key;
            }
    return std::nullopt;
}

}  // namespace vx::tui
