#include <gtest/gtest.h>

#include "projects/smart_sort.hpp"

namespace vx {
namespace {

std::vector<std::string> ranked(const std::string& query, std::vector<std::string> names) {
    return smartSort(query, std::move(names), [](const std::string& name) { return name; });
}

TEST(SmartSort, Ordering) {
    EXPECT_EQ(ranked("foo", {"barfoo", "Foo", "foobar", "foo"}), (std::vector<std::string>{"foo", "Foo", "foobar", "barfoo"}));
    // Equal scores fall back to the plain comparison: upper case first.
    EXPECT_EQ(ranked("x", {"b", "B", "a"}), (std::vector<std::string>{"B", "a", "b"}));
    EXPECT_EQ(ranked("", {}), std::vector<std::string>{});
}

TEST(SmartSort, ScoreTerms) {
    auto scores = smartcmpScores("foo", {{"foo", {}}, {"Foo", {}}, {"foobar", {}}, {"barfoo", {}}, {"xfoox", {}}, {"zzz", {}}});
    // Longest name 6, so M - |q| = 3.
    EXPECT_DOUBLE_EQ(scores[0], 1 + 0.75 + 1);
    EXPECT_DOUBLE_EQ(scores[1], 1 + 0.75 * 0.5 + 1);
    EXPECT_DOUBLE_EQ(scores[2], (1 - 3.0 / 3) + 0.75 + 0.75);
    EXPECT_DOUBLE_EQ(scores[3], (1 - 3.0 / 3) + 0.75 + 0.25);
    EXPECT_DOUBLE_EQ(scores[4], (1 - 2.0 / 3) + 0.75);
    EXPECT_DOUBLE_EQ(scores[5], 1 - 3.0 / 3);
    // A category lifts an item; a query as long as the longest name divides by 1; a longer one
    // makes the closeness term nearly 1.
    auto withPriority = smartcmpScores("ab", {{"ab", 7.0}, {"xy", {}}});
    EXPECT_DOUBLE_EQ(withPriority[0], 1 + 0.75 + 1 + 1.5);
    EXPECT_DOUBLE_EQ(withPriority[1], 1 - 2.0);
    auto longer = smartcmpScores("abcdef", {{"abc", {}}});
    EXPECT_NEAR(longer[0], 1.0, 1e-12);
    // Case-insensitive edit distance and the case score count UTF-16 units.
    auto unicode = smartcmpScores("äb", {{"ÄB", {}}, {"xäbx", {}}});
    EXPECT_DOUBLE_EQ(unicode[0], 1 + 0.75 * 0.25 + 1);
    EXPECT_DOUBLE_EQ(unicode[1], (1 - 2.0 / 2) + 0.75);
}

}  // namespace
}  // namespace vx
