#include <gtest/gtest.h>

#include "snippets/snippet_token.hpp"
#include "platform/unicode.hpp"

namespace vx {
namespace {

// The tokens of a text as "KIND:text" words, e.g. "I:foo N:12 C:%".
std::string tokens(std::u16string_view text) {
    static const char* const names[] = {"END", "OE", "%{", "}", "N", "S", "Q", "I", "/", "EQ", "EB", "ES", "C"};
    std::string out;
    for (uint32_t position = 0;;) {
        SnippetToken token = nextSnippetToken(text, position);
        if (token.kind == SnippetTokenKind::End) break;
        if (!out.empty()) out += ' ';
        out += names[static_cast<int>(token.kind)];
        out += ":" + utf8FromUtf16(token.textIn(text));
        position = token.end();
    }
    return out;
}

TEST(SnippetTokenizer, TakesTheLongestMatch) {
    const std::pair<std::u16string_view, std::string> cases[] = {
        {u"def %{1=\"foo\"}", "I:def C:  %{:%{ N:1 OE:= Q:\" I:foo Q:\" }:}"},
        {u"a:b=c", "I:a OE:: I:b OE:= I:c"},
        {u"x.y_z9 1a", "I:x.y_z9 C:  N:1 I:a"},  // digits never start an identifier
        {u"_a .b", "I:_a C:  C:. I:b"},          // a dot may continue an identifier, not start one
        {u"100%", "N:100 C:%"},
        {u"%%{", "C:% %{:%{"},
        {u"%}", "C:% }:}"},
        {u"\\\" \\\\ \\/ \\n \\", "EQ:\\\" C:  EB:\\\\ C:  ES:\\/ C:  C:\\ I:n C:  C:\\"},
        {u"\\\\\\\"", "EB:\\\\ EQ:\\\""},
    };
    for (auto [text, want] : cases) EXPECT_EQ(tokens(text), want) << utf8FromUtf16(text);

    // Outside ASCII every code unit is a CHAR of its own, both halves of a surrogate pair too.
    std::u16string_view wide = u"é😀";
    for (uint32_t position = 0; position < wide.size(); ++position) {
        SnippetToken token = nextSnippetToken(wide, position);
        EXPECT_EQ(token.kind, SnippetTokenKind::Char);
        EXPECT_EQ(token.length, 1u);
    }
}

TEST(SnippetTokenizer, ShellTokensAndTheirFallBack) {
    const std::pair<std::u16string_view, std::string> cases[] = {
        {u"`ls -l`", "S:`ls -l`"},
        {u"``", "S:``"},                       // an empty command
        {u"```", "S:```"},                     // a backquote right after the closing one joins
        {u"`a``b`", "S:`a`` I:b C:`"},
        {u"`echo \"x\"`", "C:` I:echo C:  Q:\" I:x Q:\" C:`"},  // a double quote before the closing backquote
        {u"`unfinished", "C:` I:unfinished"},
        {u"`a\\`", "S:`a\\`"},                 // a backslash does not escape the backquote
        {u"`%{1}`", "S:`%{1}`"},               // "%{" inside a complete shell token is part of it
    };
    for (auto [text, want] : cases) EXPECT_EQ(tokens(text), want) << utf8FromUtf16(text);
}

TEST(SnippetTokenizer, EscapesDependOnTheContext) {
    std::u16string_view source = u"\\\"\\\\\\/\"/}";
    struct Case {
        uint32_t position;
        std::u16string_view topLevel, quoted, regex;
    };
    const Case cases[] = {
        {0, u"\\\"", u"\"", u"\\\""},
        {2, u"\\\\", u"\\", u"\\\\"},
        {4, u"\\/", u"\\/", u"/"},
        {6, u"\"", u"\"", u"\""},
        {7, u"/", u"/", u"/"},
        {8, u"}", u"}", u"}"},
    };
    for (const Case& c : cases) {
        SnippetToken token = nextSnippetToken(source, c.position);
        EXPECT_EQ(tokenTextInContext(token, source, TextContext::TopLevel), c.topLevel) << c.position;
        EXPECT_EQ(tokenTextInContext(token, source, TextContext::Quoted), c.quoted) << c.position;
        EXPECT_EQ(tokenTextInContext(token, source, TextContext::Regex), c.regex) << c.position;
    }
    std::u16string_view shell = u"`cmd``";
    EXPECT_EQ(shellTokenScript(nextSnippetToken(shell, 0), shell), u"cmd");
}

}  // namespace
}  // namespace vx
