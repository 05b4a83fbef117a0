#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "snippets/regex_filter.hpp"
#include "snippet_test_support.hpp"

namespace vx {
namespace {

using test::compile;
using test::layout;
using ::testing::ElementsAre;

template <class T>
const T& filterAt(const CompiledSnippet& snippet, size_t construct, size_t filter) {
    return dynamic_cast<const T&>(*snippet.constructs.at(construct)->filters.at(filter));
}

TEST(SnippetParser, NumberedConstructsAreTabStopsOrMirrors) {
    struct Case {
        const char* text;
        const char* string;
        std::vector<std::string> layout;
    };
    const Case cases[] = {
        {"%{1:foo}", "", {"T1 0+0"}},  // ":" and "=" are the same token; foo is a variable
        {"%{1=\"foo\"}", "foo", {"T1 0+3"}},
        {"%{1:\"a\"} %{1} %{1=\"b\"}", "a  ", {"T1 0+1", "M1 2+0", "M1 3+0"}},
        {"%{1/a/b/g} %{1:\"x\"}", " x", {"M1 0+0", "T1 1+1"}},  // a regex first makes a mirror, even first
        {"%{2} %{1}", " ", {"T2 0+0", "T1 1+0"}},
        {"%{007} %{7}", " ", {"T7 0+0", "M7 1+0"}},  // the number is the digits' value
        {"%{99999999999999999999}", "", {"T9223372036854775807 0+0"}},
        {"def %{1=\"foo\"}(%{2}):\n\t%{0=\"pass\"}", "def foo():\n\tpass", {"T1 4+3", "T2 8+0", "T0 12+4"}},
    };
    for (const Case& c : cases) {
        CompiledSnippet snippet = compile(c.text);
        EXPECT_FALSE(snippet.failed) << c.text;
        EXPECT_EQ(utf8FromUtf16(snippet.string), c.string) << c.text;
        EXPECT_EQ(layout(snippet), c.layout) << c.text;
    }
}

TEST(SnippetParser, TextOutsideConstructsAndEscapesByContext) {
    const std::pair<const char*, const char*> cases[] = {
        {"100%", "100%"},
        {"50% off: a=b / c", "50% off: a=b / c"},  // ":", "=", "/" and digits are text outside constructs
        {"}", "}"},
        {"`echo \"hi\"`", "`echo \"hi\"`"},           // a backquote before a double quote is text
        {"`date` x", "`date` x"},                      // a shell token outside a construct is its text
        {"a\\\"b \\\\ \\/", "a\\\"b \\\\ \\/"},        // body text keeps its backslashes
        {"%{1:\"a\\\"b \\\\ \\/\"}", "a\"b \\ \\/"},   // a quoted default unescapes quote and backslash only
        {"%{\"}/:=%\"}", "}/:=%"},
        {"%{1:\"\"}", ""},
    };
    for (auto [text, want] : cases) {
        CompiledSnippet snippet = compile(text);
        EXPECT_FALSE(snippet.failed) << text;
        EXPECT_EQ(utf8FromUtf16(snippet.string), want) << text;
    }
}

TEST(SnippetParser, RegexFiltersTakeTheirPartsLiterally) {
    struct Case {
        const char* text;
        const char* pattern;
        const char* replace;
        const char* options;
    };
    const Case cases[] = {
        {"%{1/a/b/g}", "a", "b", "g"},
        {"%{1/a/b/}", "a", "b", ""},
        {"%{1/a/b}", "a", "b", ""},
        {"%{1/a/b:\"x\"}", "a", "b:\"x\"", ""},          // ":" continues the replacement
        {"%{1/ //g}", " ", "", "g"},                      // empty parts are accepted
        {"%{1///}", "", "", ""},
        {"%{1/a\\/b/c\\/d/}", "a/b", "c/d", ""},           // only the slash is unescaped
        {"%{1/\\\"\\\\\\d/\"%/}", "\\\"\\\\\\d", "\"%", ""},
        {"%{1/(\\w+)=/$1 (?1:y:n)/gi}", "(\\w+)=", "$1 (?1:y:n)", "gi"},
    };
    for (const Case& c : cases) {
        CompiledSnippet snippet = compile(c.text);
        ASSERT_FALSE(snippet.failed) << c.text;
        ASSERT_EQ(snippet.constructs.size(), 1u) << c.text;
        const auto& regex = filterAt<SNRegexFilter>(snippet, 0, 0);
        EXPECT_EQ(utf8FromUtf16(regex.pattern), c.pattern) << c.text;
        EXPECT_EQ(utf8FromUtf16(regex.replace), c.replace) << c.text;
        EXPECT_EQ(utf8FromUtf16(regex.options), c.options) << c.text;
    }

    // A regex and then an or-else filter, in order.
    CompiledSnippet chained = compile("%{1/a/b/:\"x\"}");
    ASSERT_EQ(chained.constructs.at(0)->filters.size(), 2u);
    EXPECT_NO_THROW((void)filterAt<SNConstantFilter>(chained, 0, 1));
}

TEST(SnippetParser, NestedConstructsHaveAbsoluteOffsetsAndParents) {
    struct Case {
        const char* text;
        const char* string;
        std::vector<std::string> layout;
    };
    const Case cases[] = {
        {"ab%{1:\"c%{2:\"de\"}f\"}g", "abcdefg", {"T1 2+4", "T2 3+2 ^0"}},
        {"%{\"x%{1}y\"}", "xy", {"C 0+2", "T1 1+0 ^0"}},  // inside a constant construct's own string
        {"%{1:\"<%{2:\"[%{3:\"z\"}]\"}>\"}", "<[z]>", {"T1 0+5", "T2 1+3 ^0", "T3 2+1 ^1"}},
        {"%{1:\"%{1}\"}", "", {"T1 0+0", "M1 0+0 ^0"}},  // the outer one comes first in text order
        {"%{VX_FILENAME:\"untitled %{1:\"1\"}\"}", "untitled 1", {"C 0+10", "T1 9+1 ^0"}},
        // An or-else after a non-empty value is not used: its constructs have no place.
        {"%{1:\"a\":\"%{2}\"} %{2}", "a ", {"T1 0+1", "M2 2+0"}},
        {"%{1:\"a\"} %{1:\"b %{3}\"} %{3}", "a  ", {"T1 0+1", "M1 2+0", "M3 3+0"}},  // a mirror's default stays unused
    };
    for (const Case& c : cases) {
        CompiledSnippet snippet = compile(c.text);
        EXPECT_FALSE(snippet.failed) << c.text;
        EXPECT_EQ(utf8FromUtf16(snippet.string), c.string) << c.text;
        EXPECT_EQ(layout(snippet), c.layout) << c.text;
    }

    // Unused constructs still belong to the object model, linked to their parent, without a place.
    CompiledSnippet unused = compile("%{1:\"a\":\"%{2}\"}");
    const auto& orElse = filterAt<SNConstantFilter>(unused, 0, 1);
    const auto& string = dynamic_cast<const SNStringConstant&>(*orElse.constant);
    ASSERT_EQ(string.constructs.size(), 1u);
    EXPECT_FALSE(string.constructs[0]->isPlaced());
    EXPECT_EQ(string.constructs[0]->parentConstruct(), unused.constructs[0]);
}

TEST(SnippetParser, OffsetsCountUtf16Units) {
    CompiledSnippet snippet = compile("😀é%{1:\"𝄞x\"}%{2}");
    EXPECT_EQ(snippet.string, u"😀é𝄞x");
    EXPECT_THAT(layout(snippet), ElementsAre("T1 3+3", "T2 6+0"));
}

TEST(SnippetParser, ConstantsOfEachKind) {
    CompiledSnippet snippet = compile("%{`date +%Y`}%{`#!/usr/bin/env python3\nprint(1)`}%{HOME.dir}%{\"s\"}");
    ASSERT_FALSE(snippet.failed);
    ASSERT_EQ(snippet.constructs.size(), 4u);
    auto constantOf = [&](size_t i) { return dynamic_cast<const SNConstantConstruct&>(*snippet.constructs[i]).constant; };
    auto shell = std::dynamic_pointer_cast<SNShellConstant>(constantOf(0));
    ASSERT_TRUE(shell);
    EXPECT_EQ(shell->prefix, u"");
    EXPECT_EQ(shell->script, u"date +%Y");
    auto interpreted = std::dynamic_pointer_cast<SNShellConstant>(constantOf(1));
    ASSERT_TRUE(interpreted);
    EXPECT_EQ(interpreted->prefix, u"/usr/bin/env python3");
    EXPECT_EQ(interpreted->script, u"print(1)");
    auto variable = std::dynamic_pointer_cast<SNVariableConstant>(constantOf(2));
    ASSERT_TRUE(variable);
    EXPECT_EQ(variable->variable, u"HOME.dir");
    EXPECT_EQ(constantOf(3)->kind(), SNConstant::Kind::String);
    EXPECT_EQ(snippet.string, u"s");  // shell commands and variables add nothing until a session resolves them
}

TEST(SnippetParser, SyntaxErrorsSetTheFailedFlag) {
    const char* failures[] = {
        "%{", "%{1", "%{}", "%{1:}", "%{1 }", "%{/a/b/}", "%{1/a}b/}", "%{1/a/b/g h}", "%{1/a%{2}/b/}",
        "%{\"unclosed}", "%{1:\"a\" \"b\"}", "%{x y}", "%{1/a/b/g/}", "%{1:`a\"b`}",
    };
    for (const char* text : failures) {
        CompiledSnippet snippet = compile(text);
        EXPECT_TRUE(snippet.failed) << text;
        EXPECT_EQ(utf8FromUtf16(snippet.string), text) << text;  // the text stays as written
        EXPECT_TRUE(snippet.constructs.empty()) << text;
    }
    EXPECT_FALSE(compile("").failed);
    EXPECT_FALSE(compile("%{1}}").failed);  // a "}" after a construct is text
}

TEST(SnippetParser, DeepNestingFailsInsteadOfOverflowing) {
    std::string deep;
    for (int i = 0; i < 5000; ++i) deep += "%{1:\"";
    EXPECT_TRUE(compile(deep).failed);
    std::string fine;
    for (int i = 0; i < 50; ++i) fine += "%{" + std::to_string(i) + ":\"";
    fine += "x";
    for (int i = 0; i < 50; ++i) fine += "\"}";
    CompiledSnippet snippet = compile(fine);
    EXPECT_FALSE(snippet.failed);
    EXPECT_EQ(snippet.constructs.size(), 50u);
    EXPECT_EQ(snippet.string, u"x");
}

}  // namespace
}  // namespace vx
