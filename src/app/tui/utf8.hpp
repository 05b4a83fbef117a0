// Code points for the terminal layer: the terminal speaks UTF-8, the text storage counts UTF-16
// units (whole-string conversions are the platform's). Malformed input decodes as U+FFFD, one per bad byte.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/unicode.hpp"

namespace vx::tui {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

std::string utf8(char32_t codepoint);

// Length of the UTF-8 sequence that starts with this byte: 1..4, or 0 for a byte that cannot
// start one (a continuation byte or 0xF8..0xFF).
size_t utf8SequenceLength(unsigned char lead);

// Decodes one code point at `position`, advancing it; a malformed or truncated sequence yields
// U+FFFD and consumes one byte.
char32_t decodeUtf8(std::string_view text, size_t& position);

// Decodes one code point from UTF-16 at `position`, advancing it; a lone surrogate decodes as itself.
inline char32_t decodeUtf16(std::u16string_view text, size_t& position) {
    char32_t unit = text[position++];
    if (unit >= 0xD800 && unit < 0xDC00 && position < text.size()) {
        char32_t low = text[position];
        if (low >= 0xDC00 && low < 0xE000) {
            ++position;
            return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
    }
    return unit;
}

void appendUtf16(std::u16string& out, char32_t codepoint);

}  // namespace vx::tui
