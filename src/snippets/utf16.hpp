// UTF-8 and UTF-16 conversions at the edges of the snippet engine (command line, shell output).
#pragma once

#include <string>
#include <string_view>

namespace vx {

// Malformed input becomes U+FFFD rather than failing: text from a shell command or a command
// line is shown as well as it can be.
std::u16string utf8ToUtf16(std::string_view text);
std::string utf16ToUtf8(std::u16string_view text);

}  // namespace vx
