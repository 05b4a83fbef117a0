// A text highlighted as it arrives in pieces gives the lines, events and scopes that the whole
// text gives, wherever the pieces are cut (inside a CR LF break, between a CR and the next line).
#include <gtest/gtest.h>

#include "platform/unicode.hpp"
#include "syntax/line_stream.hpp"
#include "syntax_test_support.hpp"

namespace {

using namespace vx;

struct Streamed {
    std::string events, scopes;
    std::u16string text;  // the lines' texts put together again
};

Streamed stream(std::u16string_view text, size_t piece, const VXSyntaxRuleset& ruleset) {
    Streamed out;
    VXLineStreamHighlighter highlighter(ruleset, [&](const VXHighlightedLine& line, std::u16string_view lineText) {
        EXPECT_EQ(lineText.size(), line.line.length);
        appendEventsForLine(out.events, highlighter.linesDone(), line);
        appendScopesForLine(out.scopes, highlighter.linesDone(), line);
        out.text += lineText;
    });
    for (size_t at = 0; at < text.size(); at += piece) highlighter.append(text.substr(at, piece));
    highlighter.finish();
    return out;
}

void expectSameAsWhole(std::u16string_view text, const VXSyntaxRuleset& ruleset, const std::string& what) {
    const std::vector<VXHighlightedLine> whole = highlightText(text, ruleset);
    const std::string events = formatEvents(whole), scopes = formatScopes(whole);
    for (size_t piece : {size_t{1}, size_t{2}, size_t{3}, size_t{7}, size_t{4096}, text.size() + 1}) {
        const Streamed streamed = stream(text, piece, ruleset);
        EXPECT_EQ(streamed.text, text) << what << " in pieces of " << piece;
        EXPECT_EQ(streamed.events, events) << what << " in pieces of " << piece;
        EXPECT_EQ(streamed.scopes, scopes) << what << " in pieces of " << piece;
    }
}

std::u16string withBreaks(std::u16string_view text, std::u16string_view lineBreak) {
    std::u16string out;
    for (char16_t c : text) c == u'\n' ? out += lineBreak : out += c;
    return out;
}

TEST(LineStream, BundledSamplesInPiecesHighlightAsWhole) {
    test::BundledLanguages bundled;
    int samples = 0;
    for (const auto& [path, text, language, ruleset] : bundled.samples()) {
        ASSERT_NE(ruleset, nullptr) << path;
        expectSameAsWhole(text, *ruleset, path);
        expectSameAsWhole(withBreaks(text, u"\r\n"), *ruleset, path + " with CR LF");
        ++samples;
    }
    EXPECT_GT(samples, 5);
}

TEST(LineStream, BreaksAtTheEdgesOfPieces) {
    // A block comment keeps its context across lines, so a line split wrongly shows in the events.
    const VXSyntaxRuleset& ruleset = test::languageFrom(
        "(root source.t (zone comment (start `/*`) (end `*/`)) (zone keyword (match (list a b))))");
    for (std::u16string_view text : {u"", u"\r", u"\n", u"\r\n", u"\r\r\n\n", u"a /* b\rb */ a\r", u"/* a\r\nb\n*/ a",
                                     u"a\r\rb\r\n\r\n", u"no break at all"}) {
        expectSameAsWhole(text, ruleset, "\"" + utf8FromUtf16(text) + "\"");
    }
}

}  // namespace
