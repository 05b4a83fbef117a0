// HUTF8MappedUTF16String: one text held both as UTF-16 (what the engine counts in) and as
// UTF-8 (what files, terminals and byte-oriented matchers use), with the offsets of each
// UTF-16 unit in the UTF-8 bytes.
//
//     UTF-16  a  é  😀(2 units)  b        offsets 0 1 2 3 4 5
//     UTF-8   a  é(2)  😀(4)     b        offsets 0 1 3 3 7 8   (inside a pair: the pair's start)
//
// Bytes that are not UTF-8 read as U+FFFD one byte at a time; unpaired surrogates write as U+FFFD.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/unicode.hpp"

namespace vx {

class HUTF8MappedUTF16String {
public:
    static HUTF8MappedUTF16String fromUtf8(std::string_view bytes);
    static HUTF8MappedUTF16String fromUtf16(std::u16string_view text);

    const std::u16string& utf16() const { return m_utf16; }
    const std::string& utf8() const { return m_utf8; }
    // Byte offset of a UTF-16 offset (0..length); clamped to the end.
    uint64_t utf8OffsetForUtf16(uint64_t offset) const;
    // UTF-16 offset of the character that holds a byte offset (0..bytes); clamped to the end.
    uint64_t utf16OffsetForUtf8(uint64_t byteOffset) const;

private:
    std::u16string m_utf16;
    std::string m_utf8;
    std::vector<uint32_t> m_byteOffsets;  // one per UTF-16 unit, plus the end
};

}  // namespace vx
