#include <gtest/gtest.h>

#include "snippets/dollar_converter.hpp"
#include "snippet_test_support.hpp"

namespace vx {
namespace {

TEST(DollarSnippetConverter, WritesEachConstructInThisSyntax) {
    struct Case {
        const char* dollar;
        const char* converted;
        const char* expanded;  // what the converted snippet compiles to
    };
    const Case cases[] = {
        {"$1 ${2} $0", "%{1} %{2} %{0}", "  "},
        {"${1:default}", "%{1:\"default\"}", "default"},
        {"${1:a ${2:b} c}", "%{1:\"a %{2:\"b\"} c\"}", "a b c"},
        {"${1:say \"hi\" \\\\ \\}}", "%{1:\"say \\\"hi\\\" \\\\ }\"}", "say \"hi\" \\ }"},
        {"$TM_FILENAME ${TM_SELECTED_TEXT:none} $HOME", "%{VX_FILENAME} %{VX_SELECTED_TEXT:\"none\"} %{HOME}", " none "},
        {"`date +%Y`", "%{`date +%Y`}", ""},
        {"${1/(a)|b/$1 ${1:+yes}${1:?y:n}${1:-d}/g}", "%{1/(a)|b/\\1 (?1:yes:)(?1:y:n)(?1:\\1:d)/g}", ""},
        {"${1/x/(?1:a\\:b:c)/}", "%{1/x/(?1:a\\:b:c)/}", ""},
        {"${1/a\\/b/c\\/d/}", "%{1/a\\/b/c\\/d/}", ""},
        {"${1/a}/x/}", "%{1/a\\x7d/x/}", ""},
        {"${1/(.)(.)(.)(.)(.)(.)(.)(.)(.)(.)/${10}x/}", "%{1/(.)(.)(.)(.)(.)(.)(.)(.)(.)(.)/$10x/}", ""},
        {"${1/a/${1:+(b:c)}/}", "%{1/a/(?1:\\(b\\:c\\):)/}", ""},
        {"${1/a/${1:-x/y}/}", "%{1/a/(?1:\\1:x\\/y)/}", ""},
        // Plain text that this syntax would read differently is escaped or carried by constants.
        {"50% of %{x} \\$5 $ a:b/c", "50% of %{\"%\"}{x} $5 $ a:b/c", "50% of %{x} $5 $ a:b/c"},
        {"`a` \\`$1\\`", "%{`a`} %{\"`\"}%{1}%{\"`\"}", " ``"},  // escaped backquotes are text
        {"${1:\\`a\\\\b\\`} ${2:x\\`}", "%{1:\"%{\"`\"}a\\\\b%{\"`\"}\"} %{2:\"x%{\"`\"}\"}", "`a\\b` x`"},
        {"${1:\\`ok\\`}", "%{1:\"`ok`\"}", "`ok`"},
        {"\\\" \\/ \\\\", "\\\" \\/ \\", "\\\" \\/ \\"},
    };
    for (const Case& c : cases) {
        SnippetConversion result = convertDollarSnippet(utf16FromUtf8(c.dollar));
        ASSERT_TRUE(result.ok) << c.dollar << ": " << result.problem;
        EXPECT_EQ(utf8FromUtf16(result.text), c.converted) << c.dollar;
        CompiledSnippet compiled = VXNewSnippetParserCompile(result.text);
        EXPECT_FALSE(compiled.failed) << c.dollar;
        EXPECT_EQ(utf8FromUtf16(compiled.string), c.expanded) << c.dollar;
    }
}

TEST(DollarSnippetConverter, FailsOnWhatThisSyntaxCannotSay) {
    const std::pair<const char*, size_t> cases[] = {
        {"${1|a,b|}", 3},             // choices
        {"${1/a/\\u$1/}", 6},         // case changes
        {"${1/a/${1:/upcase}/}", 6},
        {"${1/a{2}/x/}", 5},          // a counted repetition needs a "}"
        {"${1/a/}/}", 6},             // a "}" in a replacement
        {"`echo \"x\"`", 0},          // a double quote in a shell command
        {"${1:unclosed", 12},
        {"${1/a/b", 7},
        {"${}", 2},
    };
    for (auto [text, offset] : cases) {
        SnippetConversion result = convertDollarSnippet(utf16FromUtf8(text));
        EXPECT_FALSE(result.ok) << text << " gave " << utf8FromUtf16(result.text);
        EXPECT_FALSE(result.problem.empty()) << text;
        EXPECT_EQ(result.offset, offset) << text;
    }
}

}  // namespace
}  // namespace vx
