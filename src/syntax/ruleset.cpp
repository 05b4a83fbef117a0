#include "syntax/ruleset.hpp"

#include "platform/file_cache.hpp"
#include "syntax/language_name.hpp"
#include "syntax/zone_manager.hpp"

namespace vx {
namespace {

std::unique_ptr<VXSyntaxRuleset> rulesetFromNode(const SFONodePtr& file, const std::string& languageName,
                                                 const std::string& truffleScope, VXSyntaxZoneManager& manager) {
    auto ruleset = std::make_unique<VXSyntaxRuleset>(manager);
    ruleset->languageName = languageName;
    ruleset->languageIdentifier = VXScope(languageIdentifierFromName(languageName));
    ruleset->fullLanguageIdentifier =
        truffleScope.empty() ? ruleset->languageIdentifier : ruleset->languageIdentifier.appendScope(VXScope(truffleScope));
    ruleset->syntax = file;
    if (auto root = file->nodeForKey("root")) {
        if (auto rootScope = root->firstIfString()) ruleset->scope = VXScope(*rootScope);
        ruleset->populateFromSFORootZones(root);
    }
    ruleset->populateFromSFOCollections(file->extract("collection"));
    if (auto extensions = file->nodeForKey("file-extensions")) ruleset->fileExtensions = extensions->extractStrings();
    if (auto inherits = file->nodeForKey("inherits")) ruleset->inherits = inherits->extractStrings();
    ruleset->library = file->nodeForKey("library") != nullptr;
    if (ruleset->scope.isNil()) ruleset->scope = VXScope("source").appendScope(ruleset->languageIdentifier);
    return ruleset;
}

}  // namespace

std::unique_ptr<VXSyntaxRuleset> VXSyntaxRuleset::rulesetWithContentsOfFile(const std::string& path,
                                                                           const std::string& languageName,
                                                                           const std::string& truffleScope,
                                                                           VXSyntaxZoneManager& manager) {
    if (!VXFileCache::sharedFileCache().contentsOfFile(path)) return nullptr;
    return rulesetFromNode(SFONode::nodeWithContentsOfFile(path), languageName, truffleScope, manager);
}

std::unique_ptr<VXSyntaxRuleset> VXSyntaxRuleset::rulesetFromString(std::string_view text,
                                                                    const std::string& languageName,
                                                                    const std::string& truffleScope,
                                                                    VXSyntaxZoneManager& manager) {
    auto file = SFONode::nodeFromString(text);
    if (!file) return nullptr;
    return rulesetFromNode(file, languageName, truffleScope, manager);
}

std::unique_ptr<VXSyntaxRuleset> VXSyntaxRuleset::emptyRuleset(const std::string& languageName,
                                                               const std::string& rootScope,
                                                               VXSyntaxZoneManager& manager) {
    return rulesetFromString("(root " + rootScope + ")", languageName, "", manager);
}

void VXSyntaxRuleset::populateFromSFORootZones(const SFONodePtr& root) {
    addZonesFromSFONodes(root->children(), zones, *this, true);
}

void VXSyntaxRuleset::populateFromSFOCollections(const std::vector<SFONodePtr>& nodes) {
    for (const auto& node : nodes) {
        VXSyntaxCollection collection;
        if (auto name = node->firstIfString()) collection.identifier = VXScope(*name);
        addZonesFromSFONodes(node->children(), collection.zones, *this, true);
        collections.push_back(std::move(collection));
    }
}

const VXSyntaxZoneDefinition* VXSyntaxRuleset::adopt(std::unique_ptr<VXSyntaxZoneDefinition> definition) {
    m_definitions.push_back(std::move(definition));
    return m_definitions.back().get();
}

const VXSyntaxCollection* VXSyntaxRuleset::collectionNamed(const VXScope& identifier) const {
    for (const auto& collection : collections)
        if (collection.identifier == identifier) return &collection;
    return nullptr;
}

std::string VXSyntaxRuleset::selfmlDebuggingRepresentation() const {
    std::string out = "(root " + scope.toString();
    for (const auto& item : zones) out += "\n    " + vx::selfmlDebuggingRepresentation(item);
    out += ")";
    for (const auto& collection : collections) {
        out += "\n(collection " + collection.identifier.toString();
        for (const auto& item : collection.zones) out += "\n    " + vx::selfmlDebuggingRepresentation(item);
        out += ")";
    }
    return out + "\n";
}

}  // namespace vx
