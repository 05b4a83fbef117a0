#include "process/utf8_text.hpp"

#include <cstdint>

namespace vx {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Length of the valid UTF-8 sequence starting at bytes[i], or 0 when it is malformed.
size_t validSequenceLength(std::string_view bytes, size_t i) {
    const auto byte = [&](size_t k) { return static_cast<uint8_t>(bytes[k]); };
    const uint8_t lead = byte(i);
    if (lead < 0x80) return 1;
    size_t length = 0;
    uint8_t low = 0x80, high = 0xBF;  // allowed range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;   // overlong
        if (lead == 0xED) high = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;   // overlong
        if (lead == 0xF4) high = 0x8F;  // above U+10FFFF
    } else {
        return 0;
    }
    if (i + length > bytes.size()) return 0;
    if (byte(i + 1) < low || byte(i + 1) > high) return 0;
    for (size_t k = 2; k < length; ++k)
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
    return length;
}

}  // namespace

std::string decodeUtf8Lossy(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    size_t i = 0;
    while (i < bytes.size()) {
        if (const size_t length = validSequenceLength(bytes, i)) {
            text.append(bytes.substr(i, length));
            i += length;
        } else {
            text.append(kReplacement);
            ++i;
        }
    }
    return text;
}

}  // namespace vx
