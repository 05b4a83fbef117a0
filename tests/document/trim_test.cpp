#include "document/whitespace_trim.hpp"

#include <gtest/gtest.h>

#include "platform/unicode.hpp"

namespace vx {
namespace {

TEST(Trim, StripperRulesByAmount) {
    struct Case {
        std::u16string_view text;
        bool keepEnd;
        int64_t amount;
        std::u16string_view want;
    };
    const Case cases[] = {
        {u"x  \n   \ny\t\n", false, 1, u"x\n   \ny\n"},     // amount 1 keeps whitespace-only lines
        {u"x  \n   \ny\t\n", false, 2, u"x\n\ny\n"},        // amount 2 empties them
        {u"a \t\r\nb \rc", false, 1, u"a\r\nb\rc"},         // CR and CRLF end lines too
        {u"end  ", false, 1, u"end"},                       // the last line, without keep-the-end
        {u"end  ", true, 1, u"end  "},                      // ...and with it
        {u"a  \nend  ", true, 1, u"a\nend  "},
        {u"   ", false, 1, u"   "},                         // only whitespace, amount 1
        {u"   ", false, 2, u""},
        {u"in  side\n", false, 1, u"in  side\n"},           // inner runs stay
        {u"é  \n😀\t\n", false, 1, u"é\n😀\n"},             // non-ASCII before the run
    };
    for (const auto& c : cases)
        EXPECT_EQ(stripTrailingWhitespace(c.text, c.keepEnd, c.amount), c.want)
            << utf8FromUtf16(c.text) << " keepEnd " << c.keepEnd << " amount " << c.amount;
    const std::u16string huge(kTrimLimit + 1, u' ');
    EXPECT_EQ(stripTrailingWhitespace(huge, false, 2).size(), huge.size());
}

TEST(Trim, TheSelectionKeepsItsTextAndMovesLeft) {
    // Caret right after "word   ": those spaces stay; the other lines lose theirs.
    const std::u16string text = u"a  \nword   \nb  \n";
    auto plan = planTrailingWhitespaceTrim(text, {11, 0}, 1);
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->text, u"a\nword   \nb\n");
    EXPECT_EQ(plan->selection, (Range{9, 0}));

    // A selected run of trailing spaces is not touched; the text after it loses its own.
    plan = planTrailingWhitespaceTrim(u"q  \nr  \n", {1, 2}, 1);
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->text, u"q  \nr\n");
    EXPECT_EQ(plan->selection, (Range{1, 2}));

    EXPECT_FALSE(planTrailingWhitespaceTrim(u"clean\ntext\n", {0, 0}, 1));
    EXPECT_FALSE(planTrailingWhitespaceTrim(u"   \n", {0, 0}, 1));
}

TEST(Trim, LargeTextsAroundTheSelectionAreLeftAlone) {
    std::u16string text(kTrimLimit + 10, u'x');
    text.insert(0, u"a  \n");
    EXPECT_FALSE(planTrailingWhitespaceTrim(text, {0, 0}, 1));  // too much after the selection
    EXPECT_FALSE(planTrailingWhitespaceTrim(text, {kTrimLimit + 5, 0}, 1));  // starts too far in
    text.resize(kTrimLimit);  // now both parts are within the limit
    EXPECT_TRUE(planTrailingWhitespaceTrim(text, {text.size() - 2, 0}, 1));
}

}  // namespace
}  // namespace vx
