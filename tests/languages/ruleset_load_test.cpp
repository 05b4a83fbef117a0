// Every bundled definition, loaded as the editor loads it: no zone may be dropped (a zone
// whose pattern does not compile or is empty vanishes silently, with its subzones), and
// every include must bring in at least one zone.
#include <gtest/gtest.h>

#include "languages/bundled_files.hpp"
#include "languages/definition_walk.hpp"
#include "syntax/ruleset.hpp"
#include "syntax/zone_manager.hpp"

namespace vx::test {
namespace {

TEST(BundledRulesets, EveryZoneOfEveryFileIsKept) {
    for (const auto& language : bundledLanguages()) {
        VXSyntaxZoneManager manager;
        const auto ruleset = VXSyntaxRuleset::rulesetWithContentsOfFile(
            (language.folder / "syntax.selfml").string(), language.name, "vellumex", manager);
        ASSERT_TRUE(ruleset) << language.name;
        EXPECT_EQ(ruleset->definitions().size(), size_t(walkDefinition(language).zoneCount))
            << language.name << ": zones were dropped while loading";
        EXPECT_EQ(ruleset->languageIdentifier.stringRepresentation(), language.name);
    }
}

// All languages loaded through one manager, as the editor does: includes across languages
// (HTML and CSS, Markdown and every fenced language) resolve and the resolution ends. A zone
// whose subzones resolve to nothing at all lost its includes.
TEST(BundledRulesets, LoadTogetherAndResolveTheirIncludes) {
    VXSyntaxZoneManager manager;
    manager.setLanguageLoader([](const std::string& name, VXSyntaxZoneManager& into) {
        const BundledLanguage* language = findLanguage(name);
        return language ? VXSyntaxRuleset::rulesetWithContentsOfFile((language->folder / "syntax.selfml").string(),
                                                                     language->name, "vellumex", into)
                        : nullptr;
    });
    for (const auto& language : bundledLanguages()) ASSERT_TRUE(manager.rulesetForLanguage(language.name)) << language.name;
    manager.externalManagerFinishedLoading();

    for (const auto& language : bundledLanguages()) {
        const VXSyntaxRuleset* ruleset = manager.rulesetForLanguage(language.name);
        ASSERT_TRUE(ruleset);
        EXPECT_FALSE(ruleset->rootDefinition()->subzonesForBase(ruleset).empty())
            << language.name << ": the root resolves to no zones";
        int withSubzones = 0;
        for (const auto& definition : ruleset->definitions())
            if (!definition->subzonesForBase(ruleset).empty()) ++withSubzones;
        EXPECT_EQ(withSubzones, walkDefinition(language).zonesWithSubzones)
            << language.name << ": some zone's subzones resolved to nothing";
    }
}

}  // namespace
}  // namespace vx::test
