// Reading a file into a text storage: how the encoding is found, and the reading algorithm that
// turns what was found into the document's text and encoding.
//
// Finding the encoding (what `readPlainText` reports as detected), first that applies:
//   1. a byte-order mark: UTF-8, UTF-16 (10, either order) or UTF-32 (0x8C000100, either order);
//   2. only bytes below 0x80: ASCII (1);
//   3. valid UTF-8: 4;
//   4. the charset detector's answer (uchardet), when the bytes decode strictly in it and the text
//      encodes back to the very same bytes (its ISO-8859-1 is 5, its windows-1252 is 12);
//   5. otherwise Mac Roman (30), which reads every byte.
// Only regular files are read: a folder, a pipe or a device is refused before anything is read
// from it (a pipe or /dev/zero would never end).
// ASCII and UTF-8 are decoded as the file is read, a megabyte at a time, straight into the
// storage, so a large file never sits in memory twice.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "document/encodings.hpp"
#include "document/text_storage.hpp"

namespace vx {

struct PlainText {
    std::unique_ptr<VXTextStorage> storage;  // null when nothing could be read
    uint64_t detectedEncoding = 0;           // 0: none detected
    ByteOrder byteOrder = ByteOrder::Little;  // for UTF-16 and UTF-32
    bool byteOrderMark = false;               // the bytes began with a byte-order mark
    int error = 0;                            // errno when the file could not be read
    std::string notRegular = {};              // what the path is when it is not a regular file ("a folder")
};

// Reads a file as plain text, detecting its encoding as above.
PlainText readPlainText(const std::string& path);
// Reads a file strictly as UTF-8 (a leading UTF-8 byte-order mark is dropped); null when it is not.
std::unique_ptr<VXTextStorage> readStrictUTF8(const std::string& path);

// The same detection over bytes already in memory.
PlainText plainTextFromBytes(std::string_view bytes);

struct ReadResult {
    std::unique_ptr<VXTextStorage> storage;
    uint64_t encoding = 0;
    ByteOrder byteOrder = ByteOrder::Little;
    bool byteOrderMark = false;
    // The bytes were valid in no encoding: the text is the Mac Roman reading, and saving it as
    // UTF-8 would not give the same bytes back.
    bool validInNoEncoding = false;
};

// The reading algorithm: a detected encoding other than 0 and 30 is kept (ASCII reported as UTF-8);
// otherwise the file is read again strictly as UTF-8, and when that fails too the platform's text is
// kept, still reported as UTF-8, so that it will be saved as UTF-8 (and marked validInNoEncoding).
ReadResult resolveRead(PlainText platform, const std::function<std::unique_ptr<VXTextStorage>()>& readUTF8);

}  // namespace vx
