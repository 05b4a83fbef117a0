// Choosing a document's tab size and soft tabs from detection, settings and language defaults.
#include <gtest/gtest.h>

#include "document/tab_setup.hpp"

#include <cstdlib>

#include "platform/user_defaults.hpp"
#include "support/temp_dir.hpp"

using namespace vx;

namespace {

TabDetectionResult spaces(int64_t width, double confidence, double ratio = 1.0) {
    return TabDetectionResult{0, 1, ratio, width, confidence};
}
const TabDetectionResult kUndecided{};
const TabDetectionResult kTabs{0, 0, 0.95, 0, 0};

VXIndentationContext start(uint64_t tabSize = 4, bool soft = false) {
    VXIndentationContext c;
    c.tabSize = tabSize;
    c.useSoftTabs = soft;
    return c;
}

TabSettings tabSize(int64_t value, int64_t stratum) {
    TabSettings s;
    s.tabSize = value;
    s.tabSizeStratum = stratum;
    return s;
}

TabSettings softTabs(bool value, int64_t stratum) {
    TabSettings s;
    s.useSoftTabs = value;
    s.useSoftTabsStratum = stratum;
    return s;
}

TEST(TabSetup, TabSizeRules) {
    const std::optional<std::string> none, ruby = "Ruby", python = "Python";
    struct Case {
        const char* what;
        TabDetectionResult detected;
        TabSettings settings;
        std::optional<std::string> language;
        uint64_t want;
    };
    const Case cases[] = {
        {"confident width wins over everything", spaces(2, 0.9), tabSize(8, 2), ruby, 2},
        {"width 3 and 6 are trusted", spaces(3, 1.0), {}, none, 3},
        {"width 5 never sets the size", spaces(5, 1.0), {}, none, 4},
        {"width 7 never sets the size", spaces(7, 1.0), tabSize(3, 0), none, 3},
        {"width 1 (8/16/24) never sets it", spaces(1, 0.0), {}, ruby, 2},
        {"confidence must exceed 0.8", spaces(4, 0.8), tabSize(6, 1), none, 6},
        {"tabs detected: width ignored", kTabs, {}, none, 4},
        {"specific setting beats language", kUndecided, tabSize(3, 1), ruby, 3},
        {"extension setting is specific", kUndecided, tabSize(5, 2), ruby, 5},
        {"language beats global setting", kUndecided, tabSize(8, 0), ruby, 2},
        {"language without opinion", kUndecided, tabSize(8, 0), python, 8},
        {"global setting when nothing else", kUndecided, tabSize(3, 0), none, 3},
        {"zero setting is ignored", kUndecided, tabSize(0, 2), python, 4},
        {"negative setting is ignored", kUndecided, tabSize(-2, 0), none, 4},
    };
    for (const auto& c : cases)
        EXPECT_EQ(resolveIndentation(start(), c.detected, c.settings, c.language).tabSize, c.want) << c.what;
}

TEST(TabSetup, SoftTabsRules) {
    const std::optional<std::string> none, ruby = "Ruby";
    // Decided with a high ratio: the detected character, over any setting.
    EXPECT_TRUE(resolveIndentation(start(), spaces(1, 0.0, 0.9), softTabs(false, 2), none).useSoftTabs);
    EXPECT_FALSE(resolveIndentation(start(4, true), kTabs, softTabs(true, 2), none).useSoftTabs);
    // Width 1 still gives soft tabs (only the size is not taken).
    auto c = resolveIndentation(start(4, false), spaces(1, 0.0, 1.0), {}, none);
    EXPECT_EQ(c, start(4, true));
    // A ratio of exactly 0.8 is not enough: the settings decide.
    EXPECT_FALSE(resolveIndentation(start(), spaces(4, 1.0, 0.8), softTabs(false, 1), none).useSoftTabs);
    // Undecided: specific and global settings alike give their value (languages have no opinion).
    EXPECT_TRUE(resolveIndentation(start(), kUndecided, softTabs(true, 1), ruby).useSoftTabs);
    EXPECT_TRUE(resolveIndentation(start(), kUndecided, softTabs(true, 0), ruby).useSoftTabs);
    EXPECT_FALSE(resolveIndentation(start(4, true), kUndecided, softTabs(false, 0), none).useSoftTabs);
    // Nothing decides: the context keeps what it had.
    EXPECT_EQ(resolveIndentation(start(7, true), kUndecided, {}, none), start(7, true));
    EXPECT_EQ(resolveIndentation(start(7, true), kUndecided, {}, std::string()), start(7, true));
}

}  // namespace

namespace {

TEST(DefaultContext, FromUserDefaultsWithinRange) {
    vx::test::TempDir home;
    ASSERT_EQ(setenv("VX_HOME", home.path().c_str(), 1), 0);
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    EXPECT_EQ(VXIndentationContext::defaultContext(), start(4, false));  // nothing set

    const std::pair<int64_t, uint64_t> sizes[] = {{1, 1}, {18, 18}, {19, 4}, {0, 4}, {-3, 4}, {8, 8}};
    for (auto [stored, want] : sizes) {
        defaults.setInteger("VXTabSize", stored);
        defaults.setBool("VXUseSoftTabs", stored % 2 == 0);
        EXPECT_EQ(VXIndentationContext::defaultContext(), start(want, stored % 2 == 0)) << stored;
    }
    unsetenv("VX_HOME");
}

}  // namespace
