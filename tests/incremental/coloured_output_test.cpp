// vx highlight --format ansi|html: the text comes through unchanged and each run carries the
// theme's colour for its scopes.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <regex>

#include "support/run_command.hpp"
#include "support/temp_dir.hpp"

namespace vx::test {
namespace {

constexpr const char* kTheme =
    "(!default (color [#ffffff]) (background [#000000]))\n"
    "(apply [comment] Comment (color [#ff0000]) (italic))\n"
    "(apply [string] String (color [#00ff00]) (background [#0000ff]))\n"
    "(apply [storage] Storage (color [#808080]) (bold))\n";
constexpr const char* kSource = "/* a & b < c */\nint x = \"s\";\n";

CommandResult highlight(const TempDir& dir, const std::string& format, const std::string& colors = "24bit") {
    return runCommand({VX_BINARY, "highlight", "--format", format, "--colors", colors, "--theme",
                       dir.path() + "/Test.selfml", dir.path() + "/sample.c"});
}

TEST(ColouredOutput, AnsiCarriesTheThemeColours) {
    TempDir dir;
    dir.write("Test.selfml", kTheme);
    dir.write("sample.c", kSource);
    const CommandResult full = highlight(dir, "ansi");
    ASSERT_EQ(full.status, 0) << full.err;
    EXPECT_EQ(std::regex_replace(full.out, std::regex("\x1b\\[[0-9;]*m"), ""), kSource);
    EXPECT_NE(full.out.find("\x1b[0;3;38;2;255;0;0m/* a & b < c */"), std::string::npos) << full.out;
    EXPECT_NE(full.out.find("\x1b[0;1;38;2;128;128;128mint"), std::string::npos) << full.out;
    EXPECT_NE(full.out.find("38;2;0;255;0;48;2;0;0;255m\"s\""), std::string::npos) << full.out;
    // Every line ends with the look reset, so a pager's own colours are not disturbed.
    EXPECT_NE(full.out.find("\x1b[0m\n"), std::string::npos);

    const CommandResult palette = highlight(dir, "ansi", "256");
    ASSERT_EQ(palette.status, 0) << palette.err;
    EXPECT_EQ(palette.out.find("38;2;"), std::string::npos);
    EXPECT_NE(palette.out.find("38;5;196m/*"), std::string::npos) << palette.out;   // red in the cube
    EXPECT_NE(palette.out.find("38;5;244mint"), std::string::npos) << palette.out;  // grey on the ramp
    EXPECT_NE(palette.out.find("38;5;46;48;5;21m"), std::string::npos) << palette.out;

    const CommandResult missing = runCommand({VX_BINARY, "highlight", "--format", "ansi", "--theme", "NoSuchTheme",
                                              dir.path() + "/sample.c"});
    EXPECT_NE(missing.status, 0);
}

TEST(ColouredOutput, HtmlIsAStandalonePageWithInlineStyles) {
    TempDir dir;
    dir.write("Test.selfml", kTheme);
    dir.write("sample.c", kSource);
    const CommandResult page = highlight(dir, "html");
    ASSERT_EQ(page.status, 0) << page.err;
    EXPECT_EQ(page.out.rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_NE(page.out.find("<span style=\"color:#ff0000;font-style:italic;\">/* a &amp; b &lt; c */</span>"),
              std::string::npos) << page.out;
    EXPECT_NE(page.out.find("color:#00ff00;background:#0000ff;"), std::string::npos);
    // Taking the tags away and reading the entities gives the source back.
    const auto start = page.out.find("<pre");
    const auto end = page.out.find("</pre>");
    std::string text = std::regex_replace(page.out.substr(start, end - start), std::regex("<[^>]*>"), "");
    text = std::regex_replace(text, std::regex("&lt;"), "<");
    text = std::regex_replace(text, std::regex("&gt;"), ">");
    text = std::regex_replace(text, std::regex("&quot;"), "\"");
    text = std::regex_replace(text, std::regex("&amp;"), "&");
    EXPECT_EQ(text, kSource);
}

}  // namespace
}  // namespace vx::test
