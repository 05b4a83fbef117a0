// Finding in slices: whatever the slice size, the search finds what a whole-text scan finds
// (either direction, with and without case, wrapping round), and it never reads more than a
// window of the text at a time.
#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "editing/text_search.hpp"
#include "string_target.hpp"

namespace vx::editing {
namespace {

struct Expected {
    std::optional<uint64_t> at;
    bool wrapped = false;
};

// The whole-text scan the editor used to do.
Expected scanWhole(const std::u16string& text, std::u16string query, bool forward, Range selection) {
    const bool folding = std::none_of(query.begin(), query.end(), [](char16_t c) { return c >= u'A' && c <= u'Z'; });
    auto fold = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; };
    if (folding) std::transform(query.begin(), query.end(), query.begin(), fold);
    auto matches = [&](size_t at) {
        for (size_t i = 0; i < query.size(); ++i)
            if (text[at + i] != query[i] && !(folding && fold(text[at + i]) == query[i])) return false;
        return true;
    };
    if (query.size() > text.size()) return {};
    const size_t last = text.size() - query.size();
    if (forward) {
        for (size_t at = selection.end(); at <= last; ++at)
            if (matches(at)) return {at, false};
        for (size_t at = 0; at <= std::min<size_t>(selection.end(), last); ++at)
            if (matches(at)) return {at, true};
    } else {
        for (size_t at = std::min<size_t>(selection.location, last + 1); at-- > 0;)
            if (matches(at)) return {at, false};
        for (size_t at = last + 1; at-- > selection.location;)
            if (matches(at)) return {at, true};
    }
    return {};
}

TEST(TextSearch, SlicesFindWhatAWholeScanFinds) {
    std::mt19937 random(5);
    const char16_t alphabet[] = {u'a', u'b', u'A', u'B', u'\n', u'x'};
    const std::u16string queries[] = {u"ab", u"aB", u"a", u"bab", u"x\na", u"AAAA"};
    test::StringBuffer text;
    for (int round = 0; round < 3000; ++round) {
        text.value.clear();
        const int length = std::uniform_int_distribution<int>(0, 40)(random);
        for (int i = 0; i < length; ++i) text.value += alphabet[std::uniform_int_distribution<size_t>(0, std::size(alphabet) - 1)(random)];
        const std::u16string& query = queries[std::uniform_int_distribution<size_t>(0, std::size(queries) - 1)(random)];
        const uint64_t a = std::uniform_int_distribution<uint64_t>(0, text.value.size())(random);
        const uint64_t b = std::uniform_int_distribution<uint64_t>(0, text.value.size())(random);
        const Range selection{std::min(a, b), std::max(a, b) - std::min(a, b)};
        const bool forward = round % 2 == 0;
        const uint64_t slice = std::uniform_int_distribution<uint64_t>(1, 7)(random);

        TextSearch search(query, forward, forward ? selection.end() : selection.location);
        int steps = 0;
        while (search.step(text, slice) == TextSearch::Status::Searching) ASSERT_LT(++steps, 1000);
        const Expected expected = scanWhole(text.value, query, forward, selection);
        ASSERT_EQ(search.status() == TextSearch::Status::Found, expected.at.has_value())
            << "round " << round << " text \"" << std::string(text.value.begin(), text.value.end()) << "\"";
        if (expected.at) {
            EXPECT_EQ(search.foundAt(), *expected.at) << "round " << round;
            EXPECT_EQ(search.wrapped(), expected.wrapped) << "round " << round;
        }
    }
}

// A text that records the largest piece asked of it.
class WatchedBuffer final : public TextBuffer {
public:
    explicit WatchedBuffer(uint64_t size) : m_size(size) {}
    uint64_t largestRead = 0;
    uint64_t length() const override { return m_size; }
    std::u16string substring(Range r) const override {
        const_cast<WatchedBuffer*>(this)->largestRead = std::max(largestRead, r.length);
        return std::u16string(std::min(r.length, m_size - r.location), u'z');
    }
    char16_t characterAt(uint64_t) const override { return u'z'; }
    uint64_t lineCount() const override { return 1; }
    uint64_t lineStart(uint64_t) const override { return 0; }
    uint64_t lineForOffset(uint64_t) const override { return 0; }
    void replace(Range, std::u16string_view) override {}

private:
    uint64_t m_size;
};

TEST(TextSearch, AMissOverALargeTextTakesManyBoundedSteps) {
    WatchedBuffer text(50'000'000);
    TextSearch search(u"needle", true, 1000);
    EXPECT_EQ(search.step(text, 1 << 18), TextSearch::Status::Searching);  // a step does not run to the end
    int steps = 1;
    while (search.step(text, 1 << 18) == TextSearch::Status::Searching) ++steps;
    EXPECT_EQ(search.status(), TextSearch::Status::NotFound);
    EXPECT_GT(steps, 100);
    EXPECT_LE(text.largestRead, uint64_t{1 << 16} + 5);  // a window at a time, never the whole text
}

}  // namespace
}  // namespace vx::editing
