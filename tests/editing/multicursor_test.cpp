// The range set's rules and the controller's runs over a plain string surface.
#include <gtest/gtest.h>

#include "editing/multicursor_controller.hpp"

namespace vx {
namespace {

using multicursor::range;

TEST(MulticursorRange, ValidityEqualityAndContainment) {
    EXPECT_FALSE(range::invalid().valid());
    EXPECT_FALSE((range{0, range::kLimit}).valid());
    EXPECT_TRUE((range{0, 0}).valid());
    EXPECT_EQ(range::invalid(), (range{-5, 3}));  // any two invalid ranges are equal
    EXPECT_NE(range::invalid(), (range{0, 0}));
    // One location holds one range in the order.
    EXPECT_FALSE((range{3, 1}) < (range{3, 4}));
    EXPECT_FALSE((range{3, 4}) < (range{3, 1}));
    EXPECT_TRUE((range{2, 9}) < (range{3, 0}));

    // A caret contains every index at or after it.
    EXPECT_TRUE(range::caret(4).containsIndex(1000));
    EXPECT_FALSE(range::caret(4).containsIndex(3));
    EXPECT_TRUE((range{4, 2}).containsIndex(5));
    EXPECT_FALSE((range{4, 2}).containsIndex(6));

    EXPECT_TRUE((range{2, 5}).containsRange({3, 2}));
    EXPECT_TRUE((range{2, 5}).containsRange({6, 0}));
    EXPECT_FALSE((range{2, 5}).containsRange({6, 2}));
    EXPECT_FALSE(range::caret(2).containsRange({2, 1}));
    EXPECT_TRUE(range::caret(2).containsRange(range::caret(2)));
}

TEST(MulticursorRange, IntersectionIsAskedFromOneSide) {
    EXPECT_TRUE(range::caret(3).indexesIntersect(range::caret(3)));
    EXPECT_TRUE(range::caret(3).indexesIntersect({1, 3}));
    EXPECT_FALSE(range::caret(4).indexesIntersect({1, 3}));  // a caret at the end does not touch
    EXPECT_TRUE((range{1, 3}).indexesIntersect(range::caret(3)));
    EXPECT_TRUE((range{1, 3}).indexesIntersect({3, 3}));
    EXPECT_FALSE((range{1, 3}).indexesIntersect({4, 3}));  // touching ends
    // An inner range touching neither end is not seen from the outer one, but is from inside.
    EXPECT_FALSE((range{0, 10}).indexesIntersect({3, 2}));
    EXPECT_TRUE((range{3, 2}).indexesIntersect({0, 10}));
}

TEST(MulticursorContext, AddingRefusesOverlapsAndRepairsDropTheRightRanges) {
    multicursor::context set;
    EXPECT_TRUE(set.addRange(range::caret(2)));
    EXPECT_FALSE(set.addRange(range::caret(2)));  // one caret per location
    EXPECT_EQ(set.rawCount(), 1u);
    EXPECT_EQ(set.count(range::caret(0)), 2u);

    // A secondary that ends where the primary begins survives.
    multicursor::context touching;
    touching.addRange({1, 3});
    EXPECT_FALSE(touching.fixPrimaryOverlaps({4, 2}));
    EXPECT_EQ(touching.rawCount(), 1u);
    // [3, 5) against a primary [4, 6) goes; so does [1, 9) around a primary caret at 4.
    multicursor::context overlapping;
    overlapping.addRange({3, 2});
    EXPECT_TRUE(overlapping.fixPrimaryOverlaps({4, 2}));
    multicursor::context around;
    around.addRange({1, 8});
    EXPECT_TRUE(around.fixPrimaryOverlaps(range::caret(4)));
    EXPECT_TRUE(around.empty());

    // A range strictly around a stored one is accepted; the inner one goes at the next repair.
    multicursor::context nested;
    nested.addRange({3, 2});
    EXPECT_TRUE(nested.canAddRange({0, 10}));
    EXPECT_TRUE(nested.addRange({0, 10}));
    EXPECT_TRUE(nested.fixSecondaryOverlaps());
    EXPECT_EQ(nested.ranges(), (std::vector<range>{{0, 10}}));

    // Lookups count the primary in its ordered place.
    multicursor::context lookups;
    lookups.addRange(range::caret(1));
    lookups.addRange({5, 2});
    EXPECT_EQ(lookups.indexForRange({5, 2}, range::caret(3)), 2);
    EXPECT_EQ(lookups.rangeAtIndex(1, range::caret(3)), range::caret(3));
    EXPECT_EQ(lookups.rawIndexForRange({5, 2}), 1);
    EXPECT_EQ(lookups.rangeForLocation(0), range::invalid());
    EXPECT_EQ(lookups.rangeForLocation(4), range::caret(1));  // a caret contains what follows it
}

// A text view over a string: the selection, and insertText replacing it.
class StringSurface final : public EditingSurface {
public:
    std::u16string text;
    Range selection;
    bool reversed = false;
    int changes = 0;

    Range selectedRange() const override { return selection; }
    void setSelectedRange(Range r, bool rev) override { selection = r, reversed = rev; }
    bool selectionIsReversed() const override { return reversed; }
    uint64_t textLength() const override { return text.size(); }
    std::u16string textInRange(Range r) const override { return text.substr(r.location, r.length); }
    void replaceSelection(std::u16string_view s) override {
        text.replace(selection.location, selection.length, s);
        selection = {selection.location + s.size(), 0};
    }
    void deleteBackward() {
        if (selection.length == 0 && selection.location == 0) return;
        if (selection.length == 0) selection = {selection.location - 1, 1};
        replaceSelection(u"");
    }
    void multicursorDidChange() override { ++changes; }
};

std::vector<range> carets(std::initializer_list<int64_t> at) {
    std::vector<range> out;
    for (auto a : at) out.push_back(range::caret(a));
    return out;
}

TEST(MulticursorController, EditsRunPerRangeCarryingTheLengthChange) {
    StringSurface view;
    view.text = u"abcdef";
    view.selection = {2, 0};
    VXMulticursorController controller(view);
    EXPECT_FALSE(controller.performEdit([&] { view.replaceSelection(u"-"); }));  // decoherent: once
    EXPECT_EQ(view.text, u"ab-cdef");

    view.text = u"abcdef";
    view.selection = {2, 0};
    ASSERT_TRUE(controller.addRange(range::caret(5)));
    EXPECT_FALSE(controller.addRange(range::caret(2)));  // the primary is there
    EXPECT_TRUE(controller.performEdit([&] { view.replaceSelection(u"x"); }));
    EXPECT_EQ(view.text, u"abxcdexf");
    EXPECT_EQ(controller.allRanges(), carets({3, 7}));

    // Deleting backwards at 0 does nothing; the caret at 3 removes the c.
    view.text = u"abc";
    controller.setRanges({{range::caret(0), false}, {range::caret(3), false}});
    controller.performEdit([&] { view.deleteBackward(); });
    EXPECT_EQ(view.text, u"ab");
    EXPECT_EQ(controller.allRanges(), carets({0, 2}));

    // Carets that run into each other merge.
    view.text = u"abcd";
    controller.setRanges({{range::caret(2), false}, {range::caret(1), false}});
    controller.performEdit([&] { view.deleteBackward(); });
    controller.performEdit([&] { view.deleteBackward(); });
    EXPECT_EQ(view.text, u"cd");
    EXPECT_TRUE(controller.isDecoherent());
}

TEST(MulticursorController, MovementSelectionChangesAndFocus) {
    StringSurface view;
    view.text = u"one two three";
    view.selection = {0, 0};
    VXMulticursorController controller(view);
    controller.addRange(range::caret(4));
    controller.performMovement([&] { view.selection.location += 1; });
    EXPECT_EQ(controller.allRanges(), carets({1, 5}));

    // The controller's own selection changes keep the ranges; the user's drop them.
    controller.withTemporarySelection([&] {
        controller.primarySelectionChanged();
        return range::caret(1);
    });
    EXPECT_FALSE(controller.isDecoherent());
    auto saved = controller.multicursorState();
    controller.primarySelectionChanged();
    EXPECT_TRUE(controller.isDecoherent());
    controller.setMulticursorState(saved, true);
    EXPECT_EQ(controller.allRanges(), carets({1, 5}));

    // Focused: only the primary is edited; ranges after it shift, ranges before it stay.
    controller.addRange(range::caret(9));
    ASSERT_TRUE(controller.focusOnRange(range::caret(5)));
    controller.performEdit([&] { view.replaceSelection(u"__"); });
    EXPECT_EQ(view.text, u"one t__wo three");
    EXPECT_EQ(controller.allRanges(), carets({1, 7, 11}));
    controller.primarySelectionChanged();  // focused: a selection change keeps the ranges
    EXPECT_FALSE(controller.isDecoherent());
    controller.decohere();
    EXPECT_FALSE(controller.isFocused());
}

TEST(MulticursorController, CopyCutAndPastePerRange) {
    StringSurface view;
    view.text = u"ab cd ef";
    view.selection = {3, 2};
    VXMulticursorController controller(view);
    controller.addRange({0, 2});
    controller.addRange({6, 2});
    EXPECT_EQ(controller.copyStrings(), (std::vector<std::u16string>{u"ab", u"cd", u"ef"}));
    EXPECT_EQ(controller.copyTexts(u"\n"), u"ab\ncd\nef");
    controller.performCut();
    EXPECT_EQ(view.text, u"  ");
    controller.performPaste({u"1", u"2", u"3"}, u"1\n2\n3");
    EXPECT_EQ(view.text, u"1 2 3");
    controller.performPaste({u"x"}, u"x");  // a count that does not match: the whole text at each
    EXPECT_EQ(view.text, u"1x 2x 3x");
}

}  // namespace
}  // namespace vx
