// Key events as the editor sees them, and their names in key-binding files.
//
// A key is either a character (a Unicode code point) or one of the named keys, plus the
// modifiers held with it. Names are written the way bindings files spell them:
//
//     ctrl+s   ctrl+shift+z   alt+1   shift+left   f3   ctrl+tab   enter
//
// Control characters arrive from the terminal as their own bytes (Ctrl-S is 0x13); the decoder
// turns them into the letter with Ctrl held, so that bindings never deal with raw bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vx::tui {

enum class Key : uint8_t {
    Character,
    Enter, Tab, Backspace, Escape,
    Up, Down, Left, Right, Home, End, PageUp, PageDown, Insert, Delete,
    F1, F2, F3, F4, F5, F6, F7, F8, F9, F10, F11, F12,
};

// Bit values as terminals encode them (the modifier parameter is 1 + these bits).
enum Modifier : uint8_t { kShift = 1, kAlt = 2, kCtrl = 4, kSuper = 8 };

struct KeyEvent {
    Key key = Key::Character;
    char32_t codepoint = 0;  // for Key::Character
    uint8_t modifiers = 0;

    friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};

// Shape a key the way bindings compare it: a letter typed with Ctrl or Alt is its lower-case
// letter with Shift noted as a modifier, so "ctrl+shift+z" matches whichever way a terminal
// reports it; a plain upper-case letter stays as typed (it is text).
KeyEvent normalizedKey(KeyEvent key);

// "ctrl+shift+z", "alt+1", "shift+tab", "space", "a". Modifiers come first in a fixed order.
std::string keyName(const KeyEvent& key);
// Reads a name written by a person: modifiers in any order and case, "-" or "+" between parts
// ("Ctrl-S", "c-s" and "ctrl+s" are one key). Nothing when the name is not a key.
std::optional<KeyEvent> parseKeyName(std::string_view name);

struct KeyHash {
    size_t operator()(const KeyEvent& key) const {
        return (static_cast<size_t>(key.codepoint) << 16) ^ (static_cast<size_t>(key.key) << 8) ^ key.modifiers;
    }
};

}  // namespace vx::tui
