// The searching line loop against the position-by-position one: same events, same contexts,
// on random documents in a language that uses every feature, and on the bundled languages'
// samples (whole, and cut into random pieces).
#include <gtest/gtest.h>

#include <random>

#include "platform/file_cache.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax_test_support.hpp"

namespace {

using namespace vx;

std::string describe(const std::vector<VXHighlightedLine>& lines) {
    std::string out = formatEvents(lines);
    for (size_t n = 0; n < lines.size(); ++n) out += "C" + std::to_string(n) + " " + lines[n].startContext.toString() + "\n";
    return out;
}

// Fails with the text that differs; answers whether it matched.
bool sameAsLiteral(const std::u16string& text, const VXSyntaxRuleset& ruleset, const std::string& what) {
    VXSyntaxParseState state;
    const std::string fast = describe(highlightText(text, ruleset, &state));
    // The searches must agree with the anchored tests by themselves, not by the loop's fallback.
    EXPECT_EQ(state.disagreements, 0u) << what << "\ntext:\n" << utf8FromUtf16(text);
    const std::string literal = describe(test::highlightLiterally(text, ruleset));
    EXPECT_EQ(fast, literal) << what << "\ntext:\n" << utf8FromUtf16(text);
    return fast == literal;
}

const char* const kTokens[] = {
    "if ", "int", "in", "x", "a", "z", "zz", "\"", "\\", "${", "}", "'", "<<EOF", "EOF", "\n", " ", "#", "/*", "*/",
    "TODO", "1", "2.5", "q", "g", "gg", "foo(", ")", "(", "--", "-", "_", "é", "😀", "\r\n", "\r", "SELECT", "From",
    "+", "==", "\t", "y", "\n\n"};

TEST(CrossCheck, RandomDocumentsInEveryFeature) {
    test::TestLanguages languages({{"cross", *readWholeFile(VX_SYNTAX_TEST_DATA "/cross/syntax.selfml")}});
    const VXSyntaxRuleset& ruleset = languages.ruleset("cross");
    ASSERT_GE(ruleset.zones.size(), 14u);
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int document = 0; document < 600; ++document) {
        std::string text;
        const int length = std::uniform_int_distribution<int>(0, 80)(random);
        for (int i = 0; i < length; ++i)
            text += kTokens[std::uniform_int_distribution<size_t>(0, std::size(kTokens) - 1)(random)];
        if (!sameAsLiteral(utf16FromUtf8(text), ruleset, "seed " + std::to_string(seed))) break;
    }
}

// Each bundled language's samples (tests/data/syntax/<language>/...), whole and in pieces.
TEST(CrossCheck, BundledLanguageSamples) {
    test::BundledLanguages bundled;
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    int checked = 0;
    for (const auto& [path, text, language, ruleset] : bundled.samples()) {
        if (!ruleset) continue;
        if (!sameAsLiteral(text, *ruleset, path)) continue;
        // Random slices glued together reach states the sample alone never does.
        for (int round = 0; round < 20 && !text.empty(); ++round) {
            std::u16string pieces;
            for (int i = 0; i < 8; ++i) {
                const size_t start = std::uniform_int_distribution<size_t>(0, text.size() - 1)(random);
                const size_t length = std::uniform_int_distribution<size_t>(0, 200)(random);
                pieces += text.substr(start, length);
            }
            if (!sameAsLiteral(pieces, *ruleset, path + " pieces, seed " + std::to_string(seed))) break;
        }
        ++checked;
    }
    if (checked == 0) GTEST_SKIP() << "no sample of a bundled language";
}

}  // namespace
