// Measuring, normalizing, shifting and homogenizing leading whitespace.
#include <gtest/gtest.h>

#include <string>

#include "document/default_detector.hpp"
#include "document/indentation_strings.hpp"

using namespace vx;

namespace {

std::string utf8(std::u16string_view text) {
    std::string out;
    for (char16_t c : text) out += c < 0x80 ? char(c) : '?';
    return out;
}

VXIndentationContext context(uint64_t tabSize, bool soft) {
    VXIndentationContext c;
    c.tabSize = tabSize;
    c.useSoftTabs = soft;
    return c;
}

TEST(IndentationStrings, MeasureAndReplaceTheLeadingRun) {
    auto tabs4 = context(4, false);
    struct Case {
        std::u16string_view line;
        size_t raw;
        std::u16string_view indentation;
        uint64_t width;
    };
    const Case cases[] = {
        {u"", 0, u"", 0},
        {u"abc", 0, u"", 0},
        {u"\t  x", 3, u"\t  ", 6},
        {u"  \tx", 3, u"  \t", 4},     // a tab moves to the next multiple of the tab size
        {u"   \t\tx", 5, u"   \t\t", 8},
        {u"  \u00A0x", 2, u"  ", 2},    // a no-break space ends the run on a line with content
        {u" \u00A0 ", 1, u" \u00A0 ", 1},  // but a line of nothing else is all indentation
        {u"  \n", 2, u"  ", 2},         // a line break is content
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rawIndentationLength(c.line), c.raw) << utf8(c.line);
        EXPECT_EQ(indentation(c.line), c.indentation) << utf8(c.line);
        EXPECT_EQ(indentationLengthInSpacesWithContext(c.line, tabs4), c.width) << utf8(c.line);
    }
    EXPECT_EQ(indentationLengthInSpacesWithContext(u"\t\tx", context(8, true)), 16u);

    EXPECT_EQ(stringBySettingIndentation(u"\t  foo  ", u"    "), u"    foo  ");
    EXPECT_EQ(stringBySettingIndentation(u"foo", u"\t"), u"\tfoo");
    EXPECT_EQ(stringBySettingIndentation(u"   ", u"\t"), u"\t");  // all whitespace: replaced whole
    EXPECT_EQ(stringBySettingIndentation(u"", u"\t"), u"\t");
    EXPECT_EQ(stringBySettingIndentation(u"  x", {}), u"x");
}

TEST(IndentationStrings, Normalize) {
    struct Case {
        std::u16string_view indentation;
        uint64_t tabSize;
        bool soft;
        std::u16string_view want;
    };
    const Case cases[] = {
        {u"\t", 4, true, u"    "},
        {u"  \t", 4, true, u"    "},            // the tab fills up to the next multiple
        {u" \t \t", 4, true, u"        "},
        {u"\t  ", 4, false, u"\t  "},           // leftover spaces stay spaces
        {u"        ", 4, false, u"\t\t"},
        {u"      ", 4, false, u"\t  "},
        {u"   \t", 2, false, u"\t\t"},          // 3 spaces then a tab reach column 4
        {u"  x\t", 4, true, u"    "},           // other characters are dropped
        {u"", 4, false, u""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(normalizeIndentationUsingContext(c.indentation, context(c.tabSize, c.soft)), c.want)
            << utf8(c.indentation) << " size " << c.tabSize << (c.soft ? " soft" : " hard");

    EXPECT_EQ(lineByNormalizingIndentationUsingContext(u" \tif (x) {\t}", context(4, true)), u"    if (x) {\t}");
    EXPECT_EQ(lineByNormalizingIndentationUsingContext(u"        return", context(4, false)), u"\t\treturn");
}

TEST(IndentationStrings, IndentByOneLevel) {
    auto tabs4 = context(4, false), spaces2 = context(2, true);
    // Inward: exactly one tab string, whatever the amount.
    EXPECT_EQ(indentBy(u"  a", 1, tabs4), u"\t  a");
    EXPECT_EQ(indentBy(u"a", 5, spaces2), u"  a");
    EXPECT_EQ(indentBy(u"\ta", 0, tabs4), u"\ta");

    struct Case {
        std::u16string_view line;
        std::u16string_view want;
    };
    const Case outdents[] = {
        {u"\t  a", u"  a"},         // width 6: the tab would cross column 2, so it becomes 2 spaces
        {u"  a", u"a"},             // width 2 <= 4: removed entirely
        {u"    a", u"a"},           // exactly one level
        {u"\t\ta", u"\ta"},
        {u"      a", u"  a"},
        {u"  \t  a", u"  a"},       // "  " fits in 2 columns; the tab straddles and is dropped
        {u" \t\t a", u" \t a"},      // width 9, new edge 5: " \t" reaches 4, the second tab becomes 1 space
        {u"a", u"a"},
        {u"", u""},
    };
    for (const auto& c : outdents) EXPECT_EQ(indentBy(c.line, -1, tabs4), c.want) << utf8(c.line);
    EXPECT_EQ(indentBy(u"      a", -3, spaces2), u"    a");  // one level, whatever the amount
}

TEST(IndentationStrings, HomogenizeABlockForInsertion) {
    auto spaces4 = context(4, true), tabs4 = context(4, false);
    // The common prefix "    " goes; the caret's indentation "\t" joins every line but the first.
    EXPECT_EQ(stringByHomogenizingIndentationInto(u"    if (x) {\n        y();\n\n    }", tabs4, u"\t"),
              u"if (x) {\n\t\ty();\n\n\t}");
    // The prefix is literal: "\t" and "    " have nothing in common, so each keeps its own width.
    EXPECT_EQ(stringByHomogenizingIndentationInto(u"\ta\n    b\n", spaces4, u"  "), u"    a\n      b\n");
    // Blank lines do not narrow the prefix and keep no trailing whitespace; CRLF survives.
    EXPECT_EQ(stringByHomogenizingIndentationInto(u"  a\r\n \r\n    b", spaces4, u"  "), u"a\r\n\r\n    b");
    // A prefix matcher drops a comment marker that the prepended string replaces.
    LinePrefixMatcher hash = [](std::u16string_view content) -> size_t {
        return content.starts_with(u"# ") ? 2 : 0;
    };
    EXPECT_EQ(stringByHomogenizingIndentationInto(u"  # a\n    # b\n  c", spaces4, u"\t", hash, u"// "),
              u"// a\n\t  // b\n\t// c");
    EXPECT_EQ(stringByHomogenizingIndentationInto(u"", spaces4, u"  "), u"");
}

TEST(DefaultDetector, LanguageDefaultsAndExtensions) {
    EXPECT_EQ(VXDefaultDetector::tabSizeForLanguage("Ruby"), 2);
    EXPECT_EQ(VXDefaultDetector::tabSizeForLanguage("YAML"), 2);
    EXPECT_EQ(VXDefaultDetector::tabSizeForLanguage("Python"), -1);
    EXPECT_EQ(VXDefaultDetector::usesSpacesForLanguage("Ruby"), -1);

    auto& detector = VXDefaultDetector::sharedDetector();
    EXPECT_EQ(detector.languageForExtension("YML"), "YAML");
    EXPECT_EQ(detector.languageForExtension("no-such-extension"), std::nullopt);
    detector.recordLanguage("Ruby", "Podspec");
    EXPECT_EQ(detector.languageForExtension("podspec"), "Ruby");
    detector.recordLanguage("Ruby", "yml");  // a recorded choice wins over the table
    EXPECT_EQ(detector.languageForExtension("yml"), "Ruby");
}

}  // namespace
