// Indentation detection and the highlighting gate.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "document/tabdetection.hpp"

using vx::detect;
using vx::shouldHighlight;

namespace {

// One line per entry: that many spaces (or tabs), then a word.
std::u16string spaceIndented(const std::vector<int>& indents) {
    std::u16string text;
    for (int n : indents) text += std::u16string(n, u' ') + u"x = 1\n";
    return text;
}

std::u16string repeat(std::u16string_view line, int times) {
    std::u16string text;
    for (int i = 0; i < times; ++i) text += line;
    return text;
}

TEST(Detect, TabsAndUndecidedTexts) {
    // 9 tab lines and 1 space line: tabs win with 0.9 > 0.8.
    auto r = detect(repeat(u"\tfoo\n", 9) + u"  bar\nbaz\n");
    EXPECT_EQ(r.undecided, 0u);
    EXPECT_EQ(r.usesSpaces, 0u);
    EXPECT_DOUBLE_EQ(r.ratio, 0.9);

    // 8 of 10 tab lines is not more than 0.8, and 2 spaces of 10 fall short of 0.8 the other way.
    EXPECT_EQ(detect(repeat(u"\tfoo\n", 8) + repeat(u"  bar\n", 2)).undecided, 1u);

    const std::u16string undecided[] = {
        u"",
        u"a\nb\nc",
        u"  # comment\n\t// comment\n    /* block */\n",  // "#" and "/" lines do not vote
        u"   \n\t\t\r\n  \n\t",                          // blank lines, last one without LF
        repeat(u"\t  mixed\n", 2) + repeat(u"\tfoo\n", 8),  // 20% mixed lines
    };
    for (const auto& text : undecided) EXPECT_EQ(detect(text).undecided, 1u) << text.size();
}

TEST(Detect, MixedLinesUpToATenthStillDecide) {
    // 1 mixed line of 10 is exactly 0.1, which is not more than 0.1; tabs are 9 of 10.
    auto r = detect(u"\t foo\n" + repeat(u"\tfoo\n", 9));
    EXPECT_EQ(r.undecided, 0u);
    EXPECT_EQ(r.usesSpaces, 0u);
    EXPECT_DOUBLE_EQ(r.ratio, 0.9);
}

TEST(Detect, SpaceWidthVote) {
    struct Case {
        std::vector<int> indents;
        int64_t width;
        double confidence;
    };
    const Case cases[] = {
        {{4, 8, 12, 4, 8, 12}, 4, 1.0},     // two odd multiples of three: factor stays 1
        {{4, 12, 4, 12, 12}, 4, 1.0},       // every count an odd multiple of 4
        {{8, 16, 24, 8, 16}, 1, 0.0},       // every pairwise divisor is 8, which is never counted
        {{2, 4, 6, 2, 4}, 2, 1.0},
        {{3, 6, 9, 3}, 3, 1.0},
        {{5, 10, 15, 5}, 5, 1.0},
        {{7, 14, 21}, 7, 1.0},
        {{2, 3}, 1, 0.0},                   // coprime counts: nothing in the histogram
        {{6, 6}, 6, 1.0},                   // a single pair of equal counts votes for itself
        {{2, 2, 3, 3}, 2, 0.5},             // tie between 2 and 3 keeps the smaller; 3s do not divide
        {{33, 39, 45}, 3, 1.0},             // beyond the small-divisor table
    };
    for (const auto& c : cases) {
        std::u16string text = spaceIndented(c.indents);
        auto r = detect(text);
        EXPECT_EQ(r.undecided, 0u);
        EXPECT_EQ(r.usesSpaces, 1u);
        EXPECT_DOUBLE_EQ(r.ratio, 1.0);
        EXPECT_EQ(r.width, c.width) << c.indents.size() << " lines starting " << c.indents[0];
        EXPECT_DOUBLE_EQ(r.widthConfidence, c.confidence) << c.indents.size() << " lines starting " << c.indents[0];
    }
}

TEST(Detect, FewOddMultiplesLowerTheConfidence) {
    // Width 4 wins, but only 1 of 20 divisible counts is an odd multiple: the real width looks
    // like 8, so the confidence is scaled by 10 * (1/20).
    std::vector<int> indents(19, 8);
    indents.push_back(4);
    auto r = detect(spaceIndented(indents));
    EXPECT_EQ(r.width, 4);
    EXPECT_DOUBLE_EQ(r.widthConfidence, 0.5);

    // 1 odd multiple in 9 is more than a tenth: the factor stays 1.
    std::vector<int> mostlyEights(8, 8);
    mostlyEights.push_back(4);
    r = detect(spaceIndented(mostlyEights));
    EXPECT_EQ(r.width, 4);
    EXPECT_DOUBLE_EQ(r.widthConfidence, 1.0);
}

TEST(Detect, OnlyTheFirstThousandSpaceLinesVote) {
    // 1,000 lines of width 3 then 3,000 of width 2: the later ones take no part in the vote nor in
    // the confidence, though they count in the ratio.
    std::vector<int> indents(1000, 3);
    indents.insert(indents.end(), 3000, 2);
    auto r = detect(spaceIndented(indents));
    EXPECT_EQ(r.width, 3);
    EXPECT_DOUBLE_EQ(r.widthConfidence, 1.0);
    EXPECT_DOUBLE_EQ(r.ratio, 1.0);
}

TEST(Detect, LineBoundaries) {
    // The last line without LF votes; CRLF lines measure the same as LF lines.
    EXPECT_EQ(detect(u"a\n    b\n        c").width, 4);
    EXPECT_EQ(detect(u"a\r\n    b\r\n        c\r\n    d\r\n").width, 4);
    // A lone CR is not a line break: the second "line" here is part of the first.
    EXPECT_EQ(detect(u"  a\r    b\r").width, 1);
}

std::u16string linesOf(size_t count, size_t length) {
    std::u16string line(length, u'a');
    std::u16string text;
    for (size_t i = 0; i < count; ++i) {
        if (i) text += u'\n';
        text += line;
    }
    return text;
}

TEST(ShouldHighlight, RefusesHugeTextsAndLongLines) {
    // One 300,000-unit line among a few short ones.
    EXPECT_FALSE(shouldHighlight(std::u16string(300'000, u'x') + u"\n" + linesOf(20, 10)));
    // Short lines, but 2,097,152 units in all.
    std::u16string big = linesOf(2'097'152 / 64, 63) + u"\n";
    ASSERT_EQ(big.size(), vx::kHighlightLengthLimit);
    EXPECT_FALSE(shouldHighlight(big));
    big.pop_back();
    EXPECT_TRUE(shouldHighlight(big));

    EXPECT_TRUE(shouldHighlight(u""));
    EXPECT_TRUE(shouldHighlight(std::u16string(1024, u'x') + u"\na"));  // not longer than 1,024
    EXPECT_TRUE(shouldHighlight(u"a\n" + std::u16string(1023, u'x')));  // 1,024 with its LF
    EXPECT_FALSE(shouldHighlight(u"a\n" + std::u16string(1024, u'x')));
}

TEST(ShouldHighlight, WeightOfLongLinesAgainstLineCount) {
    // A first line of 2,048 units weighs 2.0; times 4 is 8: highlighted with 8 lines, not with 7.
    EXPECT_TRUE(shouldHighlight(std::u16string(2048, u'x') + u"\n" + linesOf(7, 1)));
    EXPECT_FALSE(shouldHighlight(std::u16string(2048, u'x') + u"\n" + linesOf(6, 1)));
    // Later lines count their leading LF: 2,047 letters after an LF weigh 2.0 as well.
    EXPECT_TRUE(shouldHighlight(linesOf(7, 1) + u"\n" + std::u16string(2047, u'x')));
    EXPECT_FALSE(shouldHighlight(linesOf(6, 1) + u"\n" + std::u16string(2047, u'x')));
    // The division is not rounded: 1,025 units weigh a little over 1, so 4 lines are too few.
    EXPECT_FALSE(shouldHighlight(std::u16string(1025, u'x') + u"\n" + linesOf(3, 1)));
    EXPECT_TRUE(shouldHighlight(std::u16string(1025, u'x') + u"\n" + linesOf(4, 1)));
}

}  // namespace
