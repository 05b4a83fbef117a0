#include <gtest/gtest.h>

#include "projects/ignore_rules.hpp"

namespace vx {
namespace {

TEST(IgnoreGlob, StarsClassesAndEscapes) {
    struct Case {
        std::string_view pattern, text;
        bool want;
    };
    const Case cases[] = {
        {"*.log", "a.log", true},       {"*.log", "a.logx", false},     {"*.log", "d/a.log", false},
        {"a?c", "abc", true},           {"a?c", "a/c", false},          {"[a-c]x", "bx", true},
        {"[!a-c]x", "bx", false},       {"[^a-c]x", "dx", true},        {"[]]", "]", true},
        {"[a", "[a", true},             {"\\*x", "*x", true},           {"\\*x", "ax", false},
        {"**/foo", "foo", true},        {"**/foo", "a/b/foo", true},    {"**/foo", "a/bfoo", false},
        {"a/**/b", "a/b", true},        {"a/**/b", "a/x/y/b", true},    {"a/**/b", "ax/b", false},
        {"a/**", "a/x/y", true},        {"a/**", "a", false},           {"a**b", "axxb", true},
        {"a**b", "ax/b", false},        {"*", "", true},                {"", "", true},
        {"***", "abc", true},           {"a*b*c*d*e*f*g*h", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", false},
    };
    for (const auto& c : cases) EXPECT_EQ(ignoreGlobMatches(c.pattern, c.text), c.want) << c.pattern << " ~ " << c.text;
}

TEST(IgnoreRules, ParsingAndTheLastMatchingRule) {
    const auto rules = IgnoreRules::parse(
        "# comment\n"
        "\n"
        "*.log\n"
        "!keep.log\n"
        "/root-only\n"
        "out/\n"
        "doc/*.txt\n"
        "\\#hash\n"
        "trailing   \n"
        "CRLF\r\n");
    ASSERT_EQ(rules.rules().size(), 8u);
    struct Case {
        std::string_view path;
        bool directory;
        std::optional<bool> want;
    };
    const Case cases[] = {
        {"a.log", false, true},        {"deep/a.log", false, true},  {"keep.log", false, false},
        {"root-only", false, true},    {"x/root-only", false, {}},   {"out", true, true},
        {"out", false, {}},            {"x/out", true, true},        {"doc/a.txt", false, true},
        {"x/doc/a.txt", false, {}},    {"doc/x/a.txt", false, {}},   {"#hash", false, true},
        {"trailing", false, true},     {"CRLF", false, true},        {"other.c", false, {}},
    };
    for (const auto& c : cases) EXPECT_EQ(rules.verdict(c.path, c.directory), c.want) << c.path;
}

TEST(IgnoreRules, DeeperFilesSpeakFirst) {
    IgnoreStack stack;
    stack.push("", std::make_shared<IgnoreRules>(IgnoreRules::parse("*.gen\nsecret\n")));
    stack.push("lib", std::make_shared<IgnoreRules>(IgnoreRules::parse("!keep.gen\n/local\n")));
    EXPECT_TRUE(stack.isIgnored("a.gen", false));
    EXPECT_TRUE(stack.isIgnored("lib/a.gen", false));
    EXPECT_FALSE(stack.isIgnored("lib/keep.gen", false));
    EXPECT_TRUE(stack.isIgnored("other/keep.gen", false));
    EXPECT_TRUE(stack.isIgnored("lib/local", true));
    EXPECT_FALSE(stack.isIgnored("local", true));  // anchored to lib/
    EXPECT_FALSE(stack.isIgnored("library/local", true));
    EXPECT_TRUE(stack.isIgnored("lib/x/secret", false));
    stack.pop();
    EXPECT_TRUE(stack.isIgnored("lib/keep.gen", false));
}

}  // namespace
}  // namespace vx
