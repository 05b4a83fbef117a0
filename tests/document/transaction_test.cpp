// Transactions against a plain string model: random replacements applied, inverted, composed and
// mapped must agree with doing the same edits on a std::u16string by hand.
#include <gtest/gtest.h>

#include <random>

#include "document/transaction.hpp"

namespace vx {
namespace {

std::u16string randomText(std::mt19937& rng, size_t maxLength) {
    std::uniform_int_distribution<size_t> length(0, maxLength);
    std::uniform_int_distribution<int> letter(0, 25);
    std::u16string text(length(rng), u' ');
    for (auto& c : text) c = static_cast<char16_t>(u'a' + letter(rng));
    return text;
}

// Non-overlapping replacements in ascending order (two may touch).
std::vector<Replacement> randomReplacements(std::mt19937& rng, uint64_t length) {
    std::vector<Replacement> out;
    uint64_t at = 0;
    std::uniform_int_distribution<int> count(0, 4);
    for (int n = count(rng); n > 0 && at <= length; --n) {
        std::uniform_int_distribution<uint64_t> start(at, length);
        uint64_t location = start(rng);
        std::uniform_int_distribution<uint64_t> span(0, std::min<uint64_t>(length - location, 5));
        uint64_t removed = span(rng);
        out.push_back({{location, removed}, randomText(rng, 4)});
        at = location + removed;
        if (removed == 0 && out.back().text.empty()) out.pop_back();
        else if (removed == 0) ++at;  // two insertions at one place would be one replacement
    }
    return out;
}

std::u16string applyByHand(std::u16string text, const std::vector<Replacement>& replacements) {
    for (auto it = replacements.rbegin(); it != replacements.rend(); ++it)
        text.replace(it->range.location, it->range.length, it->text);
    return text;
}

TEST(Transaction, RandomEditsAgreeWithTheStringModel) {
    for (uint32_t seed = 1; seed <= 2000; ++seed) {
        std::mt19937 rng(seed);
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::u16string original = randomText(rng, 20);
        auto firstEdits = randomReplacements(rng, original.size());
        Transaction first = Transaction::fromReplacements(original.size(), firstEdits);
        std::u16string middle = applyByHand(original, firstEdits);
        ASSERT_EQ(first.apply(original), middle);
        ASSERT_EQ(first.lengthAfter(), middle.size());

        // Apply then invert gives the original back.
        Transaction undo = first.invert(original);
        ASSERT_EQ(undo.apply(middle), original);
        ASSERT_EQ(undo.invert(middle), first);

        // Composed equals sequential.
        auto secondEdits = randomReplacements(rng, middle.size());
        Transaction second = Transaction::fromReplacements(middle.size(), secondEdits);
        std::u16string last = applyByHand(middle, secondEdits);
        Transaction both = first.compose(second);
        ASSERT_EQ(both.apply(original), last);
        ASSERT_EQ(both.invert(original).apply(last), original);

        // Replacements read back from the transaction rebuild it.
        ASSERT_EQ(Transaction::fromReplacements(original.size(), first.replacements()), first);

        // A character outside every replaced range keeps its identity through the mapping.
        for (uint64_t p = 0; p < original.size(); ++p) {
            bool touched = false;
            for (const auto& r : firstEdits) touched |= p >= r.range.location && p < r.range.end();
            if (touched) continue;
            uint64_t mapped = first.mapPosition(p);
            ASSERT_LT(mapped, middle.size());
            ASSERT_EQ(middle[mapped], original[p]) << "position " << p;
        }
    }
}

TEST(Transaction, PositionsAtAnInsertionFollowTheirAssociation) {
    // "abcd": insert "XY" at 2 and delete "d".
    Transaction t = Transaction::fromReplacements(4, {{{2, 0}, u"XY"}, {{3, 1}, u""}});
    EXPECT_EQ(t.apply(u"abcd"), u"abXYc");
    EXPECT_EQ(t.mapPosition(2, Transaction::Assoc::Before), 2u);
    EXPECT_EQ(t.mapPosition(2, Transaction::Assoc::After), 4u);
    EXPECT_EQ(t.mapPosition(3), 5u);  // inside the deletion: where it was
    EXPECT_EQ(t.mapPosition(4), 5u);  // the end stays the end
    // A selection keeps to its text: an insertion at either end stays outside it.
    EXPECT_EQ(t.mapRange({0, 2}), (Range{0, 2}));
    EXPECT_EQ(t.mapRange({2, 1}), (Range{4, 1}));
    EXPECT_EQ(t.mapRange({2, 0}), (Range{4, 0}));
}

TEST(Transaction, CanonicalFormMakesEqualEditsEqual) {
    Transaction a = Transaction::empty();
    a.retain(1).remove(2).insert(u"x").retain(0).insert(u"y").retain(3);
    Transaction b = Transaction::replacing(6, {1, 2}, u"xy");
    EXPECT_EQ(a, b);
    EXPECT_TRUE(Transaction(5).isIdentity());
    EXPECT_FALSE(b.isIdentity());
    EXPECT_EQ(b.replacements(), (std::vector<Replacement>{{{1, 2}, u"xy"}}));
    // Inserting what the next edit deletes leaves nothing of either.
    Transaction in = Transaction::replacing(2, {1, 0}, u"zz");
    Transaction out = Transaction::replacing(4, {1, 2}, u"");
    EXPECT_TRUE(in.compose(out).isIdentity());
}

}  // namespace
}  // namespace vx
