#include "app/tui/utf8.hpp"

namespace vx::tui {

std::string utf8(char32_t codepoint) {
    std::string out;
    appendUtf8(out, codepoint);
    return out;
}

size_t utf8SequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    if (lead < 0xF5) return 4;
    return 0;
}

char32_t decodeUtf8(std::string_view text, size_t& position) {
    auto lead = static_cast<unsigned char>(text[position]);
    size_t length = utf8SequenceLength(lead);
    if (length == 1) {
        ++position;
        return lead;
    }
    if (length == 0 || position + length > text.size()) {
        ++position;
        return kReplacementCharacter;
    }
    char32_t c = lead & (0x7F >> length);
    for (size_t i = 1; i < length; ++i) {
        auto byte = static_cast<unsigned char>(text[position + i]);
        if ((byte & 0xC0) != 0x80) {
            ++position;
            return kReplacementCharacter;
        }
        c = (c << 6) | (byte & 0x3F);
    }
    // Overlong forms, surrogates and values past U+10FFFF are not characters.
    static constexpr char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < kMinimum[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) {
        ++position;
        return kReplacementCharacter;
    }
    position += length;
    return c;
}

void appendUtf16(std::u16string& out, char32_t c) {
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        c -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (c >> 10));
        out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
}

}  // namespace vx::tui
