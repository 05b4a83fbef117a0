// Bytes a child wrote, read as UTF-8 text.
#pragma once

#include <string>
#include <string_view>

namespace vx {

// Valid UTF-8 comes back unchanged; each malformed sequence (a stray byte, a truncated,
// overlong or surrogate encoding) becomes U+FFFD, so the result is always valid UTF-8.
std::string decodeUtf8Lossy(std::string_view bytes);

}  // namespace vx
