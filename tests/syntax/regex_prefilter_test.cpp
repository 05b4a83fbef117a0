// The prefilter read from an expression: what it finds for common grammar shapes, what it
// declines, and that it never turns away a position where the expression itself matches.
#include <gtest/gtest.h>

#include <cctype>
#include <random>

#include "syntax/candidate_set.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/pattern_definition.hpp"
#include "syntax/regex.hpp"
#include "syntax/regex_prefilter.hpp"

namespace {

using namespace vx;

std::string members(const VXCharFilter& set) {
    std::string out;
    for (int c = 32; c < 127; ++c)
        if (set.ascii[c]) out += static_cast<char>(c);
    if (set.other) out += "+other";
    return out;
}

std::optional<VXRegexPrefilter> prefilterOf(const char* expression, bool caseInsensitive = false) {
    return VXRegexPrefilterForExpression(utf16FromUtf8(expression), caseInsensitive);
}

TEST(RegexPrefilter, ReadsWhatAMatchBeginsWith) {
    struct Case {
        const char* expression;
        bool caseInsensitive;
        const char* first;
    } const cases[] = {
        {"\"", false, "\""},
        {"\\d+(?:\\.\\d+)?", false, "0123456789+other"},
        {"(?:0[xX]|#)\\h+", false, "#0"},
        {"a?b*c", false, "abc"},
        {"a{0,3}b|c{2}", false, "abc"},
        {"[^\\s\\w]x", false, nullptr},  // checked below: everything but blanks and word characters
        {"x{a}", false, "x"},            // not an interval: a literal brace after x
        {"(?i)select", false, "Ss+other"},
        {"(?i:if)|(?-i:for)", true, "Ifi+other"},
        {"[a-c_]", true, "ABC_abc+other"},
        {"(?=\\w)[a-z]|(?!x)-", false, "-abcdefghijklmnopqrstuvwxyz"},
        {"\\u0041|\\x{263A}|\\u00e9", false, "A+other"},
        {"(?<name>q)|(?'other'r)(?#comment)", false, "qr"},
    };
    for (const auto& c : cases) {
        const auto filter = prefilterOf(c.expression, c.caseInsensitive);
        ASSERT_TRUE(filter) << c.expression;
        if (c.first) {
            EXPECT_EQ(members(filter->first), c.first) << c.expression;
        }
        EXPECT_FALSE(filter->constrainsPrevious) << c.expression;
    }
    const auto negated = prefilterOf("[^\\s\\w]x");
    ASSERT_TRUE(negated);
    EXPECT_FALSE(negated->first.contains(u' '));
    EXPECT_FALSE(negated->first.contains(u'a'));
    EXPECT_TRUE(negated->first.contains(u'-'));
    EXPECT_TRUE(negated->first.contains(u'\u00e9'));
}

TEST(RegexPrefilter, ReadsTheCharacterBeforeFromALeadingLookBehind) {
    const auto afterDot = prefilterOf("(?<=\\.)(?<!\\.\\.)[A-Za-z_]\\w*");
    ASSERT_TRUE(afterDot);
    ASSERT_TRUE(afterDot->constrainsPrevious);
    EXPECT_EQ(members(afterDot->previous), ".");
    EXPECT_FALSE(afterDot->atLineStart);

    const auto notAfterWord = prefilterOf("(?<![\\w$])[A-Z]");
    ASSERT_TRUE(notAfterWord);
    ASSERT_TRUE(notAfterWord->constrainsPrevious);
    EXPECT_FALSE(notAfterWord->previous.contains(u'a'));
    EXPECT_FALSE(notAfterWord->previous.contains(u'$'));
    EXPECT_TRUE(notAfterWord->previous.contains(u' '));
    EXPECT_TRUE(notAfterWord->previous.contains(u'\u00e9'));  // outside ASCII: never ruled out
    EXPECT_TRUE(notAfterWord->atLineStart);

    // Look-behinds that do not say one thing about the one character before.
    for (const char* expression : {"a|(?<=b)c", "x(?<=x)y", "(?<=ab)c", "(?<!(?!y)x)c", "(?i)(?<!\u00e9)a"}) {
        const auto filter = prefilterOf(expression);
        ASSERT_TRUE(filter) << expression;
        EXPECT_FALSE(filter->constrainsPrevious) << expression;
    }

    auto wordStart = *prefilterOf("[a-z]+");
    EXPECT_FALSE(wordStart.worthScanning());  // nearly every position of source text passes
    wordStart.requireWordStart();
    EXPECT_TRUE(wordStart.worthScanning());
    EXPECT_FALSE(wordStart.admits(u"ab", 1));
    EXPECT_TRUE(wordStart.admits(u"-b", 1));
    EXPECT_TRUE(wordStart.admits(u"b", 0));
}

TEST(RegexPrefilter, ReadsRunsAndTheCharactersThatMustEndThem) {
    // A function call: a word, blanks, then "(" where the word and blanks end.
    const auto call = prefilterOf("[A-Za-z_$][\\w$]*(?=\\s*\\()");
    ASSERT_TRUE(call);
    ASSERT_EQ(call->chain.size(), 2u);
    EXPECT_TRUE(call->admits(u"foo (x)", 0));
    EXPECT_TRUE(call->admits(u"foo(x)", 1));  // inside the word: the expression decides
    EXPECT_FALSE(call->admits(u"foo + bar", 0));
    EXPECT_FALSE(call->admits(u"foo   ", 0));                // the line ends before "("
    EXPECT_TRUE(call->admits(u"fo\u00e9 + bar", 0));        // beyond ASCII: not ruled out
    // A line without "(" holds no call at all.
    EXPECT_FALSE(call->mayMatchIn(VXCharFilter::of(u"foo = bar;")));
    EXPECT_TRUE(call->mayMatchIn(VXCharFilter::of(u"foo = bar();")));
    // "#" before a letter, one required after the other.
    const auto hash = prefilterOf("#[a-z]+:");
    ASSERT_TRUE(hash);
    ASSERT_EQ(hash->chain.size(), 2u);  // "#", then letters up to ":"
    EXPECT_TRUE(hash->admits(u"#abc:", 0));
    EXPECT_FALSE(hash->admits(u"#abc;", 0));
    EXPECT_FALSE(hash->admits(u"#1:", 0));
    // A run whose members the next character can also be gives no stage there.
    const auto overlapping = prefilterOf("[a-c]+b");
    ASSERT_TRUE(overlapping);
    EXPECT_TRUE(overlapping->chain.empty() || overlapping->chain.back().run.ascii.none());
    EXPECT_TRUE(overlapping->admits(u"cab", 0));
}

TEST(RegexPrefilter, DeclinesWhatItCannotRead) {
    for (const char* expression :
         {"a*", "(?:x|)", "\\b", ".", "\\1a", "(a)\\k<1>", "(?x) a", "(?(1)a|b)", "[[:alpha:]]", "[a&&b]", "\\p{Alpha}",
          "(?~abc)", "[]a]", "(?<=x)?y", "\\0", "x|\\W|\\w",
          // Found by the fuzzer: a quantifier after a comment repeats what came before it, and
          // Oniguruma reads negations inside classes in its own way.
          "a(?#c)*", "[x[^y]]", "[^a[^b]]"}) {
        EXPECT_FALSE(prefilterOf(expression)) << expression;
    }
}

// Any position where the expression matches is one the filter lets through, on random
// subjects made of the expression's own characters, ASCII, and the characters whose case
// folding leaves ASCII (Kelvin sign, long s, sharp s) or that need two units.
TEST(RegexPrefilter, NeverRejectsAPositionWhereTheExpressionMatches) {
    const char* const expressions[] = {
        "\"", "\\d+(?:\\.\\d+)?", "(?:0[xX]|#)\\h+", "a?b*c", "a{0,3}b|c{2}", "a{,2}b", "[^\\s\\w]x", "x{a}", "(?i)select",
        "(?i:if)|(?-i:for)", "[a-c_]", "(?=\\w)[a-z]|(?!x)-", "\\u0041|\\x{263A}|\\u00e9", "(?<=\\.)(?<!\\.\\.)[A-Za-z_]\\w*",
        "(?<![\\w$])[A-Z]", "(?<!k)s", "(?<=[^a-c])d", "a(?i)b|c", "(?i)(?<!\u00e9)a", "[\u00e9-\u00ff]z", "\U0001F600",
        "[\\]\\[-]", "\\t|\\n|\\e", "\\S\\D", "[^\\d]{1}", "\\Asb|\\Gk", "(?<![\\s])\\H", "\\s+x", "k|s|ss",
        "(?m:.)a", "(a|b)+c", "[a-]|[-b]", "\\.\\*|\\?", "(?<!\\$)\\{",
        // Runs and required characters.
        "[A-Za-z_$][\\w$]*(?=\\s*\\()", "#?[a-z]\\w*(?=\\s*[:=])", "([a-z][\\w.]*)?(`)", "\\w*\\$[\\w$]*",
        "(?:ab)+c", "[a-c]+d[e-f]+g", "x(?=y|w)w", "(?i)[a-c]+d", "\\s*(#)\\s*(if)\\b", "a+(?=b*c)", "[^a]+a",
        "k+s", "(?i)k+z", "[\u00e9a]+b", "a(?!b)\\w*c", "a*?b", "(?:a|bc)*d", "a{2,}b{0}c",
        // Escapes that match nothing or several characters (found by the fuzzer).
        "\\h\\y", "a\\Rb", "(?i)a\u00dfc"};
    const char16_t extras[] = {u'\u00e9', u'\u00c9', u'\u212a', u'\u017f', u'\u00df', u'\u263a', u'\r', u'\n', u'\t', u' '};
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    auto region = makeRegion();
    for (bool caseInsensitive : {false, true}) {
        for (const char* expression : expressions) {
            const std::u16string pattern = utf16FromUtf8(expression);
            const auto regex = VXRegex::compile(pattern, {caseInsensitive, false});
            ASSERT_TRUE(regex) << expression;
            const auto filter = VXRegexPrefilterForExpression(pattern, caseInsensitive);
            if (!filter) continue;
            std::u16string alphabet(std::begin(extras), std::end(extras));
            std::u16string letters;  // the expression's own letters and digits, often what it matches
            for (char16_t c : pattern) {
                if (c < 0xD800 || c > 0xDFFF) alphabet += c;
                if (c < 128 && std::isalnum(c)) letters += c;
            }
            if (letters.empty()) letters = alphabet;
            int matches = 0;
            // Subjects that some of the expressions match, then random ones.
            const char16_t* const fixed[] = {u"aac", u"adeg", u"bcdfeg", u" #if ", u"\t#if(", u"ac", u"abbc", u"xww",
                                             u"foo (", u"$a$", u"abc`", u"kkks", u"\u212Az", u"ad",
                                             u"a\r\nb", u"assc"};
            for (int round = 0; round < 3000 + static_cast<int>(std::size(fixed)); ++round) {
                std::u16string subject;
                if (round >= 3000) subject = fixed[round - 3000];
                const int length = subject.empty() ? std::uniform_int_distribution<int>(1, 6)(random) : 0;
                for (int i = 0; i < length; ++i) {
                    const int pick = std::uniform_int_distribution<int>(0, 4)(random);
                    if (pick == 4) {
                        const size_t at = std::uniform_int_distribution<size_t>(0, pattern.size() - 1)(random);
                        subject += pattern.substr(at, std::uniform_int_distribution<size_t>(1, 6)(random));
                    } else if (pick == 0) subject += static_cast<char16_t>(std::uniform_int_distribution<int>(0, 127)(random));
                    else if (pick == 1) subject += u"\U0001F600";
                    else if (pick == 2) subject += letters[std::uniform_int_distribution<size_t>(0, letters.size() - 1)(random)];
                    else subject += alphabet[std::uniform_int_distribution<size_t>(0, alphabet.size() - 1)(random)];
                }
                // Positions as the line loop visits them: never inside a surrogate pair. The
                // memo carries what one position's check learnt to the next ones.
                VXRegexPrefilter::Memo memo;
                for (size_t p = 0; p < subject.size(); p = VXSyntaxNextCharacter(subject, p)) {
                    const bool admitted = filter->admits(subject, p);
                    ASSERT_EQ(filter->admits(subject, p, &memo), admitted) << expression << " at " << p << " of \""
                                                                             << utf8FromUtf16(subject) << "\"";
                    if (!regex->matchAt(subject, p, region.get())) continue;
                    ++matches;
                    ASSERT_TRUE(filter->mayMatchIn(VXCharFilter::of(subject)))
                        << expression << " matches in \"" << utf8FromUtf16(subject) << "\"";
                    ASSERT_TRUE(admitted)
                        << expression << (caseInsensitive ? " (ignore-case)" : "") << " matches at " << p << " of \""
                        << utf8FromUtf16(subject) << "\", seed " << seed;
                }
            }
            EXPECT_GT(matches, 0) << expression;  // the subjects exercised the expression
        }
    }
}

// An end pattern that also closes its zone at the line's end (`(")|$`): the other branches are
// filtered as usual, the line's end is always tried, and the search finds exactly what the
// expression engine's own search finds.
TEST(RegexPrefilter, ALineEndAlternativeIsTriedWhereverALineCanEnd) {
    const auto filter = prefilterOf("(\")|$");
    ASSERT_TRUE(filter);
    EXPECT_TRUE(filter->orLineEnd);
    EXPECT_EQ(members(filter->first), "\"");
    EXPECT_TRUE(filter->mayMatchIn(VXCharFilter::of(u"abc")));
    EXPECT_FALSE(prefilterOf("\"")->orLineEnd);
    for (const char* expression : {"$", "(a|$)", "a*|$", "$|$"}) EXPECT_FALSE(prefilterOf(expression)) << expression;

    const char16_t alphabet[] = {u'"', u'a', u'\n', u'\r', u'*', u'/', u']', u'x'};
    std::mt19937 random(7);
    auto expected = makeRegion(), found = makeRegion();
    for (const char* expression : {"(\")|$", "$|(\\*/)", "[\\])]|$|x"}) {
        const std::u16string pattern = utf16FromUtf8(expression);
        const auto definition = VXSyntaxPatternRegexDefinition::make(pattern, false, {});
        const auto regex = VXRegex::compile(pattern);
        ASSERT_TRUE(definition && regex) << expression;
        for (int round = 0; round < 2000; ++round) {
            std::u16string subject;
            const int length = std::uniform_int_distribution<int>(0, 8)(random);
            for (int i = 0; i < length; ++i) subject += alphabet[std::uniform_int_distribution<size_t>(0, std::size(alphabet) - 1)(random)];
            uint64_t content = subject.size();
            while (content > 0 && (subject[content - 1] == u'\n' || subject[content - 1] == u'\r')) --content;
            const VXSyntaxLine line{subject, content, 0};
            for (uint64_t from = 0; from <= subject.size(); ++from) {
                const auto stated = regex->search(subject, from, subject.size(), expected.get());
                const uint64_t at = definition->findNext(line, from, found.get());
                ASSERT_EQ(at, stated.value_or(kNotFound))
                    << expression << " from " << from << " in \"" << utf8FromUtf16(subject) << "\"";
            }
        }
    }
}

}  // namespace
