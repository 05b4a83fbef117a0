// The small pieces under the highlighter: regex escaping and back-references, the word trie,
// the zone stack and the UTF-8/UTF-16 mapping.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "syntax/hash_trie.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/regex.hpp"
#include "syntax/speedy_array.hpp"

namespace {

using namespace vx;

TEST(RegexText, EscapesExactlyTheListedCharacters) {
    EXPECT_EQ(VXEscapeRegex(u"$()*+.?[\\^|"), u"\\$\\(\\)\\*\\+\\.\\?\\[\\\\\\^\\|");
    EXPECT_EQ(VXEscapeRegex(u"]{}-/aé"), u"]{}-/aé");
}

TEST(RegexText, BackReferencesAreFoundAndExpanded) {
    EXPECT_TRUE(regexHasBackrefs(u"^\\1$"));
    EXPECT_TRUE(regexHasBackrefs(u"a\\0"));
    EXPECT_FALSE(regexHasBackrefs(u"\\\\1"));  // an escaped backslash, then a digit
    EXPECT_FALSE(regexHasBackrefs(u"\\d+1"));
    auto groups = [](int n) -> std::optional<std::u16string> {
        if (n == 1) return u"a.b";
        if (n == 2) return u"";
        return std::nullopt;
    };
    EXPECT_EQ(VXExpandBackrefsInRegex(u"^\\1\\2\\3\\\\1\\n$", groups), u"^a\\.b\\\\1\\n$");
    // The expansion compiles and matches the delimiter literally.
    auto regex = VXRegex::compile(VXExpandBackrefsInRegex(u"\\)\\1\"", groups));
    ASSERT_TRUE(regex);
    auto region = makeRegion();
    EXPECT_EQ(regex->matchAt(u")a.b\"", 0, region.get()), 5u);
    EXPECT_EQ(regex->matchAt(u")axb\"", 0, region.get()), std::nullopt);
    EXPECT_EQ(VXRegex::compile(u"("), nullptr);
    EXPECT_EQ(VXRegex::compile(u""), nullptr);
}

TEST(HashTrie, LongestWordAtAPosition) {
    VXHashTrie trie({u"in", u"int", u"interface", u"é", u""}, false);
    EXPECT_EQ(trie.wordCount(), 4u);
    EXPECT_EQ(trie.longestMatchAt(u"x intern", 2), 3u);
    EXPECT_EQ(trie.longestMatchAt(u"interface", 0), 9u);
    EXPECT_EQ(trie.longestMatchAt(u"interfac", 0), 3u);
    EXPECT_EQ(trie.longestMatchAt(u"i", 0), std::nullopt);
    EXPECT_EQ(trie.longestMatchAt(u"aé", 1), 1u);
    EXPECT_EQ(trie.longestMatchAt(u"INT", 0), std::nullopt);
    VXHashTrie folded({u"Select", u"É"}, true);
    EXPECT_EQ(folded.longestMatchAt(u"sElEcT", 0), 6u);
    EXPECT_EQ(folded.longestMatchAt(u"é", 0), std::nullopt);  // only ASCII letters fold
}

TEST(SpeedyArray, PushesAndPopsAcrossChunks) {
    VXSpeedyArray<int> stack;
    for (int i = 0; i < 100; ++i) VXSA_Add(stack, i);
    EXPECT_EQ(stack.size(), 100u);
    std::vector<int> bottomUp;
    stack.forEachFromBottom([&](int v) { bottomUp.push_back(v); });
    ASSERT_EQ(bottomUp.size(), 100u);
    EXPECT_EQ(bottomUp.front(), 0);
    EXPECT_EQ(bottomUp[64], 64);
    for (int i = 99; i >= 30; --i) ASSERT_EQ(VXSA_Pop(stack), i);
    for (int i = 30; i < 70; ++i) VXSA_Add(stack, i + 1000);  // refills a kept chunk
    EXPECT_EQ(stack.top(), 1069);
    EXPECT_EQ(stack.size(), 70u);
    VXSA_Destroy(stack);
    EXPECT_TRUE(stack.empty());
}

TEST(SpeedyArrayDeathTest, PoppingEmptyIsFatal) {
    VXSpeedyArray<int> stack;
    // A substring matcher rather than a regex: glibc's regexec can deadlock in the parent of a
    // death test under AddressSanitizer.
    EXPECT_DEATH(VXSA_Pop(stack), testing::HasSubstr("m_size > 0"));
}

TEST(MappedString, OffsetsBetweenUtf16AndUtf8) {
    auto mapped = HUTF8MappedUTF16String::fromUtf8("aé😀b");
    EXPECT_EQ(mapped.utf16(), u"aé😀b");
    const uint64_t bytes[] = {0, 1, 3, 3, 7, 8};
    for (uint64_t i = 0; i <= 5; ++i) EXPECT_EQ(mapped.utf8OffsetForUtf16(i), bytes[i]) << i;
    EXPECT_EQ(mapped.utf16OffsetForUtf8(2), 1u);  // inside "é"
    EXPECT_EQ(mapped.utf16OffsetForUtf8(5), 2u);  // inside the pair: its first unit
    EXPECT_EQ(mapped.utf16OffsetForUtf8(7), 4u);
    EXPECT_EQ(mapped.utf16OffsetForUtf8(99), 5u);
    // Bytes that are not UTF-8 read as U+FFFD one at a time; lone surrogates write as U+FFFD.
    EXPECT_EQ(utf16FromUtf8("a\xff\xc3"), u"a\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xed\xa0\x80"), u"\uFFFD\uFFFD\uFFFD");
    const char16_t lone[] = {u'x', 0xD800, 0};
    EXPECT_EQ(utf8FromUtf16(lone), "x\xEF\xBF\xBD");
    EXPECT_EQ(HUTF8MappedUTF16String::fromUtf16(lone).utf8(), "x\xEF\xBF\xBD");
}

}  // namespace
