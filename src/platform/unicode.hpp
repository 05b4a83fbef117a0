// UTF-8 and UTF-16 conversions: the engine counts text in UTF-16 units; files, command lines and
// child processes speak UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace vx {

// Malformed input becomes U+FFFD rather than failing (a lone surrogate likewise): text from a
// command line or a child process is shown as well as it can be.
std::u16string utf16FromUtf8(std::string_view text);
std::string utf8FromUtf16(std::u16string_view text);
// The same conversion, appended to `out`.
void appendUtf8FromUtf16(std::string& out, std::u16string_view text);
// Appends one code point in UTF-8; a surrogate or a value past U+10FFFF becomes U+FFFD.
void appendUtf8(std::string& out, char32_t codepoint);

}  // namespace vx
