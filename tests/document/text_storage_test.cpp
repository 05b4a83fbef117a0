#include "document/text_storage.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace vx {
namespace {

// Line starts of a text counted the slow, obvious way.
std::vector<uint64_t> naiveLineStarts(const std::u16string& text) {
    std::vector<uint64_t> starts{0};
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' || (text[i] == u'\r' && (i + 1 == text.size() || text[i + 1] != u'\n')))
            starts.push_back(i + 1);
    }
    return starts;
}

void expectSameText(const VXTextStorage& storage, const std::u16string& model, uint32_t seed) {
    ASSERT_EQ(storage.length(), model.size()) << "seed " << seed;
    ASSERT_EQ(storage.string(), model) << "seed " << seed;
    const auto starts = naiveLineStarts(model);
    ASSERT_EQ(storage.lineCount(), starts.size()) << "seed " << seed;
    for (size_t line = 0; line < starts.size(); ++line)
        ASSERT_EQ(storage.lineRange(line).location, starts[line]) << "seed " << seed << " line " << line;
    size_t line = 0;
    for (uint64_t position = 0; position <= model.size(); ++position) {
        while (line + 1 < starts.size() && starts[line + 1] <= position) ++line;
        ASSERT_EQ(storage.lineIndexForPosition(position), line) << "seed " << seed << " position " << position;
    }
}

// Random edits over several chunks, from an alphabet rich in CR and LF so that pairs are made and
// broken at chunk seams, checked against a plain string after every step.
TEST(TextStorage, RandomEditsMatchAPlainString) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        std::mt19937 random(seed);
        std::u16string model;
        for (int i = 0; i < 20000; ++i) model += u"ab\r\n c"[random() % 6];
        VXTextStorage storage(model);
        const char16_t alphabet[] = u"xy\r\n";
        for (int step = 0; step < 300; ++step) {
            const uint64_t location = random() % (model.size() + 1);
            const uint64_t length = std::min<uint64_t>(model.size() - location, random() % 3 == 0 ? random() % 12000 : random() % 4);
            std::u16string text;
            const size_t insertLength = random() % 5 == 0 ? random() % 10000 : random() % 4;
            for (size_t i = 0; i < insertLength; ++i) text += alphabet[random() % 4];
            storage.replaceCharactersInRange({location, length}, text);
            model.replace(location, length, text);
            if (step % 25 == 0 || model.size() < 64) expectSameText(storage, model, seed);
        }
        expectSameText(storage, model, seed);
        EXPECT_GT(storage.chunkCount(), 1u);
        storage.replaceCharactersInRange({0, storage.length()}, u"");
        expectSameText(storage, u"", seed);
    }
}

TEST(TextStorage, LinesAndTheirContents) {
    VXTextStorage storage(u"one\r\ntwo\rthree\n\nlast");
    ASSERT_EQ(storage.lineCount(), 5u);
    const std::u16string contents[] = {u"one", u"two", u"three", u"", u"last"};
    const Range full[] = {{0, 5}, {5, 4}, {9, 6}, {15, 1}, {16, 4}};
    for (uint64_t line = 0; line < 5; ++line) {
        EXPECT_EQ(storage.substring(storage.lineContentsRange(line)), contents[line]);
        EXPECT_EQ(storage.lineRange(line), full[line]);
    }
    EXPECT_EQ(storage.lineIndexForPosition(4), 0u);  // between CR and LF
    VXTextStorage empty;
    EXPECT_EQ(empty.lineCount(), 1u);
    EXPECT_EQ(empty.lineRange(0), (Range{0, 0}));
}

struct RecordingDelegate : TextStorageDelegate {
    struct Seen {
        unsigned mask;
        Range range;
        int64_t change;
    };
    std::vector<Seen> will, did;
    void textStorageWillProcessEditing(VXTextStorage& s) override {
        will.push_back({s.editedMask(), s.editedRange(), s.changeInLength()});
    }
    void textStorageDidProcessEditing(VXTextStorage& s) override {
        did.push_back({s.editedMask(), s.editedRange(), s.changeInLength()});
    }
};

TEST(TextStorage, EditsReportMaskRangeAndChangeInLength) {
    VXTextStorage storage(u"hello world");
    RecordingDelegate delegate;
    storage.setVx_delegate(&delegate);

    storage.replaceCharactersInRange({6, 5}, u"there, friend");  // 5 units become 13
    ASSERT_EQ(delegate.will.size(), 1u);
    EXPECT_EQ(delegate.will[0].mask, unsigned{kTextStorageEditedCharacters});
    EXPECT_EQ(delegate.will[0].range, (Range{6, 13}));
    EXPECT_EQ(delegate.will[0].change, 8);
    EXPECT_EQ(delegate.did.size(), 1u);

    storage.setAttributes({{"color", "#ff0000ff"}}, {0, 5});
    EXPECT_EQ(delegate.will.back().mask, unsigned{kTextStorageEditedAttributes});
    EXPECT_EQ(delegate.will.back().range, (Range{0, 5}));
    EXPECT_EQ(delegate.will.back().change, 0);

    // A batch is processed once, with the edits joined in the final text's coordinates.
    storage.beginEditing();
    EXPECT_TRUE(storage.isBlocked());
    storage.replaceCharactersInRange({0, 0}, u"<<");        // at 0..2, +2
    storage.replaceCharactersInRange({10, 3}, u"");          // "ere" goes: 10..10, -3
    storage.addAttribute("bold", true, {2, 1});
    EXPECT_EQ(delegate.will.size(), 2u);
    storage.endEditing();
    EXPECT_FALSE(storage.isBlocked());
    ASSERT_EQ(delegate.will.size(), 3u);
    EXPECT_EQ(delegate.will[2].mask, unsigned{kTextStorageEditedCharacters | kTextStorageEditedAttributes});
    EXPECT_EQ(delegate.will[2].range, (Range{0, 10}));
    EXPECT_EQ(delegate.will[2].change, -1);
    EXPECT_EQ(storage.string(), u"<<hello th, friend");
}

// The characters a processing round changed come as one transaction over the text before them,
// whatever the order of the edits; a whole transaction applies as one round.
TEST(TextStorage, EditsAreReportedAsOneTransaction) {
    struct TransactionDelegate : TextStorageDelegate {
        std::vector<Transaction> seen;
        void textStorageWillProcessEditing(VXTextStorage& s) override { seen.push_back(s.editedTransaction()); }
        void textStorageDidProcessEditing(VXTextStorage&) override {}
    } delegate;
    std::mt19937 random(5);
    VXTextStorage storage(u"the quick brown fox jumps over the lazy dog");
    storage.setVx_delegate(&delegate);
    for (int round = 0; round < 50; ++round) {
        const std::u16string before = storage.string();
        storage.beginEditing();
        for (int edit = 0; edit < 6; ++edit) {
            const uint64_t at = random() % (storage.length() + 1);
            const uint64_t length = std::min<uint64_t>(random() % 4, storage.length() - at);
            storage.replaceCharactersInRange({at, length}, std::u16string(random() % 3, u"xyz"[edit % 3]));
        }
        storage.setAttributes({{"color", "#ff0000ff"}}, {0, std::min<uint64_t>(3, storage.length())});
        storage.endEditing();
        ASSERT_EQ(delegate.seen.size(), static_cast<size_t>(round + 1));
        ASSERT_EQ(delegate.seen.back().apply(before), storage.string()) << "round " << round;
    }
    // Applying a transaction makes only its changes, in one round.
    storage.replaceCharactersInRange({0, storage.length()}, u"0123456789abc");
    const std::u16string text = storage.string();
    Transaction change = Transaction::fromReplacements(text.size(), {{{1, 2}, u"AB"}, {{10, 0}, u"C"}});
    storage.applyTransaction(change);
    EXPECT_EQ(storage.string(), change.apply(text));
    EXPECT_EQ(delegate.seen.back(), change);
    storage.setAttributes({}, {0, 1});
    EXPECT_TRUE(delegate.seen.back().isIdentity());
}

TEST(TextStorage, AttributesRunBesideTheTextAndFollowEdits) {
    VXTextStorage storage(u"abcdefghij", {{"font", "mono"}});
    storage.setAttributes({{"color", "red"}}, {2, 3});    // c d e
    storage.addAttribute("bold", true, {4, 3});           // e f g
    Range run;
    EXPECT_EQ(storage.attributesAtIndex(0, &run).at("font"), PropertyValue("mono"));
    EXPECT_EQ(run, (Range{0, 2}));
    EXPECT_EQ(storage.attributesAtIndex(3, &run), (TextAttributes{{"color", "red"}}));
    EXPECT_EQ(run, (Range{2, 2}));
    EXPECT_EQ(storage.attributesAtIndex(4, &run), (TextAttributes{{"bold", true}, {"color", "red"}}));
    EXPECT_EQ(run, (Range{4, 1}));
    EXPECT_EQ(storage.attributesAtIndex(6, &run), (TextAttributes{{"bold", true}, {"font", "mono"}}));
    EXPECT_EQ(run, (Range{5, 2}));

    storage.replaceCharactersInRange({3, 0}, u"XY");  // typed after "c": takes c's attributes
    EXPECT_EQ(storage.attributesAtIndex(3, &run), (TextAttributes{{"color", "red"}}));
    EXPECT_EQ(run, (Range{2, 4}));
    storage.replaceCharactersInRange({0, 0}, u"_");  // at the start: takes the first character's
    EXPECT_EQ(storage.attributesAtIndex(0, &run).at("font"), PropertyValue("mono"));
    EXPECT_EQ(run, (Range{0, 3}));
}

TEST(TextStorage, AttributeRunsJoinAcrossChunks) {
    std::u16string big(30000, u'a');
    VXTextStorage storage(big, {{"k", 1}});
    ASSERT_GT(storage.chunkCount(), 3u);
    Range run;
    storage.attributesAtIndex(15000, &run);
    EXPECT_EQ(run, (Range{0, 30000}));
    storage.setAttributes({{"k", 2}}, {100, 20000});
    storage.attributesAtIndex(15000, &run);
    EXPECT_EQ(run, (Range{100, 20000}));
    size_t segments = 0;
    std::u16string joined;
    storage.forEachSegment({50, 25000}, [&](std::u16string_view piece) {
        ++segments;
        joined += piece;
    });
    EXPECT_GT(segments, 1u);
    EXPECT_EQ(joined, big.substr(50, 25000));
}

}  // namespace
}  // namespace vx
