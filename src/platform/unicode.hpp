// The one UTF-8/UTF-16 codec: the engine counts text in UTF-16 units; files, command lines, the
// terminal and child processes speak UTF-8. Built on ICU's U8_NEXT/U16_NEXT and its conversions
// (kept out of this header: Oniguruma's header defines UChar as well).
//
// What malformed input becomes, for every caller:
//
//   UTF-8 in (utf16FromUtf8, decodeUtf8, decodeUtf8Lossy): every byte that does not begin a
//     well-formed sequence (a stray continuation byte, a lead byte whose sequence is truncated or
//     broken, an overlong form, an encoded surrogate, a value past U+10FFFF) is one U+FFFD, and
//     decoding goes on at the next byte. Command lines, key scripts, terminal input and child
//     output are shown as well as they can be, and one bad byte costs one cell: "\xE2\x82A" is
//     U+FFFD U+FFFD "A", not one replacement for the broken pair as ICU's substitution gives.
//   UTF-16 out to UTF-8 (utf8FromUtf16, appendUtf8FromUtf16): a lone surrogate is U+FFFD, so the
//     bytes written are always valid UTF-8.
//   UTF-16 walked by code point (decodeUtf16): a lone surrogate comes back as itself; the terminal
//     lays it out as one replacement cell and the text keeps it.
//   One code point out (appendUtf8, utf8): a surrogate or a value past U+10FFFF is U+FFFD.
//   One code point to UTF-16 (appendUtf16): the caller hands in a code point (U+0000..U+10FFFF).
//
// Strict conversion, which fails instead of substituting, is the document's (document/encodings).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vx {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

std::u16string utf16FromUtf8(std::string_view text);
std::string utf8FromUtf16(std::u16string_view text);
void appendUtf8FromUtf16(std::string& out, std::u16string_view text);

// Valid UTF-8 comes back unchanged; malformed bytes become U+FFFD (three bytes each).
std::string decodeUtf8Lossy(std::string_view bytes);

// Decodes the code point at `position` and advances past it (one byte for a malformed one).
char32_t decodeUtf8(std::string_view text, size_t& position);
// Decodes the code point at `position` and advances past it (one unit for a lone surrogate).
char32_t decodeUtf16(std::u16string_view text, size_t& position);

// The length of the UTF-8 sequence a lead byte starts: 1..4, or 0 for a byte that starts none
// (a continuation byte, 0xC0, 0xC1, 0xF5..0xFF).
size_t utf8SequenceLength(unsigned char lead);

void appendUtf8(std::string& out, char32_t codepoint);
std::string utf8(char32_t codepoint);
void appendUtf16(std::u16string& out, char32_t codepoint);

}  // namespace vx
