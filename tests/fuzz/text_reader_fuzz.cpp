// A file's bytes read as a document would read them: encoding detection (byte-order marks,
// ASCII, UTF-8, the charset detector, the Mac Roman fallback) and decoding. Besides memory
// safety under the sanitizers it checks that something is always read, and that bytes detected
// as ASCII or UTF-8 read as exactly their UTF-8 decoding.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "document/text_reader.hpp"
#include "platform/unicode.hpp"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const vx::PlainText text = vx::plainTextFromBytes(bytes);
    check(text.storage != nullptr);
    check(text.detectedEncoding != 0);
    if (text.detectedEncoding == 1 || text.detectedEncoding == 4) {
        const std::string_view body = bytes.substr(0, 3) == "\xEF\xBB\xBF" ? bytes.substr(3) : bytes;
        check(text.storage->string() == vx::utf16FromUtf8(body));
    }
    return 0;
}
