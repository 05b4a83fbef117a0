#include "platform/unicode.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace vx {
namespace {

constexpr char32_t R = kReplacementCharacter;

std::u16string utf16Of(const std::u32string& codepoints) {
    std::u16string out;
    for (char32_t c : codepoints) appendUtf16(out, c);
    return out;
}

std::string utf8Of(const std::u32string& codepoints) {
    std::string out;
    for (char32_t c : codepoints) appendUtf8(out, c);
    return out;
}

// Every way in from UTF-8 gives the same code points: one U+FFFD for each byte that does not
// begin a well-formed sequence, and decoding goes on at the next byte.
TEST(Unicode, MalformedUtf8CostsOneReplacementPerByte) {
    const std::pair<std::string, std::u32string> cases[] = {
        {"plain", U"plain"},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", U"é€😀"},  // 2-, 3- and 4-byte sequences
        {std::string("a\0b", 3), std::u32string(U"a\0b", 3)},
        {"\xEF\xBF\xBD", {R}},  // a real U+FFFD is kept as it is
        {"\xFF", {R}},
        {"\xC3", {R}},                          // truncated at the end
        {"\xC3(", {R, U'('}},                   // a lead byte without its continuation
        {"\xE2\x82" "A", {R, R, U'A'}},         // a broken pair: one each, not one for both
        {"\xF0\x9F\x98", {R, R, R}},            // a four-byte sequence cut short
        {"\xC0\xAF", {R, R}},                   // overlong "/"
        {"\xE0\x80\xAF", {R, R, R}},            // overlong, three bytes
        {"\xED\xA0\x80", {R, R, R}},            // a UTF-16 surrogate
        {"\xF4\x90\x80\x80", {R, R, R, R}},     // above U+10FFFF
        {"\x80x", {R, U'x'}},                   // a stray continuation byte
        {"\xF5\x80\xC1\xBF", {R, R, R, R}},     // bytes that never lead
        {"\xF9\xB2\xAA", {R, R, R}},             // nor do they start a three-byte sequence
        {"x\xF4\x8F\xBF\xBFy", {U'x', 0x10FFFF, U'y'}},
    };
    for (const auto& [bytes, want] : cases) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        EXPECT_EQ(utf16FromUtf8(bytes), utf16Of(want));
        EXPECT_EQ(decodeUtf8Lossy(bytes), utf8Of(want));
        std::u32string stepped;
        for (size_t i = 0; i < bytes.size();) stepped += decodeUtf8(bytes, i);
        EXPECT_EQ(stepped, want);
    }
}

TEST(Unicode, Utf16OutReplacesLoneSurrogatesAndWalksThemAsThemselves) {
    const std::pair<std::u16string, std::string> cases[] = {
        {u"a\xD83D", "a\xEF\xBF\xBD"},                   // a lead at the end
        {u"\xDE00z", "\xEF\xBF\xBDz"},                   // a trail alone
        {u"\xDE00\xD83D", "\xEF\xBF\xBD\xEF\xBF\xBD"},  // a pair in the wrong order
        {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
    };
    for (const auto& [text, want] : cases) {
        EXPECT_EQ(utf8FromUtf16(text), want);
        std::string appended = "<";
        appendUtf8FromUtf16(appended, text);
        EXPECT_EQ(appended, "<" + want);
    }
    const std::u16string mixed = u"\xD83D\xDE00\xDE00x\xD83D";
    std::u32string walked;
    for (size_t i = 0; i < mixed.size();) walked += decodeUtf16(mixed, i);
    EXPECT_EQ(walked, (std::u32string{0x1F600, 0xDE00, U'x', 0xD83D}));
}

// Long texts go through in pieces; a surrogate pair on any piece boundary must stay whole.
TEST(Unicode, LongTextsConvertWholeWhereverPairsFall) {
    for (size_t prefix : {0, 1, 8190, 8191, 8192, 20000}) {
        std::u32string codepoints(prefix, U'a');
        for (int k = 0; k < 9000; ++k) codepoints += k % 3 ? U'é' : char32_t(0x1F600 + k % 50);
        const std::string bytes = utf8Of(codepoints);
        EXPECT_EQ(utf8FromUtf16(utf16Of(codepoints)), bytes) << prefix;
        EXPECT_EQ(utf16FromUtf8(bytes), utf16Of(codepoints)) << prefix;
    }
}

TEST(Unicode, CodePointsWriteAtTheirBoundaries) {
    const std::pair<char32_t, std::string> cases[] = {
        {0x7F, "\x7F"}, {0x80, "\xC2\x80"}, {0x7FF, "\xDF\xBF"}, {0x800, "\xE0\xA0\x80"},
        {0xFFFF, "\xEF\xBF\xBF"}, {0x10000, "\xF0\x90\x80\x80"}, {0x10FFFF, "\xF4\x8F\xBF\xBF"},
        {0xD800, "\xEF\xBF\xBD"}, {0xDFFF, "\xEF\xBF\xBD"}, {0x110000, "\xEF\xBF\xBD"},
    };
    for (auto [c, want] : cases) EXPECT_EQ(utf8(c), want) << std::hex << uint32_t(c);
    EXPECT_EQ(utf16Of({0xFFFF, 0x10000, 0x10FFFF}), (std::u16string{0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF}));

    for (unsigned lead = 0; lead < 256; ++lead) {
        const size_t want = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
        EXPECT_EQ(utf8SequenceLength(static_cast<unsigned char>(lead)), want) << lead;
    }
}

TEST(Unicode, RandomBytesDecodeTheSameWayEverywhere) {
    std::mt19937 random(15);
    std::uniform_int_distribution<int> byte(0, 255), length(0, 40);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(length(random), '\0');
        // Mostly bytes near the edges of the ranges, where decoders go wrong.
        for (char& b : bytes) b = static_cast<char>(round % 2 ? byte(random) : 0x7E + byte(random) % 0x82);
        std::u32string stepped;
        for (size_t i = 0; i < bytes.size();) stepped += decodeUtf8(bytes, i);
        EXPECT_EQ(utf16FromUtf8(bytes), utf16Of(stepped));
        EXPECT_EQ(decodeUtf8Lossy(bytes), utf8Of(stepped));
        EXPECT_EQ(utf8FromUtf16(utf16FromUtf8(bytes)), decodeUtf8Lossy(bytes));
    }
}

}  // namespace
}  // namespace vx
