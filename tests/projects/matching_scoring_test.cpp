#include <gtest/gtest.h>

#include <cmath>

#include "projects/component_match.hpp"
#include "projects/quick_open_score.hpp"

namespace vx {
namespace {

TEST(ComponentMatch, SubsequenceWithOneMissAllowedFromFourBytes) {
    struct Case {
        std::string_view candidate, query;
        bool want;
    };
    const Case cases[] = {
        {"main", "mian", true},    // LCS 3 of 4
        {"abc", "acb", false},     // 3 bytes: no miss allowed
        {"view.c", "vie", true},   {"view.c", "vw", true},   {"view.c", "wv", false},
        {"ab", "abc", false},      // candidate shorter than the query
        {"xyz", "a", false},       {"a", "a", true},         {"abcdef", "axcf", true},
        {"abcdef", "abxf", true},  {"abcdef", "bdfx", true}, {"abcdefgh", "hgfe", false}, {"abcdef", "axyf", false},
        {"", "a", false},
    };
    for (const auto& c : cases) EXPECT_EQ(componentIsMatch(c.candidate, c.query), c.want) << c.candidate << " / " << c.query;
    EXPECT_EQ(componentIsMatch(std::u16string_view(u"main"), std::u16string_view(u"mian")), true);
    EXPECT_EQ(componentIsMatch(std::u16string_view(u"äbc"), std::u16string_view(u"aäb")), false);

    EXPECT_EQ(cpp_longestCommonSubsequence("abcbdab", "bdcaba"), 4u);
    EXPECT_EQ(cpp_longestCommonSubsequence("", "abc"), 0u);
    const std::string longA(300, 'a');  // longer than the stack row
    EXPECT_EQ(cpp_longestCommonSubsequence(longA, longA), 300u);
    EXPECT_EQ(longestCommonSubsequence(u"ÄbÇ", u"bÇ"), 2u);
}

TEST(ComponentMatch, WholePathsRightToLeft) {
    using V = std::vector<std::string_view>;
    auto a = compareCandidatePath(V{"src", "ui", "view.c"}, V{"src", "vie"});
    EXPECT_TRUE(a.matched && a.matchesLastComponent);
    EXPECT_DOUBLE_EQ(a.componentMatchFraction, 1.0);
    auto b = compareCandidatePath(V{"src", "view.c"}, V{"zzz", "view"});
    EXPECT_FALSE(b.matched);
    EXPECT_TRUE(b.matchesLastComponent);
    EXPECT_DOUBLE_EQ(b.componentMatchFraction, 0.5);
    auto c = compareCandidatePath(V{"view", "src"}, V{"view", "src"});
    EXPECT_TRUE(c.matched);
    EXPECT_FALSE(compareCandidatePath(V{"src", "view"}, V{"view", "src"}).matched);  // order counts
}

TEST(QuickOpenScore, Measures) {
    EXPECT_EQ(findMinimalGappiness("view", "vw"), 2u);
    EXPECT_EQ(findMinimalGappiness("abcabc", "ac"), 1u);
    EXPECT_EQ(findMinimalGappiness("axbab", "ab"), 0u);  // the close pair wins over the first
    EXPECT_EQ(findMinimalGappiness("a_b_c__abc", "abc"), 0u);
    EXPECT_EQ(findMinimalGappiness("xyz", "a"), std::nullopt);
    EXPECT_EQ(findMinimalGappiness("ba", "ab"), std::nullopt);

    EXPECT_EQ(levenshteinDistance("kitten", "sitting"), 3u);
    EXPECT_EQ(levenshteinDistance("", "abc"), 3u);
    EXPECT_EQ(levenshteinDistance("flaw", "lawn"), 2u);

    struct Walk {
        std::string_view component, query;
        double want;
    };
    const Walk walks[] = {
        {"ViewController", "vc", 1.0}, {"vacancy", "vc", 0.75},     {"main.c", "mc", 1.0},
        {"foo_bar", "fb", 1.0},        {"view", "view", 1.0},       {"abc", "abx", 0.5 * 2 / 3},
        {"xview", "view", 0.75},       {"HTMLParser", "hp", 0.75},  {"my-file2", "mf2", 0.75},
        {"abc", "", 0.75},             {"abc", "zzz", 0.0},
    };
    for (const auto& w : walks) {
        std::string lower(w.component);
        for (auto& ch : lower) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        EXPECT_DOUBLE_EQ(wordStartWalk(w.component, lower, w.query), w.want) << w.component << " / " << w.query;
    }
    // An exact component scores the most a pair can: W 1, no gap, no edits.
    EXPECT_DOUBLE_EQ(componentScore("view", "view", "view"), 3.0);
    EXPECT_DOUBLE_EQ(componentScore("view.c", "view.c", "vie"), 1.0 + 1.0 + 1.0 / 4.0);
    EXPECT_DOUBLE_EQ(recencyFactor(1000), 4.0);
    EXPECT_DOUBLE_EQ(recencyFactor(-5), 1.0);
}

TEST(QuickOpenScore, SubstringFinderPlacesEveryComponentWhole) {
    using V = std::vector<std::string_view>;
    using P = std::vector<std::pair<size_t, size_t>>;
    EXPECT_EQ(SubstringFinder(V{"src", "vie"}, V{"src", "ui", "view.c"}), (P{{0, 0}, {1, 2}}));
    EXPECT_EQ(SubstringFinder(V{"x"}, V{"x", "y"}), (P{{0, 0}}));
    EXPECT_EQ(SubstringFinder(V{"a", "b"}, V{"ab"}), std::nullopt);  // distinct components
    EXPECT_EQ(SubstringFinder(V{"logo"}, V{".clang-format"}), std::nullopt);
    EXPECT_EQ(SubstringFinder(V{"mian"}, V{"main.c"}), std::nullopt);
    // The rightmost fitting component goes to the last query component, leaving room on the left.
    EXPECT_EQ(SubstringFinder(V{"a", "a"}, V{"a", "b", "a"}), (P{{0, 0}, {1, 2}}));
}

TEST(QuickOpenScore, TheFormulaPutsItTogether) {
    using V = std::vector<std::string_view>;
    const V query{"vie"}, path{"View.c"}, lower{"view.c"};
    const double c = componentScore("View.c", "view.c", "vie");
    const double expected = std::pow((c / 3.0) * c, 0.5) + std::sqrt(1.0 / 6.0) + 1.0;
    EXPECT_DOUBLE_EQ(quickOpenScore(query, path, lower, {{0, 0}}, std::nullopt), expected);
    // Younger and shallower score higher.
    EXPECT_GT(quickOpenScore(query, path, lower, {{0, 0}}, 10.0), quickOpenScore(query, path, lower, {{0, 0}}, 1e8));
    const V deepPath{"a", "b", "View.c"}, deepLower{"a", "b", "view.c"};
    EXPECT_GT(quickOpenScore(query, path, lower, {{0, 0}}, 10.0),
              quickOpenScore(query, deepPath, deepLower, {{0, 2}}, 10.0));
}

}  // namespace
}  // namespace vx

namespace vx {
namespace {

// The match is computed without the subsequence table; it must agree with the table's rule on
// every candidate, including repeated bytes where greedy placement is tempting to get wrong.
TEST(ComponentMatch, AgreesWithTheLongestCommonSubsequenceRule) {
    uint32_t seed = 7;
    auto next = [&seed] { return seed = seed * 1103515245u + 12345u; };
    for (int round = 0; round < 20000; ++round) {
        std::string candidate, query;
        const size_t n = next() % 9, m = 1 + next() % 6;
        for (size_t i = 0; i < n; ++i) candidate += static_cast<char>('a' + next() % 3);
        for (size_t i = 0; i < m; ++i) query += static_cast<char>('a' + next() % 3);
        const size_t common = cpp_longestCommonSubsequence(candidate, query);
        const bool expected = candidate.size() >= query.size() && common > 0 &&
                              (query.size() <= 3 ? common >= query.size() : common + 1 >= query.size());
        ASSERT_EQ(componentIsMatch(candidate, query), expected) << candidate << " / " << query;
    }
}

}  // namespace
}  // namespace vx
