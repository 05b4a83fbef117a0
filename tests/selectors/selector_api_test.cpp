#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support.hpp"

namespace vx {
namespace {

using test::contextOf;

TEST(Selector, ScopeAndBasicContextForms) {
    const VXSelector* string = VXSelector::compileString("string.quoted");
    EXPECT_EQ(string->operateOnScope(VXScope("string.quoted.double")), 33);
    EXPECT_TRUE(string->doesMatchOnScope(VXScope("quoted.string")));
    EXPECT_FALSE(string->doesMatchOnScope(VXScope("string")));
    EXPECT_FALSE(string->doesMatchOnScope(VXScope()));
    EXPECT_TRUE(VXScope("double.quoted.string").matchSelector(*string));
    EXPECT_TRUE(VXScope().matchSelector(*VXSelector::compileString("")));

    const VXSelector* descendant = VXSelector::compileString("source.js string");
    EXPECT_TRUE(descendant->matchesBasicContext("source.js meta.function string.quoted"));
    EXPECT_FALSE(descendant->matchesBasicContext("string.quoted source.js"));
    EXPECT_FALSE(descendant->matchesBasicContext(""));
    EXPECT_TRUE(VXSelector::compileString("")->matchesBasicContext("anything"));

    VXContext context = contextOf({"source.js", "string.quoted"});
    EXPECT_TRUE(descendant->matchesBasicContext(context.environmentString()));
    EXPECT_EQ(descendant->operateOnContext(context), descendant->codeWrapper()->operateOnContext(context) + 1);
    EXPECT_EQ(descendant->specificity(), 1);
}

TEST(Selector, CodeWrapperScoresAtLeastOneOnAMatch) {
    // "a | *" matches through its star without testing a scope: the interpreter's score is 0.
    const VXSelectorCodeWrapper* wrapper = VXSelector::compileString("nothing | *")->codeWrapper();
    EXPECT_EQ(wrapper->operateOnContext(contextOf({"x"})), 1);
    EXPECT_EQ(wrapper->operateOnContext(contextOf({})), 0);
    BigUnsigned raw = 99;
    EXPECT_TRUE(sbci_execute(wrapper->code(), std::vector<VXScope>{VXScope("x")}, &raw));
    EXPECT_EQ(raw, 0);
    EXPECT_FALSE(sbci_execute({}, std::vector<VXScope>{VXScope("x")}, nullptr));
}

TEST(Selector, ContextsDeeperThanTheInlineBuffer) {
    std::vector<VXScope> scopes(40, VXScope("filler"));
    scopes.front() = VXScope("outermost");
    scopes.back() = VXScope("innermost");
    VXContext context = VXContext::fromScopes(scopes);
    BigUnsigned expected = 1;
    expected <<= 4 * 40;
    EXPECT_EQ(VXSelector::compileString("outermost innermost")->operateOnContext(context), expected + 1);
}

struct Rule {
    std::string name;
    const VXSelector* selector;  // null: applies everywhere, like the empty selector
};

const Rule* best(const std::vector<Rule>& rules, std::initializer_list<const char*> scopes) {
    return bestItemInArray(rules, &Rule::selector, contextOf(scopes));
}

TEST(BestItem, StrictlyHigherScoreWinsAndTiesGoToTheEarlier) {
    auto s = [](const char* text) { return VXSelector::compileString(text); };
    const std::vector<Rule> rules = {
        {"comment", s("comment")},
        {"string-1", s("string")},
        {"string-2", s("quoted")},        // same score as "string": the earlier stays
        {"deeper", s("string.quoted")},
        {"source", s("source")},
    };
    EXPECT_EQ(best(rules, {"source.js", "string.quoted"})->name, "deeper");
    EXPECT_EQ(best(rules, {"source.js", "string"})->name, "string-1");
    EXPECT_EQ(best(rules, {"source.js", "quoted"})->name, "string-2");
    EXPECT_EQ(best(rules, {"source.js"})->name, "source");
    EXPECT_EQ(best(rules, {"text"}), nullptr);
    EXPECT_EQ(best(rules, {}), nullptr);
    EXPECT_EQ(best({}, {"source"}), nullptr);

    // An item without a selector scores 1: it beats nothing that matches, and wins when nothing does.
    const std::vector<Rule> withDefault = {{"default", nullptr}, {"empty", s("")}, {"source", s("source")}};
    EXPECT_EQ(best(withDefault, {"source"})->name, "source");
    EXPECT_EQ(best(withDefault, {"text"})->name, "default");
    EXPECT_EQ(best(withDefault, {})->name, "default");
}

TEST(BestItem, WorksWithAnyWayOfReadingTheSelector) {
    const char* texts[] = {"a", "b", "a b"};
    auto chosen = bestItemInArray(texts, [](const char* text) { return VXSelector::compileString(text); },
                                  contextOf({"a", "b"}));
    ASSERT_NE(chosen, nullptr);
    EXPECT_EQ(chosen - texts, 1);  // b at depth 2 (257) ties "a b" (257); the earlier wins
}

}  // namespace
}  // namespace vx
