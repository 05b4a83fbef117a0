#include "syntax/mapped_string.hpp"

#include <algorithm>

namespace vx {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

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

}  // namespace vx
