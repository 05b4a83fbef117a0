// Line transforms and text recipes on plain strings; the cases that tell a rule from a near miss.
#include <gtest/gtest.h>

#include "editing/line_transform_recipe.hpp"
#include "editing/text_recipes.hpp"
#include "string_target.hpp"

namespace vx {
namespace {

using test::StringTarget;

struct Outcome {
    bool changed;
    std::u16string text;
    Range selection;
};

Outcome transform(std::string_view event, std::u16string text, Range selection, int tabSize = 4,
                  std::u16string lineBreak = u"\n") {
    StringTarget target(std::move(text), selection);
    target.tabs = tabSize;
    target.newline = lineBreak;
    bool changed = triggerEvent(event, target);
    return {changed, target.text.value, target.selected};
}

Outcome recipe(std::string_view name, std::u16string text, Range selection) {
    StringTarget target(std::move(text), selection);
    bool changed = makeTextRecipe(name, target)->main();
    return {changed, target.text.value, target.selected};
}

TEST(LineTransforms, SortingUniqueAndOrder) {
    EXPECT_EQ(transform("vx.sort-lines-ascending", u"b\na10\na2", {0, 8}).text, u"a2\na10\nb");
    EXPECT_EQ(transform("vx.sort-lines-descending", u"b\na10\na2", {0, 8}).text, u"b\na10\na2");
    EXPECT_EQ(transform("vx.sort-lines-ascending", u"B\na\nb\nA", {0, 7}).text, u"a\nA\nB\nb");  // case ignored, order kept
    EXPECT_EQ(transform("vx.sort-ascending-and-unique-lines", u"b\na\nb\na", {0, 7}).text, u"a\nb");
    EXPECT_EQ(transform("vx.unique-lines", u"b\na\nb\na", {0, 7}).text, u"b\na");
    EXPECT_EQ(transform("vx.reverse-lines", u"1\n2\n3\n", {0, 5}).text, u"3\n2\n1\n");
    // A selection inside one line sorts just that line; the selection covers the lines after.
    Outcome one = transform("vx.sort-lines-ascending", u"zz\nb a\n", {4, 1});
    EXPECT_EQ(one.text, u"zz\nb a\n");
    EXPECT_EQ(one.selection, (Range{3, 3}));
    // The document's own line break joins the lines.
    EXPECT_EQ(transform("vx.reverse-lines", u"x\r\ny", {0, 4}, 4, u"\r\n").text, u"y\r\nx");
    // Shuffling keeps the lines.
    Outcome shuffled = transform("vx.randomize-lines", u"1\n2\n3\n4\n5", {0, 9});
    std::u16string sorted = shuffled.text;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, u"\n\n\n\n12345");
    EXPECT_FALSE(transform("vx.no-such-transform", u"a", {0, 0}).changed);
}

TEST(LineTransforms, DuplicateAndReverseText) {
    Outcome dup = transform("vx.duplicate-line", u"ab\ncd", {4, 0});
    EXPECT_EQ(dup.text, u"ab\ncd\ncd");  // the last line gets a break before its copy
    EXPECT_EQ(dup.selection, (Range{7, 0}));
    EXPECT_EQ(transform("vx.duplicate-line", u"ab\ncd", {1, 0}).text, u"ab\nab\ncd");
    EXPECT_EQ(transform("vx.duplicate-line", u"ab\r\ncd", {4, 0}, 4, u"\r\n").text, u"ab\r\ncd\r\ncd");

    EXPECT_FALSE(transform("vx.reverse-text", u"abc", {0, 0}).changed);
    EXPECT_FALSE(transform("vx.reverse-text", u"abc", {3, 0}).changed);
    Outcome swap = transform("vx.reverse-text", u"abc", {1, 0});
    EXPECT_EQ(swap.text, u"bac");
    EXPECT_EQ(swap.selection, (Range{1, 0}));
    // Combining sequences and surrogate pairs stay whole.
    EXPECT_EQ(transform("vx.reverse-text", u"e\u0301x\U0001F600", {0, 5}).text, u"\U0001F600xe\u0301");
}

TEST(LineTransforms, SpacesAndTabs) {
    EXPECT_EQ(transform("vx.spaces-to-tabs", u"  x", {0, 0}).text, u"\tx");
    EXPECT_EQ(transform("vx.spaces-to-tabs", u"     x", {0, 0}).text, u"\t x");
    EXPECT_EQ(transform("vx.spaces-to-tabs", u"a b", {0, 0}).text, u"a b");  // a lone space stays
    EXPECT_EQ(transform("vx.spaces-to-tabs", u"        x", {0, 0}).text, u"\t\tx");
    EXPECT_EQ(transform("vx.tabs-to-spaces", u"a\tb", {0, 0}).text, u"a    b");
    EXPECT_EQ(transform("vx.tabs-to-spaces", u"\ta\tb", {0, 2}).text, u"    a\tb");  // just the selection
    EXPECT_FALSE(transform("vx.tabs-to-spaces", u"", {0, 0}).changed);
}

TEST(TextRecipes, CommentsToggleOnAndOff) {
    Outcome on = recipe("toggle-comment", u"  a\n\n    b\n", {0, 9});
    EXPECT_EQ(on.text, u"  // a\n\n  //   b\n");
    EXPECT_EQ(recipe("toggle-comment", on.text, {0, 15}).text, u"  a\n\n    b\n");
    // One uncommented line comments them all.
    EXPECT_EQ(recipe("toggle-comment", u"// a\nb", {0, 6}).text, u"// // a\n// b");
    Outcome caret = recipe("toggle-comment", u"x = 1", {2, 0});
    EXPECT_EQ(caret.text, u"// x = 1");
    EXPECT_EQ(caret.selection, (Range{5, 0}));  // the caret stays on its character
    Outcome block = recipe("toggle-block-comment", u"a bc d", {2, 2});
    EXPECT_EQ(block.text, u"a /* bc */ d");
    EXPECT_EQ(block.selection, (Range{5, 2}));
    EXPECT_EQ(recipe("toggle-block-comment", block.text, {2, 8}).text, u"a bc d");
}

TEST(TextRecipes, CaseLinesAndBrackets) {
    EXPECT_EQ(recipe("upper-case", u"straße x", {0, 6}).text, u"STRASSE x");
    EXPECT_EQ(recipe("lower-case", u"ABC DEF", {5, 0}).text, u"ABC def");  // the word at the caret
    EXPECT_EQ(recipe("title-case", u"hello world", {0, 11}).text, u"Hello World");

    Outcome up = recipe("move-lines-up", u"1\n2\n3", {4, 1});
    EXPECT_EQ(up.text, u"1\n3\n2");
    EXPECT_EQ(up.selection, (Range{2, 1}));
    Outcome down = recipe("move-lines-down", u"1\n2\n3", {0, 0});
    EXPECT_EQ(down.text, u"2\n1\n3");
    EXPECT_EQ(down.selection, (Range{2, 0}));
    EXPECT_FALSE(recipe("move-lines-up", u"1\n2", {0, 0}).changed);
    EXPECT_FALSE(recipe("move-lines-down", u"1\n2", {2, 0}).changed);

    EXPECT_EQ(recipe("join-lines", u"a  \n   b\nc", {0, 0}).text, u"a b\nc");
    EXPECT_EQ(recipe("join-lines", u"a\nb\nc", {0, 5}).text, u"a b c");
    EXPECT_EQ(recipe("join-lines", u"a\n\nc", {0, 0}).text, u"a\nc");

    Outcome inside = recipe("select-enclosing-brackets", u"f(a, [b], c)", {6, 0});
    EXPECT_EQ(inside.selection, (Range{6, 1}));
    EXPECT_EQ(recipe("select-enclosing-brackets", u"f(a, [b], c)", {6, 1}).selection, (Range{5, 3}));
    EXPECT_EQ(recipe("select-enclosing-brackets", u"f(a, [b], c)", {3, 0}).selection, (Range{2, 9}));
    EXPECT_FALSE(recipe("select-enclosing-brackets", u"a b", {1, 0}).changed);
}

}  // namespace
}  // namespace vx
