// String encodings by the platform's numbers (1 ASCII, 4 UTF-8, 5 ISO Latin 1, 10 UTF-16,
// 0x8C000100 UTF-32, ...), their display names, and strict conversion through ICU: a decode that
// meets a byte sequence the encoding does not define, or an encode that meets a character the
// encoding cannot hold, fails instead of substituting.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx {

namespace encoding {
inline constexpr uint64_t kASCII = 1;
inline constexpr uint64_t kUTF8 = 4;
inline constexpr uint64_t kISOLatin1 = 5;
inline constexpr uint64_t kSymbol = 8;
inline constexpr uint64_t kUTF16 = 10;
inline constexpr uint64_t kWindowsLatin1 = 12;
inline constexpr uint64_t kMacRoman = 30;
inline constexpr uint64_t kUTF16BigEndian = 0x90000100;
inline constexpr uint64_t kUTF16LittleEndian = 0x94000100;
inline constexpr uint64_t kUTF32 = 0x8C000100;
inline constexpr uint64_t kUTF32BigEndian = 0x98000100;
inline constexpr uint64_t kUTF32LittleEndian = 0x9C000100;
}  // namespace encoding

// The encodings a document may be in without being flagged in the menu: 1, 4, 5, 10, 0x8C000100.
bool vx_isAllowedEncoding(uint64_t encoding);

// The display name of an encoding ("Unicode (UTF-8)"); empty for a number the table lacks.
std::string localizedNameOfStringEncoding(uint64_t encoding);

// The encoding menu: numbers and names in parallel, in menu order.
struct EncodingMenu {
    std::vector<uint64_t> encodings;
    std::vector<std::string> names;
};
EncodingMenu fileEncodingLocalNames();
// The menu as shown for a document in `current`: 0 is shown as UTF-8, and an encoding that
// vx_isAllowedEncoding refuses gets one extra item of its own at the end.
EncodingMenu encodingMenuForDocument(uint64_t current);

// Every encoding of the table that can be read and written here, in table order.
std::vector<uint64_t> availableEncodings();

// The platform number for a charset name as detectors and ICU give it ("ISO-8859-1" gives 5,
// "WINDOWS-1252" gives 12); nothing for an unknown name.
std::optional<uint64_t> encodingForCharsetName(std::string_view name);

// Byte order for the encodings that have one (UTF-16 and UTF-32 written with a byte-order mark).
enum class ByteOrder { Little, Big };

// Decodes bytes strictly; nothing when they are not valid in the encoding (or it has no converter).
// For UTF-16 and UTF-32 without a stated order, a leading byte-order mark decides and is dropped.
std::optional<std::u16string> decodeStrictly(std::string_view bytes, uint64_t encoding);

// Encodes text strictly, piece by piece as `next` hands it over (empty view: done). UTF-16 and
// UTF-32 (10 and 0x8C000100) start with a byte-order mark in `order`. Nothing when a character
// cannot be represented.
std::optional<std::string> encodeStrictly(const std::function<std::optional<std::u16string_view>()>& next,
                                          uint64_t encoding, ByteOrder order = ByteOrder::Little);
std::optional<std::string> encodeStrictly(std::u16string_view text, uint64_t encoding,
                                          ByteOrder order = ByteOrder::Little);

}  // namespace vx
