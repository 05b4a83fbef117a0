#include "platform/unicode.hpp"

#include <cstdint>

namespace vx {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one code point at `i` and advances past it; invalid sequences decode as U+FFFD and
// advance by one byte.
char32_t decodeUtf8(std::string_view text, size_t& i) {
    auto byte = [&](size_t k) { return static_cast<uint8_t>(text[k]); };
    uint8_t lead = byte(i);
    if (lead < 0x80) {
        ++i;
        return lead;
    }
    int extra = lead >= 0xF0 && lead < 0xF5 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 && lead < 0xE0 ? 1 : -1;
    if (extra < 0 || i + extra >= text.size()) {
        ++i;
        return kReplacement;
    }
    char32_t value = lead & (0x3F >> extra);
    for (int k = 1; k <= extra; ++k) {
        uint8_t next = byte(i + k);
        if ((next & 0xC0) != 0x80) {
            ++i;
            return kReplacement;
        }
        value = (value << 6) | (next & 0x3F);
    }
    bool overlong = (extra == 2 && value < 0x800) || (extra == 3 && value < 0x10000);
    if (overlong || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        ++i;
        return kReplacement;
    }
    i += extra + 1;
    return value;
}

}  // namespace

void appendUtf8(std::string& out, char32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) c = kReplacement;
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        char32_t c = decodeUtf8(text, i);
        if (c >= 0x10000) {
            c -= 0x10000;
            result.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            result.push_back(static_cast<char16_t>(c));
        }
    }
    return result;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string result;
    appendUtf8FromUtf16(result, text);
    return result;
}

void appendUtf8FromUtf16(std::string& result, std::u16string_view text) {
    result.reserve(result.size() + text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c < 0x80) {  // most source text
            result += static_cast<char>(c);
            continue;
        }
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = kReplacement;  // a lone surrogate
        }
        appendUtf8(result, c);
    }
}

}  // namespace vx
