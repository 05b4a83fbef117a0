// VXSyntaxZoneManager: the registry of loaded rulesets, which resolves includes across them.
//
// Languages are loaded on demand: asking for a language that is not loaded asks the loader
// (the truffle catalogue, in the program) for its ruleset, and loading a ruleset loads the
// languages its includes name. Includes are resolved once everything they may need is loaded;
// collections that include each other resolve to what is reachable without a cycle, and an
// include that finds nothing vanishes. The shared manager lives for the whole process; tests
// make their own. All operations are safe from any thread (one lock).
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "syntax/ruleset.hpp"

namespace vx {

class VXSyntaxZoneManager {
public:
    // Makes a ruleset for a language name, or nothing when there is no such language.
    using LanguageLoader = std::function<std::unique_ptr<VXSyntaxRuleset>(const std::string& name, VXSyntaxZoneManager&)>;

    static VXSyntaxZoneManager& sharedManager();
    VXSyntaxZoneManager() = default;
    VXSyntaxZoneManager(const VXSyntaxZoneManager&) = delete;
    VXSyntaxZoneManager& operator=(const VXSyntaxZoneManager&) = delete;

    void setLanguageLoader(LanguageLoader loader);

    // Registers a ruleset, then loads what its includes name and resolves everything pending.
    VXSyntaxRuleset* addRuleset(std::unique_ptr<VXSyntaxRuleset> ruleset);
    // The loaded ruleset for a language (by name or identifier, compared after
    // normalizeLanguageName), loading it when needed; null when there is none.
    VXSyntaxRuleset* rulesetForLanguage(const std::string& name);

    // Definitions whose scope is `scope`, or `scope` followed by the language's identifier,
    // in the order they were built.
    std::vector<const VXSyntaxZoneDefinition*> zoneWithScope(const VXScope& scope, const VXSyntaxRuleset& ruleset) const;
    // Definitions of every loaded language whose scope has all components of `selector`.
    std::vector<const VXSyntaxZoneDefinition*> zonesMatchingSelector(const VXScope& selector) const;
    std::vector<const VXSyntaxZoneDefinition*> globalLibrary() const;
    std::vector<VXSyntaxRuleset*> rulesets() const;

    // Resolves every ruleset not yet resolved (called when loading finishes).
    void externalManagerFinishedLoading();

    // For definitions being built: the global library of top-level zone definitions.
    void addToGlobalLibrary(const VXSyntaxZoneDefinition* definition);

private:
    VXSyntaxRuleset* findLocked(const std::string& name) const;
    VXSyntaxRuleset* loadLocked(const std::string& name);
    VXSyntaxRuleset* addLocked(std::unique_ptr<VXSyntaxRuleset> ruleset);
    void loadIncludedLanguagesLocked(const std::vector<VXZoneItem>& items, const VXSyntaxRuleset& from);
    void resolvePendingLocked();
    // What a lookup in `from` resolves to; collections in `resolving` are skipped (cycles).
    void resolveLookupLocked(const VXZoneDefinitionLookup& lookup, const VXSyntaxRuleset& from,
                             std::vector<VXZoneItem>& out, std::vector<const VXSyntaxCollection*>& resolving);
    void resolveItemsLocked(std::vector<VXZoneItem>& items, const VXSyntaxRuleset& from,
                            std::vector<const VXSyntaxCollection*>& resolving);

    friend class VXSyntaxZoneDefinition;
    mutable std::recursive_mutex m_mutex;
    LanguageLoader m_loader;
    std::vector<std::unique_ptr<VXSyntaxRuleset>> m_rulesets;
    std::vector<std::string> m_missing;  // names the loader had nothing for
    std::vector<const VXSyntaxZoneDefinition*> m_library;
};

}  // namespace vx
