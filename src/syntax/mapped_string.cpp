#include "syntax/mapped_string.hpp"

#include <algorithm>

namespace vx {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one code point at bytes[i]; advances i. Malformed input yields U+FFFD for one byte.
char32_t decodeUtf8(std::string_view bytes, size_t& i) {
    const auto c = static_cast<unsigned char>(bytes[i]);
    if (c < 0x80) {
        ++i;
        return c;
    }
    size_t extra;
    char32_t code, min;
    if ((c & 0xE0) == 0xC0) extra = 1, code = c & 0x1F, min = 0x80;
    else if ((c & 0xF0) == 0xE0) extra = 2, code = c & 0x0F, min = 0x800;
    else if ((c & 0xF8) == 0xF0) extra = 3, code = c & 0x07, min = 0x10000;
    else {
        ++i;
        return kReplacement;
    }
    if (i + extra >= bytes.size()) {
        ++i;
        return kReplacement;
    }
    for (size_t k = 1; k <= extra; ++k) {
        const auto d = static_cast<unsigned char>(bytes[i + k]);
        if ((d & 0xC0) != 0x80) {
            ++i;
            return kReplacement;
        }
        code = (code << 6) | (d & 0x3F);
    }
    if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        ++i;
        return kReplacement;
    }
    i += extra + 1;
    return code;
}

void appendUtf16(std::u16string& out, char32_t code) {
    if (code < 0x10000) {
        out += static_cast<char16_t>(code);
    } else {
        code -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (code >> 10));
        out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
}

void appendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

bool isHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool isLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

HUTF8MappedUTF16String HUTF8MappedUTF16String::fromUtf8(std::string_view bytes) {
    // Malformed bytes are rewritten as U+FFFD, so the UTF-8 side is rebuilt from the UTF-16 one.
    return fromUtf16(utf16FromUtf8(bytes));
}

HUTF8MappedUTF16String HUTF8MappedUTF16String::fromUtf16(std::u16string_view text) {
    HUTF8MappedUTF16String s;
    s.m_utf16.assign(text);
    s.m_utf8.reserve(text.size());
    s.m_byteOffsets.reserve(text.size() + 1);
    for (size_t i = 0; i < text.size(); ++i) {
        const auto offset = static_cast<uint32_t>(s.m_utf8.size());
        char32_t code = text[i];
        if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            code = 0x10000 + ((text[i] - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            s.m_byteOffsets.push_back(offset);
            s.m_byteOffsets.push_back(offset);
            ++i;
        } else {
            if (isHighSurrogate(text[i]) || isLowSurrogate(text[i])) code = kReplacement;
            s.m_byteOffsets.push_back(offset);
        }
        appendUtf8(s.m_utf8, code);
    }
    s.m_byteOffsets.push_back(static_cast<uint32_t>(s.m_utf8.size()));
    return s;
}

uint64_t HUTF8MappedUTF16String::utf8OffsetForUtf16(uint64_t offset) const {
    return m_byteOffsets[std::min<uint64_t>(offset, m_utf16.size())];
}

uint64_t HUTF8MappedUTF16String::utf16OffsetForUtf8(uint64_t byteOffset) const {
    byteOffset = std::min<uint64_t>(byteOffset, m_utf8.size());
    // The last unit whose character starts at or before the byte.
    auto it = std::upper_bound(m_byteOffsets.begin(), m_byteOffsets.end(), byteOffset);
    uint64_t index = static_cast<uint64_t>(it - m_byteOffsets.begin()) - 1;
    // Inside a surrogate pair both units share a start: report the pair's first unit.
    while (index > 0 && m_byteOffsets[index - 1] == m_byteOffsets[index]) --index;
    return index;
}

std::u16string utf16FromUtf8(std::string_view bytes) {
    std::u16string out;
    out.reserve(bytes.size());
    size_t i = 0;
    while (i < bytes.size()) appendUtf16(out, decodeUtf8(bytes, i));
    return out;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t code = text[i];
        if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            code = 0x10000 + ((text[i] - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (isHighSurrogate(text[i]) || isLowSurrogate(text[i])) {
            code = kReplacement;
        }
        appendUtf8(out, code);
    }
    return out;
}

}  // namespace vx
