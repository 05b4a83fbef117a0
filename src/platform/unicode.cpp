#include "platform/unicode.hpp"

#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <climits>

namespace vx {
namespace {

// A code point appendUtf8 and utf8 may write: anything else is written as U+FFFD.
UChar32 writable(char32_t c) {
    return c > 0x10FFFF || U_IS_SURROGATE(c) ? kReplacementCharacter : static_cast<UChar32>(c);
}

}  // namespace

char32_t decodeUtf8(std::string_view text, size_t& position) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const size_t start = position;
    UChar32 c;
    U8_NEXT(bytes, position, text.size(), c);
    if (c >= 0) return static_cast<char32_t>(c);
    position = start + 1;  // U8_NEXT skips the whole broken sequence; we replace byte by byte
    return kReplacementCharacter;
}

char32_t decodeUtf16(std::u16string_view text, size_t& position) {
    UChar32 c;
    U16_NEXT(text.data(), position, text.size(), c);
    return static_cast<char32_t>(c);
}

size_t utf8SequenceLength(unsigned char lead) {
    return U8_IS_SINGLE(lead) ? 1 : U8_IS_LEAD(lead) ? U8_COUNT_TRAIL_BYTES(lead) + 1 : 0;
}

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string result(text.size(), u'\0');  // never more units than bytes
    // Valid text, nearly all of it, goes through ICU's conversion in one call; text with a bad
    // byte is walked byte by byte so each one is its own replacement (see the header).
    if (text.size() <= INT32_MAX) {
        int32_t length = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strFromUTF8(reinterpret_cast<UChar*>(result.data()), static_cast<int32_t>(result.size()), &length,
                      text.data(), static_cast<int32_t>(text.size()), &status);
        if (U_SUCCESS(status)) {
            result.resize(static_cast<size_t>(length));
            return result;
        }
    }
    size_t out = 0;
    for (size_t i = 0; i < text.size();) {
        const char32_t c = decodeUtf8(text, i);
        U16_APPEND_UNSAFE(result.data(), out, c);
    }
    result.resize(out);
    return result;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string result;
    appendUtf8FromUtf16(result, text);
    return result;
}

void appendUtf8FromUtf16(std::string& out, std::u16string_view text) {
    // In pieces through a buffer on the stack: ICU counts in 32 bits, and a long text would
    // otherwise need three bytes of room for each unit up front.
    constexpr size_t kPiece = 8192;
    char buffer[kPiece * 3];  // a unit never takes more than three bytes
    out.reserve(out.size() + text.size());
    while (!text.empty()) {
        size_t piece = std::min(text.size(), kPiece);
        if (piece < text.size() && U16_IS_LEAD(text[piece - 1])) --piece;  // keep a pair together
        int32_t length = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strToUTF8WithSub(buffer, sizeof buffer, &length, reinterpret_cast<const UChar*>(text.data()),
                           static_cast<int32_t>(piece), kReplacementCharacter, nullptr, &status);
        if (U_SUCCESS(status)) out.append(buffer, static_cast<size_t>(length));
        text.remove_prefix(piece);
    }
}

std::string decodeUtf8Lossy(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        const size_t start = i;
        const char32_t c = decodeUtf8(bytes, i);
        if (c == kReplacementCharacter && i == start + 1) appendUtf8(text, c);
        else text.append(bytes.substr(start, i - start));
    }
    return text;
}

void appendUtf8(std::string& out, char32_t codepoint) {
    const UChar32 c = writable(codepoint);
    const size_t start = out.size();
    out.resize(start + U8_LENGTH(c));
    size_t i = start;
    U8_APPEND_UNSAFE(reinterpret_cast<uint8_t*>(out.data()), i, c);
}

std::string utf8(char32_t codepoint) {
    std::string out;
    appendUtf8(out, codepoint);
    return out;
}

void appendUtf16(std::u16string& out, char32_t codepoint) {
    const auto c = static_cast<UChar32>(codepoint);
    if (U_IS_BMP(c)) {
        out += static_cast<char16_t>(c);
    } else {
        out += static_cast<char16_t>(U16_LEAD(c));
        out += static_cast<char16_t>(U16_TRAIL(c));
    }
}

}  // namespace vx
