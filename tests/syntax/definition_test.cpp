// Reading definition files: zones, patterns, captures, includes and their resolution.
#include <gtest/gtest.h>

#include "syntax/language_name.hpp"
#include "syntax_test_support.hpp"

namespace {

using namespace vx;

const VXSyntaxZoneDefinition* rootZone(const VXSyntaxRuleset& ruleset, size_t index) {
    return std::get<const VXSyntaxZoneDefinition*>(ruleset.zones.at(index));
}

TEST(Definitions, ZoneNamesKindsAndRejection) {
    const auto& ruleset = test::languageFrom(R"((root source.t
        (zone (match `x`))
        (zone Upper.Name (start `a`) (match `b`))
        (zone group (start `a`) (subzones (zone inner (match `i`))))
        (zone no-end (start `a`) (end []))
        (zone broken (match (regex [(])) (subzones (zone lost (match `l`))))
        (zone empty-list (match (list)))
        (zone region (start `<`) (end `>`) (inner-identifier Inner.Part))))");
    ASSERT_EQ(ruleset.zones.size(), 4u);  // the empty end, the broken expression and the empty list drop theirs
    EXPECT_EQ(rootZone(ruleset, 0)->scope, "anonymous.t");
    const VXSyntaxZoneDefinition* match = rootZone(ruleset, 1);
    EXPECT_EQ(match->scope, "upper.name.t");
    EXPECT_TRUE(match->mainPattern && !match->isStartEnd() && !match->isGroup());  // start without end: a match zone
    EXPECT_TRUE(rootZone(ruleset, 2)->isGroup());
    EXPECT_EQ(rootZone(ruleset, 2)->subzones.size(), 1u);
    EXPECT_TRUE(rootZone(ruleset, 3)->isStartEnd());
    EXPECT_EQ(rootZone(ruleset, 3)->innerScope, "inner.part");
    EXPECT_EQ(test::scopesOf("l", ruleset), "L0:\n0-1 source.t\n");  // the dropped zone's subzones went too
}

TEST(Definitions, PatternKindsFlagsAndCaptures) {
    const auto& ruleset = test::languageFrom(R"((root source.t
        (zone a (match (list if) (regex [x]) (boundary.both) (ignore-case) (anchor.right)))
        (zone b (match (regex [(?<name>a)(b)] (1 one) (0 whole) (name named) (-1 negative) (2))) (anchor.left))
        (zone c (match `"` (boundary.right)))))");
    const auto* list = rootZone(ruleset, 0)->mainPattern.get();
    EXPECT_EQ(list->patternType(), VXSyntaxPatternDefinition::List);  // a list child wins over a regex child
    EXPECT_TRUE(list->beforeWordBoundary && list->afterWordBoundary && list->caseInsensitive && list->afterAnchor);
    EXPECT_FALSE(list->beforeAnchor);
    const auto* regex = static_cast<const VXSyntaxPatternRegexDefinition*>(rootZone(ruleset, 1)->mainPattern.get());
    ASSERT_EQ(regex->patternType(), VXSyntaxPatternDefinition::Regex);
    EXPECT_FALSE(regex->beforeAnchor);  // a flag on the zone, not on the pattern node, is not read
    ASSERT_EQ(regex->captures.size(), 5u);
    EXPECT_EQ(regex->captures[0].captureIndex, 1);
    EXPECT_EQ(regex->captures[1].captureIndex, 0);
    EXPECT_EQ(regex->captures[2].captureName, "name");
    EXPECT_FALSE(regex->captures[2].captureIndex.has_value());
    EXPECT_EQ(regex->captures[3].captureIndex, -1);
    EXPECT_TRUE(regex->captures[4].scope.isNil());
    const auto* string = rootZone(ruleset, 2)->mainPattern.get();
    EXPECT_EQ(string->patternType(), VXSyntaxPatternDefinition::String);
    EXPECT_TRUE(string->afterWordBoundary && !string->beforeWordBoundary);
}

TEST(Definitions, TemplateScopesDropSourceTagAndUnquotedString) {
    test::TestLanguages languages({
        {"html-django", "(root text.html.django (zone source.tag.name (match `t`)) (zone string.unquoted.value (match `v`)))"},
        {"other", "(root source.other (zone string.unquoted.value (match `v`)))"}});
    const auto& django = languages.ruleset("html-django");
    EXPECT_EQ(rootZone(django, 0)->scope, "name.html-django");
    EXPECT_EQ(rootZone(django, 1)->scope, "value.html-django");
    EXPECT_EQ(rootZone(languages.ruleset("other"), 0)->scope, "string.unquoted.value.other");
}

TEST(Definitions, IncludesResolveAcrossLanguagesAndVanishWhenUnresolved) {
    test::TestLanguages languages({
        {"outer", R"((root source.outer
            (zone embed (start `<`) (end `>`) (subzones (include inner @stuff) (include missing @x) (include @smarty)))
            (include inner word)
            (include @ping))
            (collection ping (zone p (match `p`)) (include @pong))
            (collection pong (zone q (match `q`)) (include @ping))
            (collection smarty (zone s (match `s`))))"},
        {"inner", R"((root source.inner (zone word (match `w`)))
            (collection stuff (zone num (match (regex [\d+]))) (include $base)))"}});
    const auto& outer = languages.ruleset("outer");
    // The include of another language's zone, then the two collections that include each other.
    ASSERT_EQ(outer.zones.size(), 4u);
    EXPECT_EQ(rootZone(outer, 1)->scope, "word.inner");
    EXPECT_EQ(rootZone(outer, 2)->scope, "p.outer");
    EXPECT_EQ(rootZone(outer, 3)->scope, "q.outer");
    // Inside embed: the other language's collection with `$base` standing for outer's root
    // zones; the missing language and the smarty include left nothing behind.
    const VXSyntaxZoneDefinition* embed = rootZone(outer, 0);
    ASSERT_EQ(embed->subzones.size(), 2u);
    EXPECT_TRUE(std::holds_alternative<VXSyntaxDynamicCollection>(embed->subzones[1]));
    EXPECT_EQ(test::scopesOf("<1<w>s>w", outer),
              "L0:\n0-1 source.outer embed.outer\n1-2 source.outer embed.outer num.inner\n"
              "2-3 source.outer embed.outer embed.outer\n3-4 source.outer embed.outer embed.outer word.inner\n"
              "4-5 source.outer embed.outer embed.outer\n5-7 source.outer embed.outer\n7-8 source.outer word.inner\n");
    // Highlighting the other language alone, its `$base` is itself.
    EXPECT_EQ(test::scopesOf("w", languages.ruleset("inner")), "L0:\n0-1 source.inner word.inner\n");
}

TEST(Definitions, GroupsThatIncludeThemselvesTerminate) {
    const auto& ruleset = test::languageFrom(R"((root source.t (include @all))
        (collection all (zone loop (subzones (include @all) (zone x (match `x`))))))");
    EXPECT_EQ(test::scopesOf("ax", ruleset), "L0:\n0-1 source.t\n1-2 source.t x.t\n");
}

TEST(Definitions, LanguageNames) {
    EXPECT_EQ(languageIdentifierFromName("Objective-C++"), "Objective-C++");
    EXPECT_EQ(languageIdentifierFromName("  Ruby on Rails (ERB) "), "Ruby-on-Rails-ERB");
    EXPECT_EQ(languageIdentifierFromName("C#"), "C#");
    EXPECT_EQ(normalizeLanguageName("Objective-C"), "objc");
    EXPECT_EQ(normalizeLanguageName("Objective-C++"), "objc++");
    EXPECT_EQ(normalizeLanguageName("CPP"), "c++");
    EXPECT_EQ(normalizeLanguageName("py"), "python");
    EXPECT_EQ(normalizeLanguageName("Shell"), "shell");
    EXPECT_EQ(normalizeLanguageName(""), std::nullopt);
}

TEST(Definitions, DebuggingRepresentationReadsBackAsSelfml) {
    const auto& ruleset = test::languageFrom(
        "(root source.t (zone s (start `\"`) (end (regex [\"] (0 p))) (subzones (include @c))) (zone k (match (list a [b c]) (boundary.left))))"
        "(collection c (zone e (match `\\\\`)))");
    const std::string text = ruleset.selfmlDebuggingRepresentation();
    auto reread = SFONode::nodeFromString(text);
    ASSERT_EQ(reread->extract("root").size(), 1u);
    ASSERT_EQ(reread->extract("collection").size(), 1u);
    auto zones = reread->nodeForKey("root")->extract("zone");
    ASSERT_EQ(zones.size(), 2u);
    EXPECT_EQ(zones[1]->nodeForKey("match")->nodeForKey("list")->extractStrings(), (std::vector<std::string>{"a", "b c"}));
    EXPECT_NE(zones[1]->nodeForKey("match")->nodeForKey("boundary.left"), nullptr);
}

}  // namespace
