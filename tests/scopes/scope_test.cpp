#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "syntax/scope.hpp"

namespace vx {
namespace {

std::vector<std::string> componentsOf(const VXScope& scope) {
    return {scope.components().begin(), scope.components().end()};
}

TEST(Scope, TextIsLowerCasedSplitAndStrippedOfEmptyComponents) {
    const std::pair<const char*, const char*> cases[] = {
        {"string.quoted.double", "string.quoted.double"},
        {"Source.JS", "source.js"},
        {"..a...b.", "a.b"},
        {"meta.tag-name", "meta.tag-name"},
        {"", ""},
        {"...", ""},
        {"caf\xc3\xa9.X", "caf\xc3\xa9.x"},
    };
    for (auto [text, want] : cases) EXPECT_EQ(VXScope(text).stringRepresentation(), want) << text;

    EXPECT_EQ(componentsOf(VXScope("a..B.c")), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(VXScope("...").components().empty());
    EXPECT_FALSE(VXScope("").isNil());  // the empty scope is a scope; nil is the default value
    EXPECT_TRUE(VXScope().isNil());
    EXPECT_EQ(VXScope().stringRepresentation(), "");
}

TEST(Scope, EqualTextsShareOneRecord) {
    EXPECT_EQ(VXScope("a.b"), VXScope("A..b"));
    EXPECT_NE(VXScope("a.b"), VXScope("b.a"));
    EXPECT_NE(VXScope(""), VXScope());
    EXPECT_EQ(VXScope::fromComponents({"Source", "", "js"}), VXScope("source.js"));
    EXPECT_EQ(VXScope::fromComponents(std::vector<std::string>{"a.b", "c"}), VXScope("a.b.c"));
    EXPECT_EQ(VXScope::fromSet({"js", "Source"}), VXScope("js.source"));
    EXPECT_EQ(VXScope("x.y").hash(), VXScope("X.Y").hash());
}

TEST(Scope, InterningFromManyThreadsGivesOneRecordPerText) {
    constexpr int kThreads = 4, kNames = 300;
    std::vector<std::vector<VXScope>> seen(kThreads, std::vector<VXScope>(kNames));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &seen] {
            // Each thread walks the names in its own order, so that first uses race.
            for (int step = 0; step < kNames; ++step) {
                int name = (step * 7 + t * 31) % kNames;
                seen[t][name] = VXScope("threaded.name" + std::to_string(name));
            }
        });
    for (auto& thread : threads) thread.join();
    for (int name = 0; name < kNames; ++name) {
        VXScope expected("threaded.name" + std::to_string(name));
        for (int t = 0; t < kThreads; ++t) EXPECT_EQ(seen[t][name], expected) << name;
    }
}

TEST(Scope, CountAndComponentQueriesIgnoreRepetition) {
    VXScope scope("a.b.a.c");
    EXPECT_EQ(scope.count(), 3u);
    EXPECT_EQ(scope.components().size(), 4u);
    EXPECT_EQ(scope.componentsSet(), (std::set<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(scope.hasComponent("b"));
    EXPECT_TRUE(scope.hasComponent("B"));
    EXPECT_FALSE(scope.hasComponent("a.b"));
    EXPECT_FALSE(scope.hasComponent(""));
    EXPECT_FALSE(scope.hasComponent("never-used-anywhere"));
    EXPECT_EQ(VXScope("").count(), 0u);
    EXPECT_EQ(VXScope().count(), 0u);
}

TEST(Scope, SupersetIsComponentSetInclusion) {
    struct Case { const char* big; const char* small; bool want; };
    const Case cases[] = {
        {"string.quoted.double", "string", true},
        {"string.quoted.double", "quoted.string", true},  // order is ignored
        {"quoted.double.string", "string.quoted", true},
        {"string.quoted", "string.quoted.double", false},
        {"string.quoted", "string.quoted.string", true},  // repetition is ignored
        {"source.js", "source.json", false},
        {"a", "", true},                                  // the empty scope is in everything
        {"", "a", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(VXScope(c.big).isSupersetOf(VXScope(c.small)), c.want) << c.big << " / " << c.small;
        EXPECT_EQ(VXScope(c.small).isSubsetOf(VXScope(c.big)), c.want) << c.small << " / " << c.big;
    }
    EXPECT_FALSE(VXScope("a").isSupersetOf(VXScope()));
    EXPECT_FALSE(VXScope().isSupersetOf(VXScope("")));
    EXPECT_FALSE(VXScope("a").isSubsetOf(VXScope()));
}

TEST(Scope, SupersetStaysExactWithMoreComponentsThanMaskBits) {
    // Component ids beyond 64 share mask bits; the quick reject must not turn into false answers.
    std::vector<VXScope> singles;
    for (int i = 0; i < 200; ++i) singles.emplace_back("maskbits" + std::to_string(i));
    VXScope many("maskbits0.maskbits1.maskbits2.maskbits3.maskbits4.maskbits5.maskbits6.maskbits7");
    for (int i = 0; i < 200; ++i) EXPECT_EQ(many.isSupersetOf(singles[i]), i < 8) << i;
}

TEST(Scope, MatchesChildOfAndWildcard) {
    VXScope wildcard = VXScope::wildcardZone();
    EXPECT_EQ(wildcard, VXScope::wildcardZone());
    EXPECT_TRUE(wildcard.matches(VXScope("anything.at.all")));
    EXPECT_TRUE(VXScope("anything").matches(wildcard));
    EXPECT_TRUE(VXScope("string.quoted").matches(VXScope("quoted")));
    EXPECT_FALSE(VXScope("string").matches(VXScope("quoted")));
    EXPECT_FALSE(wildcard.matches(VXScope()));

    EXPECT_TRUE(VXScope("string.quoted.double").isChildOf(VXScope("string.quoted")));
    EXPECT_TRUE(VXScope("string.quoted.double").isChildOf(VXScope("string")));
    EXPECT_FALSE(VXScope("string.quoted").isChildOf(VXScope("string.quoted")));
    EXPECT_FALSE(VXScope("string.quoted.double").isChildOf(VXScope("quoted")));
    EXPECT_FALSE(VXScope("string").isChildOf(VXScope()));
}

TEST(Scope, AppendingBuildsNewScopes) {
    VXScope base("source.js");
    EXPECT_EQ(base.appendComponent("Embedded"), VXScope("source.js.embedded"));
    EXPECT_EQ(base.appendComponent(""), base);
    EXPECT_EQ(base.appendScope(VXScope("meta.tag")), VXScope("source.js.meta.tag"));
    const VXScope more[] = {VXScope("a"), VXScope(), VXScope("b.c")};
    EXPECT_EQ(base.concat(more), VXScope("source.js.a.b.c"));
    EXPECT_EQ(VXScope().appendComponent("x"), VXScope("x"));
    EXPECT_EQ(base, VXScope("source.js"));  // the original is unchanged
    EXPECT_EQ(base.removeEmptyStrings(), base);
}

TEST(Scope, EqualityWithTextArraysAndSets) {
    VXScope scope("string.quoted");
    EXPECT_TRUE(scope == "String..Quoted");
    EXPECT_FALSE(scope == "quoted.string");
    EXPECT_TRUE(scope == (std::vector<std::string>{"string", "quoted"}));
    EXPECT_FALSE(scope == (std::vector<std::string>{"quoted", "string"}));
    EXPECT_TRUE(scope == (std::set<std::string>{"quoted", "string"}));
    EXPECT_TRUE(VXScope("a.b.a") == (std::set<std::string>{"a", "b"}));
    EXPECT_FALSE(scope == (std::set<std::string>{"string"}));
    EXPECT_FALSE(VXScope() == (std::set<std::string>{}));
}

}  // namespace
}  // namespace vx
