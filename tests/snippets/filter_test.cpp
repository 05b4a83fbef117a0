#include <gtest/gtest.h>

#include "snippets/regex_filter.hpp"
#include "snippets/shell_constant_runner.hpp"
#include "snippet_test_support.hpp"

namespace vx {
namespace {

std::string applyRegex(std::u16string pattern, std::u16string replace, std::u16string options, std::u16string_view value) {
    SNRegexFilter filter(std::move(pattern), std::move(replace), std::move(options));
    return utf8FromUtf16(filter.apply(value, SnippetEnvironment{}));
}

TEST(SnippetRegexFilter, ReplacesFirstOrEveryMatchWithOptions) {
    struct Case {
        std::u16string_view pattern, replace, options, value;
        const char* want;
    };
    const Case cases[] = {
        {u"a", u"b", u"", u"banana", "bbnana"},
        {u"a", u"b", u"g", u"banana", "bbnbnb"},
        {u" ", u"", u"g", u"a b  c", "abc"},
        {u"A", u"x", u"gi", u"aA", "xx"},
        {u"A", u"x", u"g", u"aA", "ax"},
        {u"a.b", u"x", u"", u"a\nb", "a\nb"},
        {u"a.b", u"x", u"m", u"a\nb", "x"},          // "m": a dot matches a line break
        {u"^", u"> ", u"g", u"one\ntwo", "> one\n> two"},
        {u"x*", u"-", u"g", u"abc", "-a-b-c-"},       // empty matches advance one character
        {u"x*", u"-", u"g", u"😀", "-😀-"},           // ... and never split a surrogate pair
        {u"(", u"x", u"g", u"((", "(("},               // a pattern that does not compile leaves the value alone
        {u"b", u"x", u"", u"", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(applyRegex(std::u16string(c.pattern), std::u16string(c.replace), std::u16string(c.options), c.value), c.want)
            << utf8FromUtf16(c.pattern) << " / " << utf8FromUtf16(c.value);
    EXPECT_FALSE(SNRegexFilter(u"(", u"", u"").isValid());
}

TEST(SnippetRegexFilter, ReplacementReferencesConditionalsAndEscapes) {
    struct Case {
        std::u16string_view pattern, replace, value;
        const char* want;
    };
    const Case cases[] = {
        {u"(\\w+) (\\w+)", u"$2 $1", u"hello world", "world hello"},
        {u"(\\w+) (\\w+)", u"\\2 \\1", u"hello world", "world hello"},
        {u"(\\w+)", u"[$0]", u"hi", "[hi]"},
        {u"(a)|(b)", u"(?1:one:two)", u"b", "two"},
        {u"(a)|(b)", u"(?1:one:two)", u"a", "one"},
        {u"(a)|(b)", u"(?1:one)", u"b", ""},                                     // no else part
        {u"(a)?(b)?(c)?", u"(?1:A(?2:B:b):a(?3:C:c))", u"ab", "AB"},             // nested conditionals
        {u"(a)?(b)?(c)?", u"(?1:A(?2:B:b):a(?3:C:c))", u"c", "aC"},
        {u"(a)", u"(?1:\\(x\\:y\\))", u"a", "(x:y)"},                             // escaped parens and colon in a branch
        {u"(a)", u"(?1:(x):y)", u"a", "(x)"},                                     // balanced parens stay inside
        {u"(a)", u"(?1:open", u"a", "(?1:open"},                                  // an unclosed conditional is text
        {u"(a)", u"(b) c:d", u"a", "(b) c:d"},                                    // outside a conditional, text
        {u"(a)", u"\\$1 \\\\1 $ \\n\\t", u"a", "$1 \\1 $ \n\t"},
        {u"(a)", u"\\12", u"a", "a2"},                                            // a backslash takes one digit
        {u"(a)", u"$5", u"a", ""},                                                // a group the pattern does not have
        {u"(.)(.)(.)(.)(.)(.)(.)(.)(.)(.)", u"$10|$1|\\10", u"abcdefghij", "j|a|a0"},
        {u"(.)(.)(.)(.)(.)(.)(.)(.)(.)(.)", u"(?10:ten:none)", u"abcdefghij", "ten"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(applyRegex(std::u16string(c.pattern), std::u16string(c.replace), u"", c.value), c.want)
            << utf8FromUtf16(c.replace) << " on " << utf8FromUtf16(c.value);

    // A group's text that a dollar reference inserts stays literal, whatever it holds.
    RegexMatch match{u"xxxxxxxxx(a:b\\1)", {}};
    for (int i = 0; i < 10; ++i) match.groups.push_back({static_cast<uint64_t>(i), 1});
    match.groups.push_back({9, 8});
    std::u16string converted = SNRegexFilter::dollarsToBackslashes(u"$10", match);
    EXPECT_EQ(SNRegexFilter::applyRecursiveConditionalReplacements(converted, match), u"(a:b\\1)");
    EXPECT_EQ(SNRegexFilter::dollarsToBackslashes(u"$1 \\$2 $x", match), u"\\1 \\$2 $x");
}

TEST(SnippetFilters, OrElseAndFilterChainsInASession) {
    CompiledSnippet snippet = test::compile("%{1:\"fallback\"/a/A/g} %{1/(\\w+)/<$1>/:\"none\"} %{VX_FILENAME:\"untitled\"}");
    ASSERT_FALSE(snippet.failed);
    ASSERT_EQ(snippet.constructs.size(), 3u);
    SnippetEnvironment environment;
    const SNConstruct& tabStop = *snippet.constructs[0];
    EXPECT_EQ(tabStop.applyFilters(u"", environment), u"fAllbAck");
    EXPECT_EQ(tabStop.applyFilters(u"banana", environment), u"bAnAnA");
    const SNConstruct& mirror = *snippet.constructs[1];
    EXPECT_EQ(mirror.applyFilters(u"word", environment), u"<word>");
    EXPECT_EQ(mirror.applyFilters(u"", environment), u"none");
    const auto& constant = dynamic_cast<const SNConstantConstruct&>(*snippet.constructs[2]);
    EXPECT_EQ(constant.applyFilters(constant.constant->resolve(environment).value_or(u""), environment), u"untitled");
    environment.filePath = u"/home/me/notes.txt";
    EXPECT_EQ(constant.applyFilters(constant.constant->resolve(environment).value_or(u""), environment), u"notes.txt");
}

TEST(SnippetEnvironmentVariables, ResolveFromTheSessionThenTheProcess) {
    SnippetEnvironment environment;
    environment.selectedText = u"sel";
    environment.currentLine = u"the line";
    environment.currentWord = u"word";
    environment.filePath = u"/tmp/dir/file.cpp";
    environment.lineNumber = 42;
    environment.now = std::chrono::system_clock::from_time_t(1700000000);  // 2023-11-14/15 depending on zone
    const std::pair<std::u16string_view, std::u16string_view> cases[] = {
        {u"VX_SELECTED_TEXT", u"sel"}, {u"VX_CURRENT_LINE", u"the line"}, {u"VX_CURRENT_WORD", u"word"},
        {u"VX_FILENAME", u"file.cpp"}, {u"VX_FILEPATH", u"/tmp/dir/file.cpp"}, {u"VX_DIRECTORY", u"/tmp/dir"},
        {u"VX_LINE_NUMBER", u"42"},    {u"VX_YEAR", u"2023"},
    };
    for (auto [name, want] : cases) EXPECT_EQ(environment.variable(name), std::u16string(want)) << utf8FromUtf16(name);
    std::u16string date = environment.variable(u"VX_DATE").value_or(u"");
    EXPECT_TRUE(date == u"2023-11-14" || date == u"2023-11-15") << utf8FromUtf16(date);
    EXPECT_EQ(environment.variable(u"VX_TIME").value_or(u"").size(), 8u);
    EXPECT_EQ(SnippetEnvironment{}.variable(u"VX_FILENAME"), std::nullopt);
    EXPECT_EQ(SnippetEnvironment{}.variable(u"NO_SUCH_VARIABLE_ANYWHERE"), std::nullopt);
    ::setenv("VX_SNIPPET_TEST_VALUE", "from env", 1);
    EXPECT_EQ(environment.variable(u"VX_SNIPPET_TEST_VALUE"), u"from env");
}

TEST(SnippetShellConstants, RunOnlyWhenAllowedAndReturnTheirOutput) {
    SnippetEnvironment environment;
    environment.filePath = u"/tmp/some file.txt";
    SNShellConstant shell;
    shell.script = u"printf 'héllo\\n'";
    EXPECT_EQ(shell.resolve(environment), std::nullopt);  // previews run nothing
    environment.runShellCommands = true;
    EXPECT_EQ(shell.resolve(environment), u"héllo");      // one trailing line break dropped

    EXPECT_EQ(runShellConstant(u"", u"echo \"$VX_FILENAME\"", environment), u"some file.txt");
    EXPECT_EQ(runShellConstant(u"", u"pwd", environment), u"/tmp");  // the document's folder
    EXPECT_EQ(runShellConstant(u"sh", u"echo found in PATH", environment), u"found in PATH");
    EXPECT_EQ(runShellConstant(u"/bin/sh", u"read x; echo got; echo $0", environment), u"got\n/bin/sh");  // script on stdin
    EXPECT_EQ(runShellConstant(u"/usr/bin/env sh", u"echo via env", environment), u"via env");
    EXPECT_EQ(runShellConstant(u"", u"echo partial; exit 3", environment), std::nullopt);
    EXPECT_EQ(runShellConstant(u"/no/such/interpreter", u"x", environment), std::nullopt);

    environment.shellTimeout = 0.2;
    auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(runShellConstant(u"", u"exec sleep 5", environment), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(3));
}

}  // namespace
}  // namespace vx
