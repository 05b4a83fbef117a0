// Turns the bytes a terminal sends into key, paste and mouse events.
//
// Understood: UTF-8 text; control characters (Ctrl-letter, Tab, Enter, Backspace); Alt as an ESC
// prefix; CSI and SS3 keys with xterm modifier parameters (ESC [1;5C is ctrl+right); the
// "CSI code ; modifiers u" and xterm "modifyOtherKeys" (ESC [27;mod;code~) forms that tell
// ctrl+shift+z from ctrl+z; bracketed paste (ESC [200~ ... ESC [201~) and SGR mouse reports
// (ESC [<b;x;yM). Replies the editor did not ask for (focus, cursor reports) are dropped.
//
// A lone ESC cannot be told from the start of a sequence until more bytes come or none do: the
// caller feeds what it read and, when nothing more arrives within a short time while
// hasPendingSequence() is true, calls flushPending() to take what is left as typed keys.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "app/tui/key.hpp"

namespace vx::tui {

struct PasteEvent {
    std::string text;  // UTF-8, line breaks as the terminal sent them
    friend bool operator==(const PasteEvent&, const PasteEvent&) = default;
};

enum class MouseAction : uint8_t { Press, Release, Drag, Move, WheelUp, WheelDown, WheelLeft, WheelRight };

struct MouseEvent {
    MouseAction action = MouseAction::Press;
    uint8_t button = 0;  // 0 left, 1 middle, 2 right
    int x = 0, y = 0;    // cell, 0-based from the top left
    uint8_t modifiers = 0;
    friend bool operator==(const MouseEvent&, const MouseEvent&) = default;
};

struct ResizeEvent {
    int width = 0, height = 0;
    friend bool operator==(const ResizeEvent&, const ResizeEvent&) = default;
};

using InputEvent = std::variant<KeyEvent, PasteEvent, MouseEvent, ResizeEvent>;

class InputDecoder {
public:
    void feed(std::string_view bytes);
    std::vector<InputEvent> takeEvents();
    bool hasPendingSequence() const { return !m_buffer.empty() || m_inPaste; }
    void flushPending();

private:
    // Decodes one event at the front of the buffer; 0 when the bytes there are not complete yet.
    size_t decodeOne(std::string_view bytes);
    size_t decodeCsi(std::string_view bytes);
    size_t decodeSs3(std::string_view bytes);
    size_t decodeCharacter(std::string_view bytes, uint8_t modifiers);
    void decodePaste();
    void emitKey(KeyEvent key);

    std::string m_buffer;
    std::vector<InputEvent> m_events;
    bool m_inPaste = false;
    bool m_flushing = false;
    std::string m_paste;
};

}  // namespace vx::tui
