// The theme colour routines, quirks included.
#include <gtest/gtest.h>

#include <cmath>

#include "selectors/color.hpp"

using vx::VXColor;

namespace {

std::string hex(const std::optional<VXColor>& color) { return color ? color->hexString() : "nil"; }

TEST(ThemeColor, HexadecimalForms) {
    EXPECT_EQ(vx::colorFromHexString("#abc"), vx::colorFromHexString("#aabbcc"));
    EXPECT_EQ(hex(vx::colorFromHexString("#aabbcc")), "#AABBCCFF");
    auto translucent = vx::colorFromHexString("#aabbcc80");
    ASSERT_TRUE(translucent);
    EXPECT_DOUBLE_EQ(translucent->alpha, 0x80 / 255.0);
    for (const char* rejected : {"#abcd", "#", "", "#abcde", "#gg0000", "#aabbcc8"})
        EXPECT_FALSE(vx::colorFromHexString(rejected)) << rejected;
    EXPECT_EQ(hex(vx::colorFromHexString("FF0000")), "#FF0000FF");  // the "#" is optional
}

TEST(ThemeColor, NamesAndStrings) {
    const std::pair<const char*, const char*> cases[] = {
        {"transparent", "#00000000"},
        {"", "#00000000"},
        {"#f00", "#FF0000FF"},
        {"aliceblue", "#F0F8FFFF"},
        {"NavY", "#000080FF"},  // names without regard to case
        {"rebeccapurple", "#663399FF"},
        {"yellowgreen", "#9ACD32FF"},
        {"notacolor", "nil"},
        {"rgb(255, 0, 0)", "#FF0000FF"},
        {"rgb(256, 0, 0)", "#000000FF"},  // 256 reads as 0, not 1
        {"rgb(-1, 0, 0)", "#000000FF"},
        {"rgba(100%, 0%, 0%, 0.5)", "#FF000080"},
        {"rgba(255,0,0,50%)", "#FF000080"},
        {"rgb(0.5, 128, 150%)", "#8080FFFF" /* 0.5 as is; 128/255; 150% clamps to 1 */},
        {"hsl(0, 100%, 50%)", "#FF0000FF"},
        {"hsl(120, 100%, 50%)", "#00FF00FF"},
        {"hsla(240, 100%, 50%, 0.25)", "#0000FF40"},
        {"hsl(-120, 100%, 50%)", "#0000FFFF"},  // wraps to 240 degrees
        {"rgb(1, 2)", "nil"},
        {"  rgb(255, 0, 0) trailing", "#FF0000FF"},  // the notation is searched for
    };
    for (auto [text, want] : cases) EXPECT_EQ(hex(vx::colorFromString(text)), want) << text;
    auto blended = vx::colorFromString("rgb(0.5, 128, 150%)");
    EXPECT_DOUBLE_EQ(blended->red, 0.5);
    EXPECT_DOUBLE_EQ(blended->green, 128 / 255.0);
    EXPECT_DOUBLE_EQ(blended->blue, 1.0);
}

TEST(ThemeColor, ColorFloatValueQuirks) {
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("0.5"), 0.5);
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("5.5"), 5.5);     // second character "." : as it stands
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("10.7"), 10.7 / 255);
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("255"), 1.0);
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("256"), 0.0);
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("-3"), 0.0);
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("50%"), 0.5);
    EXPECT_DOUBLE_EQ(vx::colorFloatValue("250%"), 1.0);
}

TEST(ThemeColor, ThemeStringsFallBackToHexDigitsAnywhere) {
    EXPECT_EQ(hex(vx::colorFromThemeString("aabbcc")), "#AABBCCFF");
    EXPECT_EQ(hex(vx::colorFromThemeString("aabbcc80")), "#AABBCC80");
    EXPECT_EQ(hex(vx::colorFromThemeString("abc")), "nil");  // three digits need the "#"
    EXPECT_EQ(hex(vx::colorFromThemeString("#abc")), "#AABBCCFF");
    EXPECT_EQ(hex(vx::colorFromThemeString("red")), "#FF0000FF");
}

TEST(ThemeColor, ListFormsAndHslConversion) {
    EXPECT_EQ(hex(vx::colorFromComponents("rgba", {"1", "0", "0", "0.5"})), "#FF000080");
    EXPECT_EQ(hex(vx::colorFromComponents("rgb", {"0", "1", "0"})), "#00FF00FF");
    EXPECT_EQ(hex(vx::colorFromComponents("hsl", {"0.5", "1", "0.5"})), "#00FFFFFF");
    EXPECT_FALSE(vx::colorFromComponents("rgb", {"1", "0"}));
    EXPECT_FALSE(vx::colorFromComponents("cmyk", {"1", "0", "0", "0"}));
    // Every sixth of the hue circle lands on its primary or secondary colour.
    const char* want[] = {"#FF0000FF", "#FFFF00FF", "#00FF00FF", "#00FFFFFF", "#0000FFFF", "#FF00FFFF"};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(VXColor::colorWithCalibratedHue(i / 6.0, 1, 0.5, 1).hexString(), want[i]) << i;
    EXPECT_EQ(VXColor::colorWithCalibratedHue(0.3, 0, 0.25, 1).hexString(), "#404040FF");
}

TEST(ThemeColor, NameTableIsSortedAndComplete) {
    const auto& table = vx::colorsAndNames();
    EXPECT_EQ(table.size(), 148u);
    for (size_t i = 1; i < table.size(); ++i) EXPECT_LT(table[i - 1].first, table[i].first);
    for (const auto& [name, value] : table) EXPECT_TRUE(vx::colorFromHexString(value)) << name;
}

}  // namespace
