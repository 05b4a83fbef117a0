#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support.hpp"

namespace vx {
namespace {

using test::contextOf;

// The code of a selector as routine names, operands in parentheses.
std::string codeOf(const char* text) {
    std::vector<VXScope> used;
    std::string out;
    for (const sbc_encoded_& slot : VXCompileNewSelector(text, used)) {
        if (!out.empty()) out += ' ';
        if (slot.type == sbc_encoded_::kScopeOperand) out += "(" + slot.scope.toString() + ")";
        else if (slot.fn == sbci_match) out += "match";
        else if (slot.fn == sbci_pop) out += "pop";
        else if (slot.fn == sbci_branch) out += "branch";
        else if (slot.fn == sbci_true) out += "true";
        else if (slot.fn == sbci_false) out += "false";
        else out += "?";
    }
    return out;
}

TEST(SelectorCompile, CodeFollowsTheGenerationTable) {
    const std::pair<const char*, const char*> cases[] = {
        {"a", "match (a)"},
        {"*", "true"},
        {"   ", "false"},
        {"a , b", "branch match (a) true match (b)"},
        {"a - b", "branch match (a) branch match (b) false true false"},
        {"a b", "branch match (b) pop match (a) false"},
        {"a b c", "branch branch match (c) pop match (b) false pop match (a) false"},
        {"! a", "branch match (a) false true"},
        {"a | b", "branch match (a) true branch match (b) true false"},
        {"a & b", "branch match (a) branch match (b) true false false"},
        {"(a)", "match (a)"},
        {"a, b, c", "branch branch match (a) true match (b) true match (c)"},
    };
    for (auto [text, want] : cases) EXPECT_EQ(codeOf(text), want) << text;
}

TEST(SelectorCompile, GroupingShowsInTheCode) {
    const std::pair<const char*, const char*> same[] = {
        {"a | b & c", "(a | b) & c"},
        {"a & b | c", "(a & b) | c"},
        {"! a | b", "(!a) | b"},
        {"! a b", "(!a) b"},
        {"!!a", "!(!a)"},
        {"a | b c", "(a | b) c"},
    };
    for (auto [text, grouped] : same) EXPECT_EQ(codeOf(text), codeOf(grouped)) << text;
    EXPECT_NE(codeOf("a | b & c"), codeOf("a | (b & c)"));
}

TEST(SelectorCompile, SyntaxErrorsGiveEmptyCodeThatNeverMatches) {
    const std::string tooDeep = std::string(300, '(') + "a" + std::string(300, ')');
    for (const char* text : {"(a b)", "(a , b)", "(a - b)", "()", "(a", "a)", "a ,", ", a", "a - ", "| a", "a &",
                             "!", "a !", "a (-)", "((((a)))", tooDeep.c_str()}) {
        EXPECT_EQ(codeOf(text), "") << text;
        const VXSelector* selector = VXSelector::compileString(text);
        EXPECT_FALSE(selector->doesMatchOnContext(contextOf({"a", "b"}))) << text;
        EXPECT_FALSE(selector->isNullSelector());
    }
    // A "-" that stops the tokenizer keeps what came before it.
    EXPECT_EQ(codeOf("a -, b"), "match (a)");
    EXPECT_EQ(codeOf("a b -| c"), codeOf("a b"));
    // Deep but sane nesting still compiles.
    EXPECT_EQ(codeOf("((((a))))"), "match (a)");
}

TEST(SelectorCompile, UsedScopesListEveryLiteralInOrder) {
    const VXSelector* selector = VXSelector::compileString("source.JS string - (comment | source.js) , x");
    std::vector<std::string> used;
    for (const VXScope& scope : selector->usedScopes()) used.push_back(scope.toString());
    EXPECT_EQ(used, (std::vector<std::string>{"source.js", "string", "comment", "source.js", "x"}));
    // Literals read before a syntax error are still listed.
    EXPECT_EQ(VXSelector::compileString("(q r)")->usedScopes().size(), 2u);
    EXPECT_TRUE(VXSelector::compileString("")->usedScopes().empty());
}

TEST(SelectorCompile, CacheGivesOneSelectorPerText) {
    const VXSelector* a = VXSelector::compileString("cache.test");
    EXPECT_EQ(a, VXSelector::compileString(std::string("cache.") + "test"));
    EXPECT_NE(a, VXSelector::compileString("cache.test "));  // the text is the key, not its meaning
    EXPECT_EQ(a->originalString(), "cache.test");
    EXPECT_EQ(a->description(), "cache.test");
    ASSERT_NE(a->codeWrapper(), nullptr);

    const VXSelector* null = VXSelector::compileString(nullptr);
    EXPECT_EQ(null, VXSelector::compileString(""));
    EXPECT_TRUE(null->isNullSelector());
    EXPECT_EQ(null->codeWrapper(), nullptr);
    EXPECT_FALSE(VXSelector::compileString(" ")->isNullSelector());
}

TEST(SelectorCompile, ConcurrentCompilesShareResults) {
    constexpr int kThreads = 6, kTexts = 200;
    std::vector<std::vector<const VXSelector*>> seen(kThreads, std::vector<const VXSelector*>(kTexts));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &seen] {
            for (int step = 0; step < kTexts; ++step) {
                int i = (step * 13 + t * 37) % kTexts;
                std::string text = "threaded.sel" + std::to_string(i) + " string - comment" + std::to_string(i % 7);
                const VXSelector* selector = VXSelector::compileString(text);
                seen[t][i] = selector;
                // Scoring on this thread while others compile.
                const VXScope scopes[] = {VXScope("threaded.sel" + std::to_string(i)), VXScope("string")};
                EXPECT_EQ(selector->operateOnContext(VXContext::fromScopes(scopes)), 257);
            }
        });
    for (auto& thread : threads) thread.join();
    for (int i = 0; i < kTexts; ++i)
        for (int t = 1; t < kThreads; ++t) EXPECT_EQ(seen[t][i], seen[0][i]) << i;
}

}  // namespace
}  // namespace vx
