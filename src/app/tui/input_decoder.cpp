#include "app/tui/input_decoder.hpp"

#include <array>
#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "app/tui/utf8.hpp"

namespace vx::tui {
namespace {

constexpr std::string_view kPasteEnd = "\x1b[201~";
// A CSI sequence longer than this is garbage; its ESC is taken as a key and the rest as text.
constexpr size_t kLongestSequence = 64;

// The modifier parameter of xterm-style sequences: 1 + bits, with Meta folded into Alt.
uint8_t modifiersFromParameter(int parameter) {
    if (parameter < 2) return 0;
    int bits = parameter - 1;
    uint8_t mods = bits & (kShift | kAlt | kCtrl | kSuper);
    if (bits & 32) mods |= kAlt;
    return mods;
}

std::vector<int> parseParameters(std::string_view text) {
    std::vector<int> values;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(';', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view field = text.substr(start, end - start);
        // Sub-parameters after ':' (alternate keys, event types) are not used.
        field = field.substr(0, field.find(':'));
        int value = 0;
        std::from_chars(field.data(), field.data() + field.size(), value);
        values.push_back(value);
        start = end + 1;
    }
    return values;
}

int parameterAt(const std::vector<int>& values, size_t index, int fallback) {
    return index < values.size() && values[index] != 0 ? values[index] : fallback;
}

std::optional<Key> tildeKey(int number) {
    switch (number) {
        case 1: case 7: return Key::Home;
        case 2: return Key::Insert;
        case 3: return Key::Delete;
        case 4: case 8: return Key::End;
        case 5: return Key::PageUp;
        case 6: return Key::PageDown;
        case 11: return Key::F1;
        case 12: return Key::F2;
        case 13: return Key::F3;
        case 14: return Key::F4;
        case 15: return Key::F5;
        case 17: return Key::F6;
        case 18: return Key::F7;
        case 19: return Key::F8;
        case 20: return Key::F9;
        case 21: return Key::F10;
        case 23: return Key::F11;
        case 24: return Key::F12;
        default: return std::nullopt;
    }
}

std::optional<Key> letterKey(char final) {
    switch (final) {
        case 'A': return Key::Up;
        case 'B': return Key::Down;
        case 'C': return Key::Right;
        case 'D': return Key::Left;
        case 'H': return Key::Home;
        case 'F': return Key::End;
        case 'P': return Key::F1;
        case 'Q': return Key::F2;
        case 'R': return Key::F3;
        case 'S': return Key::F4;
        default: return std::nullopt;
    }
}

// A key reported by its code point (CSI u and modifyOtherKeys): a few codes are named keys.
KeyEvent keyForCodepoint(char32_t code, uint8_t modifiers) {
    switch (code) {
        case 13: return {Key::Enter, 0, modifiers};
        case 9: return {Key::Tab, 0, modifiers};
        case 27: return {Key::Escape, 0, modifiers};
        case 127: case 8: return {Key::Backspace, 0, modifiers};
        default: return {Key::Character, code, modifiers};
    }
}

KeyEvent controlKey(unsigned char byte) {
    switch (byte) {
        case 0x0d: return {Key::Enter, 0, 0};
        case 0x09: return {Key::Tab, 0, 0};
        case 0x7f: return {Key::Backspace, 0, 0};
        case 0x08: return {Key::Backspace, 0, kCtrl};
        case 0x1b: return {Key::Escape, 0, 0};
        case 0x00: return {Key::Character, U' ', kCtrl};
        case 0x1c: return {Key::Character, U'\\', kCtrl};
        case 0x1d: return {Key::Character, U']', kCtrl};
        case 0x1e: return {Key::Character, U'^', kCtrl};
        case 0x1f: return {Key::Character, U'/', kCtrl};
        default: return {Key::Character, static_cast<char32_t>(U'a' + byte - 1), kCtrl};
    }
}

}  // namespace

void InputDecoder::feed(std::string_view bytes) {
    m_buffer.append(bytes);
    while (!m_buffer.empty()) {
        if (m_inPaste) {
            decodePaste();
            if (m_inPaste) return;
            continue;
        }
        size_t used = decodeOne(m_buffer);
        if (used == 0) return;
        m_buffer.erase(0, used);
    }
}

std::vector<InputEvent> InputDecoder::takeEvents() {
    return std::exchange(m_events, {});
}

void InputDecoder::flushPending() {
    m_flushing = true;
    if (m_inPaste) {
        // The paste never ended: keep what came rather than lose it.
        m_paste += m_buffer;
        m_buffer.clear();
        m_events.push_back(PasteEvent{std::exchange(m_paste, {})});
        m_inPaste = false;
    }
    feed({});
    m_flushing = false;
}

void InputDecoder::emitKey(KeyEvent key) {
    m_events.push_back(normalizedKey(key));
}

void InputDecoder::decodePaste() {
    size_t end = m_buffer.find(kPasteEnd);
    if (end != std::string::npos) {
        m_paste.append(m_buffer, 0, end);
        m_buffer.erase(0, end + kPasteEnd.size());
        m_events.push_back(PasteEvent{std::exchange(m_paste, {})});
        m_inPaste = false;
        return;
    }
    // Keep back a tail that may be the start of the terminator.
    size_t keep = 0;
    for (size_t n = std::min(m_buffer.size(), kPasteEnd.size() - 1); n > 0; --n)
        if (std::string_view(m_buffer).substr(m_buffer.size() - n) == kPasteEnd.substr(0, n)) {
            keep = n;
            break;
        }
    m_paste.append(m_buffer, 0, m_buffer.size() - keep);
    m_buffer.erase(0, m_buffer.size() - keep);
}

size_t InputDecoder::decodeOne(std::string_view bytes) {
    auto byte = static_cast<unsigned char>(bytes[0]);
    if (byte != 0x1b) return decodeCharacter(bytes, 0);
    if (bytes.size() == 1) {
        if (!m_flushing) return 0;
        emitKey({Key::Escape, 0, 0});
        return 1;
    }
    if (bytes[1] == '[') {
        size_t used = decodeCsi(bytes);
        if (used || !m_flushing) return used;
        emitKey({Key::Character, U'[', kAlt});
        return 2;
    }
    if (bytes[1] == 'O') {
        size_t used = decodeSs3(bytes);
        if (used || !m_flushing) return used;
        emitKey({Key::Character, U'O', kAlt});
        return 2;
    }
    if (bytes[1] == 0x1b) {
        emitKey({Key::Escape, 0, 0});
        return 1;
    }
    size_t used = decodeCharacter(bytes.substr(1), kAlt);
    return used ? used + 1 : 0;
}

size_t InputDecoder::decodeCharacter(std::string_view bytes, uint8_t modifiers) {
    auto byte = static_cast<unsigned char>(bytes[0]);
    if (byte < 0x20 || byte == 0x7f) {
        KeyEvent key = controlKey(byte);
        key.modifiers |= modifiers;
        emitKey(key);
        return 1;
    }
    size_t length = utf8SequenceLength(byte);
    if (length > 1 && bytes.size() < length && !m_flushing) {
        // Wait for the rest of the sequence, unless what came already cannot be one.
        bool plausible = true;
        for (size_t i = 1; i < bytes.size(); ++i)
            if ((static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80) plausible = false;
        if (plausible) return 0;
    }
    size_t position = 0;
    char32_t c = decodeUtf8(bytes, position);
    emitKey({Key::Character, c, modifiers});
    return position;
}

size_t InputDecoder::decodeSs3(std::string_view bytes) {
    if (bytes.size() < 3) return 0;
    if (auto key = letterKey(bytes[2])) emitKey({*key, 0, 0});
    return 3;
}

size_t InputDecoder::decodeCsi(std::string_view bytes) {
    size_t end = 2;
    while (end < bytes.size() && end < kLongestSequence) {
        auto c = static_cast<unsigned char>(bytes[end]);
        if (c >= 0x40 && c <= 0x7e) break;
        if (c < 0x20) {
            // A control character inside a sequence: the ESC was a key of its own.
            emitKey({Key::Escape, 0, 0});
            return 1;
        }
        ++end;
    }
    if (end >= bytes.size()) return 0;
    if (end >= kLongestSequence) {
        emitKey({Key::Escape, 0, 0});
        return 1;
    }
    char final = bytes[end];
    std::string_view body = bytes.substr(2, end - 2);
    char marker = 0;
    if (!body.empty() && (body[0] == '<' || body[0] == '>' || body[0] == '?' || body[0] == '=')) {
        marker = body[0];
        body.remove_prefix(1);
    }
    size_t used = end + 1;
    auto params = parseParameters(body);

    if (marker == '<' && (final == 'M' || final == 'm') && params.size() >= 3) {
        int code = params[0];
        MouseEvent mouse;
        mouse.x = std::max(params[1], 1) - 1;
        mouse.y = std::max(params[2], 1) - 1;
        if (code & 4) mouse.modifiers |= kShift;
        if (code & 8) mouse.modifiers |= kAlt;
        if (code & 16) mouse.modifiers |= kCtrl;
        int button = code & 3;
        if (code & 64) {
            static constexpr MouseAction kWheel[] = {MouseAction::WheelUp, MouseAction::WheelDown,
                                                     MouseAction::WheelLeft, MouseAction::WheelRight};
            mouse.action = kWheel[button];
        } else if (final == 'm') {
            mouse.action = MouseAction::Release;
            mouse.button = static_cast<uint8_t>(button == 3 ? 0 : button);
        } else if (code & 32) {
            mouse.action = button == 3 ? MouseAction::Move : MouseAction::Drag;
            mouse.button = static_cast<uint8_t>(button == 3 ? 0 : button);
        } else {
            mouse.action = MouseAction::Press;
            mouse.button = static_cast<uint8_t>(button);
        }
        m_events.push_back(mouse);
        return used;
    }
    if (marker) return used;  // replies to queries and other private reports

    uint8_t modifiers = modifiersFromParameter(parameterAt(params, 1, 1));
    if (final == '~') {
        int number = parameterAt(params, 0, 0);
        if (number == 200) {
            m_inPaste = true;
            return used;
        }
        if (number == 27 && params.size() >= 3) {
            emitKey(keyForCodepoint(static_cast<char32_t>(params[2]), modifiers));
            return used;
        }
        if (auto key = tildeKey(number)) emitKey({*key, 0, modifiers});
        return used;
    }
    if (final == 'u') {
        int code = parameterAt(params, 0, 0);
        // Codes in the private-use area are keys (keypad, media) that the editor does not bind.
        if (code > 0 && !(code >= 0xE000 && code <= 0xF8FF) && code <= 0x10FFFF)
            emitKey(keyForCodepoint(static_cast<char32_t>(code), modifiers));
        return used;
    }
    if (final == 'Z') {
        emitKey({Key::Tab, 0, kShift});
        return used;
    }
    if (auto key = letterKey(final)) emitKey({*key, 0, modifiers});
    return used;
}

}  // namespace vx::tui
