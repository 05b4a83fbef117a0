// The line loop's rules, each pinned by a small language where getting it wrong shows.
#include <gtest/gtest.h>

#include "syntax_test_support.hpp"

using vx::test::eventsOf;
using vx::test::languageFrom;
using vx::test::scopesOf;

TEST(LineLoop, EarlierDefinitionWinsOverLongerLaterOne) {
    const auto& shortFirst = languageFrom("(root source.t (zone first (match `ab`)) (zone second (match `abcd`)))");
    EXPECT_EQ(scopesOf("abcd", shortFirst), "L0:\n0-2 source.t first.t\n2-4 source.t\n");
    const auto& longFirst = languageFrom("(root source.t (zone second (match `abcd`)) (zone first (match `ab`)))");
    EXPECT_EQ(scopesOf("abcd", longFirst), "L0:\n0-4 source.t second.t\n");
}

TEST(LineLoop, EndBeatsSubzoneAtTheSamePosition) {
    const auto& language = languageFrom(
        "(root source.t (zone string (start `\"`) (end `\"`) (subzones (zone quote (match `\"x`)))))");
    EXPECT_EQ(scopesOf("\"a\"x", language), "L0:\n0-3 source.t string.t\n3-4 source.t\n");
    // Only the innermost zone's end is tried: the outer end `)` inside the string is text.
    const auto& nested = languageFrom(
        "(root source.t (zone paren (start `(`) (end `)`) (subzones (zone string (start `'`) (end `'`)))))");
    EXPECT_EQ(scopesOf("(')')", nested),
              "L0:\n0-1 source.t paren.t\n1-4 source.t paren.t string.t\n4-5 source.t paren.t\n");
}

TEST(LineLoop, ZeroLengthMatchIsRetriedTwiceThenThePositionMoves) {
    const auto& language = languageFrom("(root source.t (zone empty (match (regex [(?=b)]))) (zone bee (match `b`)))");
    // Three empty matches at 1, then the position moves past the "b" without matching it.
    EXPECT_EQ(eventsOf("ab", language), "L0:\n0 0 1 0 empty.t\n0 0 1 0 empty.t\n0 0 1 0 empty.t\n");
    // A zero-length start opens a zone whose subzones are tried at the same position.
    const auto& opening = languageFrom(
        "(root source.t (zone open (start (regex [(?=x)])) (end `;`) (subzones (zone ex (match `x`)))))");
    EXPECT_EQ(scopesOf("ax;", opening), "L0:\n0-1 source.t\n1-2 source.t open.t ex.t\n2-3 source.t open.t\n");
}

TEST(LineLoop, EmptyLineStillTestsTheEndOnce) {
    const auto& language = languageFrom("(root source.t (zone block (start `{`) (end (regex [^$]))))");
    EXPECT_EQ(eventsOf("{\n\nx", language), "L0:\n1 1 0 0 block.t\nL1:\n2 1 2 0 block.t\nL2:\n");
    EXPECT_EQ(scopesOf("{\n\nx", language), "L0:\n0-1 source.t block.t\nL1:\nL2:\n0-1 source.t\n");
}

TEST(LineLoop, WordBoundariesAreAsciiLettersDigitsAndUnderscore) {
    const auto& left = languageFrom("(root source.t (zone kw (match `if` (boundary.left))))");
    // After "_" and a digit the boundary fails; after "-" and "é" it holds.
    EXPECT_EQ(scopesOf("_if 1if -if éif", left),
              "L0:\n0-9 source.t\n9-11 source.t kw.t\n11-13 source.t\n13-15 source.t kw.t\n");
    const auto& right = languageFrom("(root source.t (zone kw (match (list in int) (boundary.right))))");
    // The longest word is tested, and only it: "int" fails before "x", "in" is not tried.
    EXPECT_EQ(scopesOf("intx in", right), "L0:\n0-5 source.t\n5-7 source.t kw.t\n");
    const auto& anchors = languageFrom(
        "(root source.t (zone first (match `a` (anchor.left))) (zone last (match `z` (anchor.right))))");
    EXPECT_EQ(scopesOf("aaz z\r\nz", anchors),
              "L0:\n0-1 source.t first.t\n1-4 source.t\n4-5 source.t last.t\nL1:\n0-1 source.t last.t\n");
    const auto& noCase = languageFrom("(root source.t (zone kw (match (list select) (ignore-case) (boundary.both))))");
    EXPECT_EQ(scopesOf("SeLeCt selects", noCase), "L0:\n0-6 source.t kw.t\n6-14 source.t\n");
}

TEST(LineLoop, BackReferenceEndsUseTheStartMatch) {
    const auto& heredoc = languageFrom(
        "(root source.t (zone heredoc (start (regex [<<(\\w+)])) (end (regex [^\\1$])) (inner-identifier body)))");
    EXPECT_EQ(scopesOf("<<EOF\nEOFX\nEOF\nx", heredoc),
              "L0:\n0-5 source.t heredoc.t\nL1:\n0-4 source.t heredoc.t body\nL2:\n0-3 source.t heredoc.t\n"
              "L3:\n0-1 source.t\n");
    // The delimiter's text is escaped: "a.b" does not end at "axb".
    const auto& raw = languageFrom(
        "(root source.t (zone raw (start (regex [R\"([^(]*)\\(])) (end (regex [\\)\\1\"]))))");
    EXPECT_EQ(scopesOf("R\"a.b(x)axb\" y)a.b\" z", raw), "L0:\n0-19 source.t raw.t\n19-21 source.t\n");
    // Each zone keeps the delimiter of its own start.
    EXPECT_EQ(scopesOf("<<A\nA\n<<B\nA\nB\n", heredoc),
              "L0:\n0-3 source.t heredoc.t\nL1:\n0-1 source.t heredoc.t\nL2:\n0-3 source.t heredoc.t\n"
              "L3:\n0-1 source.t heredoc.t body\nL4:\n0-1 source.t heredoc.t\nL5:\n");
}

TEST(LineLoop, CapturesNestAndEndBeforeTheNextStarts) {
    const auto& language = languageFrom(
        "(root source.t (zone m (match (regex [((a)(b))(c)] (1 outer) (2 first) (3 second) (4 third)))))");
    EXPECT_EQ(eventsOf("abc", language),
              "L0:\n1 0 0 0 m.t\n1 2 0 0 outer\n1 2 0 0 first\n2 2 1 0 first\n1 2 1 0 second\n2 2 2 0 second\n"
              "2 2 2 0 outer\n1 2 2 0 third\n2 2 3 0 third\n2 0 3 0 m.t\n");
    // Same range: the earlier in the file is outside; a capture by name finds its group.
    const auto& same = languageFrom("(root source.t (zone m (match (regex [(?<w>a)] (w named) (0 whole)))))");
    EXPECT_EQ(eventsOf("a", same), "L0:\n1 0 0 0 m.t\n1 2 0 0 named\n1 2 0 0 whole\n2 2 1 0 whole\n2 2 1 0 named\n2 0 1 0 m.t\n");
    EXPECT_EQ(scopesOf("a", same), "L0:\n0-1 source.t m.t named whole\n");
    // A group that did not take part gives no events; a match with none becomes one whole event.
    const auto& optional = languageFrom("(root source.t (zone m (match (regex [a(x)?] (1 ex)))))");
    EXPECT_EQ(eventsOf("a", optional), "L0:\n0 0 0 1 m.t\n");
}

TEST(LineLoop, InnerScopesCoverTheTextBetweenTheDelimiters) {
    const auto& language = languageFrom(
        "(root source.t (zone str (start (regex ['] (0 punct))) (end `'`) (inner-identifier inner)))");
    EXPECT_EQ(scopesOf("x'ab'y", language),
              "L0:\n0-1 source.t\n1-2 source.t str.t punct\n2-4 source.t str.t inner\n4-5 source.t str.t\n5-6 source.t\n");
    // A zone open across lines keeps its inner scope at the next line's start.
    EXPECT_EQ(scopesOf("'a\nb'", language),
              "L0:\n0-1 source.t str.t punct\n1-2 source.t str.t inner\nL1:\n0-1 source.t str.t inner\n1-2 source.t str.t\n");
}

TEST(LineLoop, ExpressionsSeeTheLineBreakButPositionsStopAtTheContent) {
    const auto& language = languageFrom(
        "(root source.t (zone before (match (regex [x(?=\\n)]))) (zone eol (match (regex [$]))))");
    // "x" at the end of a line sees the break after it; the last line has none.
    EXPECT_EQ(scopesOf("ax\nx", language), "L0:\n0-1 source.t\n1-2 source.t before.t\nL1:\n0-1 source.t\n");
    // "$" would match at the content end, where nothing is tried.
    EXPECT_EQ(eventsOf("a\n", language), "L0:\nL1:\n");
}

TEST(LineLoop, SurrogatePairsAreOneCharacter) {
    const auto& language = languageFrom("(root source.t (zone any (match (regex [.]))))");
    // Every character once: the pair is never split by a match starting inside it.
    EXPECT_EQ(eventsOf("a😀b", language), "L0:\n0 0 0 1 any.t\n0 0 1 2 any.t\n0 0 3 1 any.t\n");
}
