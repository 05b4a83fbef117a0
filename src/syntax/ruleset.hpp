// VXSyntaxRuleset: one language's definition file, compiled.
//
//     (root source.python  <zones and includes>...)
//     (collection strings  <zones and includes>...)
//
// The ruleset owns every zone definition built from its file. Its identifier comes from the
// language's name (the folder that holds "syntax.selfml"); the full identifier appends the
// truffle's scope name.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "syntax/scope.hpp"
#include "selfml/sfonode.hpp"
#include "syntax/zone_definition.hpp"

namespace vx {

class VXSyntaxZoneManager;

struct VXSyntaxCollection {
    VXScope identifier;
    std::vector<VXZoneItem> zones;
};

class VXSyntaxRuleset {
public:
    // Reads a definition file; nothing when it cannot be read. The ruleset is not yet
    // registered or resolved (the manager does both).
    static std::unique_ptr<VXSyntaxRuleset> rulesetWithContentsOfFile(const std::string& path,
                                                                      const std::string& languageName,
                                                                      const std::string& truffleScope,
                                                                      VXSyntaxZoneManager& manager);
    // The same from a text already in memory.
    static std::unique_ptr<VXSyntaxRuleset> rulesetFromString(std::string_view text, const std::string& languageName,
                                                              const std::string& truffleScope,
                                                              VXSyntaxZoneManager& manager);
    // A language with a root scope and no zones (plain text when no file defines it).
    static std::unique_ptr<VXSyntaxRuleset> emptyRuleset(const std::string& languageName, const std::string& rootScope,
                                                         VXSyntaxZoneManager& manager);

    std::string languageName;
    VXScope languageIdentifier;
    VXScope fullLanguageIdentifier;
    VXScope scope;  // the root scope, such as source.python
    std::vector<VXZoneItem> zones;
    std::vector<VXSyntaxCollection> collections;
    std::vector<std::string> fileExtensions;
    std::vector<std::string> inherits;
    bool library = false;
    SFONodePtr syntax;

    VXSyntaxZoneManager& manager() const { return *m_manager; }
    // Group definition standing for the root (see VXSyntaxZoneDefinition::rootDefinition).
    const VXSyntaxZoneDefinition* rootDefinition() const { return m_root.get(); }
    // Every definition built from the file, in the order they were built.
    const std::vector<std::unique_ptr<VXSyntaxZoneDefinition>>& definitions() const { return m_definitions; }
    const VXSyntaxCollection* collectionNamed(const VXScope& identifier) const;

    void populateFromSFORootZones(const SFONodePtr& root);
    void populateFromSFOCollections(const std::vector<SFONodePtr>& collections);

    // Takes a definition into the ruleset's ownership.
    const VXSyntaxZoneDefinition* adopt(std::unique_ptr<VXSyntaxZoneDefinition> definition);

    std::string selfmlDebuggingRepresentation() const;

    explicit VXSyntaxRuleset(VXSyntaxZoneManager& manager) : m_manager(&manager) {}

private:
    friend class VXSyntaxZoneManager;
    VXSyntaxZoneManager* m_manager;
    std::vector<std::unique_ptr<VXSyntaxZoneDefinition>> m_definitions;
    std::unique_ptr<VXSyntaxZoneDefinition> m_root;
    bool m_resolved = false;
};

}  // namespace vx
