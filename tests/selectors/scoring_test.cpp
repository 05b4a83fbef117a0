#include <gtest/gtest.h>

#include "support.hpp"

namespace vx {
namespace {

using test::contextOf;
using test::score;

#define EXAMPLE_STACK "source.js", "meta.function", "string.quoted.double"

TEST(SelectorScoring, WorkedExample) {
    EXPECT_EQ(score("string", {EXAMPLE_STACK}), "4097");         // 1 × 16^3 + 1
    EXPECT_EQ(score("string.quoted", {EXAMPLE_STACK}), "8193");  // 2 × 16^3 + 1
    EXPECT_EQ(score("source.js", {EXAMPLE_STACK}), "33");        // 2 × 16^1 + 1
    EXPECT_EQ(score("comment, source", {EXAMPLE_STACK}), "17");  // the first alternative adds nothing
}

TEST(SelectorScoring, ScopesMatchByComponentSet) {
    EXPECT_EQ(score("quoted.string", {EXAMPLE_STACK}), "8193");
    EXPECT_EQ(score("STRING.Quoted", {EXAMPLE_STACK}), "8193");
    EXPECT_EQ(score("string.single", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("function.meta", {EXAMPLE_STACK}), "513");   // found below the top: 2 × 16^2 + 1
    EXPECT_EQ(score("...", {EXAMPLE_STACK}), "2");               // an empty scope matches, adding 0
}

TEST(SelectorScoring, EmptyBlankAndNeverExecutedLastSlot) {
    // Only the empty text is the catch-all.
    EXPECT_EQ(score("", {EXAMPLE_STACK}), "1");
    EXPECT_EQ(score("", {}), "1");
    EXPECT_EQ(score("   ", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("- a", {"a"}), "0");  // the tokenizer stops at once
    // A final always-true slot never runs.
    EXPECT_EQ(score("*", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("! comment", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("comment, *", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("string, *", {EXAMPLE_STACK}), "4097");
    // ... but "a | *" ends in a false slot, so its star runs.
    EXPECT_EQ(score("comment | *", {EXAMPLE_STACK}), "2");
    EXPECT_EQ(score("comment | *", {"x"}), "2");
    EXPECT_EQ(score("comment | *", {}), "0");
    // A negation that is not last does run.
    EXPECT_EQ(score("! comment string", {EXAMPLE_STACK}), "4097");
    EXPECT_EQ(score("(! comment) | x", {EXAMPLE_STACK}), "2");
}

TEST(SelectorScoring, ContextWithoutScopesOnlyMatchesTheEmptySelector) {
    for (const char* text : {"a", "a | *", "! a x", "a - b", "*"}) EXPECT_EQ(score(text, {}), "0") << text;
}

TEST(SelectorScoring, PrecedenceAndGrouping) {
    // "|" and "&" share a level and group left: a | b & c is (a | b) & c.
    EXPECT_EQ(score("a | b & c", {"a"}), "0");
    EXPECT_NE(score("a | (b & c)", {"a"}), "0");
    EXPECT_EQ(score("a | b & c", {"b", "c"}), "257");  // max(16, 256) + 1
    EXPECT_NE(score("a & b | c", {"c"}), "0");   // (a & b) | c
    EXPECT_EQ(score("a & (b | c)", {"c"}), "0");
    // "!" takes the nearest inner term.
    EXPECT_NE(score("! a | b x", {"a", "b", "x"}), "0");  // ((!a) | b) x
    EXPECT_NE(score("! a b", {"c", "b"}), "0");             // (!a) b; !(a b) would end in a true slot
    EXPECT_EQ(score("! a b", {"a", "b"}), "0");
    // "," below " - " below juxtaposition: "a b - c, d" is ((a b) - c), d.
    EXPECT_NE(score("a b - c, d", {"a", "b"}), "0");
    EXPECT_EQ(score("a b - c, d", {"a", "b", "c"}), "0");
    EXPECT_NE(score("a b - c, d", {"d"}), "0");
    // " - " groups left: (a - b) - c excludes c, where a - (b - c) would not.
    EXPECT_EQ(score("a - b - c", {"a", "c"}), "0");
    EXPECT_NE(score("a - b - c", {"a"}), "0");
    // Alternatives are an ordered choice: the first match decides the score.
    EXPECT_EQ(score("source, string", {EXAMPLE_STACK}), "17");
    EXPECT_EQ(score("source | string.quoted", {EXAMPLE_STACK}), "17");
    // A compound scores its best single test, not the sum.
    EXPECT_EQ(score("string & source.js", {EXAMPLE_STACK}), "4097");
}

TEST(SelectorScoring, DescendantChains) {
    EXPECT_EQ(score("source string", {EXAMPLE_STACK}), "4097");
    EXPECT_EQ(score("source.js meta string.quoted", {EXAMPLE_STACK}), "8193");
    EXPECT_EQ(score("source string.quoted", {"source.js", "string.quoted.double"}), "513");
    EXPECT_EQ(score("comment string", {EXAMPLE_STACK}), "0");
    // The innermost element is tested against the whole stack, the others without its top.
    EXPECT_EQ(score("string source", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("string string", {"string.a", "string.b"}), "257");
    EXPECT_EQ(score("string string", {"string.a"}), "0");
    // No order is enforced among the outer elements.
    EXPECT_EQ(score("meta source string", {EXAMPLE_STACK}), "4097");
    // "a -b" is a followed by the scope "-b".
    EXPECT_EQ(score("a -b", {"a", "-b"}), "257");
    EXPECT_EQ(score("a -b", {"a"}), "0");
    EXPECT_EQ(score("(a | b) c", {"b", "c"}), "257");
}

TEST(SelectorScoring, Exclusions) {
    EXPECT_EQ(score("source - string", {EXAMPLE_STACK}), "0");
    EXPECT_EQ(score("source - comment", {EXAMPLE_STACK}), "17");
    EXPECT_EQ(score("string - source", {EXAMPLE_STACK}), "0");  // excluded anywhere on the stack
    EXPECT_EQ(score("meta.tag-name", {"meta.tag-name"}), "33");
    EXPECT_EQ(score("text - markup, string", {"text", "markup.bold"}), "0");
    EXPECT_EQ(score("text - markup, string", {"text", "string"}), "17");
}

TEST(SelectorScoring, DeepStacksGoBeyondSixtyFourBits) {
    std::vector<VXScope> scopes;
    for (int i = 0; i < 20; ++i) scopes.emplace_back("level" + std::to_string(i) + ".deep");
    VXContext deep = VXContext::fromScopes(scopes);
    // 1 × 16^20 + 1 = 2^80 + 1
    EXPECT_EQ(VXSelector::compileString("level19")->operateOnContext(deep).str(), "1208925819614629174706177");
    EXPECT_EQ(VXSelector::compileString("deep.level19")->operateOnContext(deep).str(), "2417851639229258349412353");
    EXPECT_EQ(VXSelector::compileString("level18")->operateOnContext(deep).str(), "75557863725914323419137");
    // Deeper always outranks more components higher up, at any width.
    const char* texts[] = {"level17.deep", "level19", "level18.deep"};
    std::vector<const VXSelector*> candidates;
    for (const char* text : texts) candidates.push_back(VXSelector::compileString(text));
    auto best = bestItemInArray(candidates, std::identity(), deep);
    ASSERT_NE(best, nullptr);
    EXPECT_EQ((*best)->originalString(), "level19");
}

}  // namespace
}  // namespace vx
