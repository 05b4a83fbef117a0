#include "syntax/zone_definition.hpp"

#include <algorithm>

#include "syntax/candidate_set.hpp"
#include "syntax/ruleset.hpp"
#include "syntax/zone_manager.hpp"

namespace vx {
namespace {

std::string lowercased(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return text;
}

// The zone's name joined with the language identifier. Scopes of the html-django family drop
// the components "source" and "tag", and their "unquoted" strings lose both "unquoted" and
// "string": those templates are written inside HTML, and their scopes would otherwise claim to
// be source code and tags.
VXScope zoneScope(const std::string& name, const VXScope& languageIdentifier) {
    VXScope scope(name + "." + languageIdentifier.toString());
    if (!scope.hasComponent("html-django")) return scope;
    const bool unquoted = scope.hasComponent("unquoted");
    std::vector<std::string> kept;
    for (std::string_view component : scope.components()) {
        if (component == "source" || component == "tag") continue;
        if (unquoted && (component == "unquoted" || component == "string")) continue;
        kept.emplace_back(component);
    }
    return VXScope::fromComponents(kept);
}

}  // namespace

VXSyntaxZoneDefinition::VXSyntaxZoneDefinition() = default;
VXSyntaxZoneDefinition::~VXSyntaxZoneDefinition() = default;

const VXSyntaxPatternDefinition* VXSyntaxZoneDefinition::pattern(VXSXMatchPatternType type) const {
    switch (type) {
    case VXSXMatchPatternTypeMain: return mainPattern.get();
    case VXSXMatchPatternTypeStart: return startPattern.get();
    case VXSXMatchPatternTypeEnd: return endPattern.get();
    }
    return nullptr;
}

const VXSyntaxZoneDefinition* VXSyntaxZoneDefinition::initWithSFONode(const SFONodePtr& node, VXSyntaxRuleset& ruleset) {
    auto zone = std::make_unique<VXSyntaxZoneDefinition>();
    zone->ruleset = &ruleset;

    const auto strings = node->extractStrings();
    std::string name = strings.empty() || strings.front().empty() ? "anonymous" : lowercased(strings.front());
    zone->scope = zoneScope(name, ruleset.languageIdentifier);

    auto startNode = node->nodeForKey("start");
    auto endNode = node->nodeForKey("end");
    if (startNode && endNode) {
        zone->startPattern = VXSyntaxPatternDefinition::patternWithSFONode(startNode);
        if (!zone->startPattern) return nullptr;
        zone->endPattern = VXSyntaxPatternDefinition::patternWithSFONode(endNode);
        if (!zone->endPattern) return nullptr;
    } else if (auto matchNode = node->nodeForKey("match")) {
        zone->mainPattern = VXSyntaxPatternDefinition::patternWithSFONode(matchNode);
        if (!zone->mainPattern) return nullptr;
    }
    // Only an end pattern may refer back to the start match; anywhere else a back-reference
    // is part of the expression and must compile as it stands.
    for (const auto* pattern : {zone->mainPattern.get(), zone->startPattern.get()}) {
        if (pattern && pattern->patternType() == VXSyntaxPatternDefinition::Regex &&
            !static_cast<const VXSyntaxPatternRegexDefinition*>(pattern)->regexObject)
            return nullptr;
    }

    if (auto inner = node->valueForKey("inner-identifier")) zone->innerScope = VXScope(*inner);

    if (auto subzones = node->nodeForKey("subzones"))
        addZonesFromSFONodes(subzones->children(), zone->subzones, ruleset, false);

    return ruleset.adopt(std::move(zone));
}

std::unique_ptr<VXSyntaxZoneDefinition> VXSyntaxZoneDefinition::rootDefinition(VXSyntaxRuleset& ruleset) {
    auto root = std::make_unique<VXSyntaxZoneDefinition>();
    root->ruleset = &ruleset;
    root->scope = ruleset.scope;
    root->subzones = ruleset.zones;
    return root;
}

void addZonesFromSFONodes(std::span<const SFOChild> children, std::vector<VXZoneItem>& array, VXSyntaxRuleset& ruleset,
                          bool addToLibrary) {
    for (const auto& child : children) {
        if (!child.isNode() || !child.node()) continue;
        const SFONodePtr& node = child.node();
        const std::string head = node->head();
        if (head == "zone") {
            const VXSyntaxZoneDefinition* zone = VXSyntaxZoneDefinition::initWithSFONode(node, ruleset);
            if (!zone) continue;
            array.emplace_back(zone);
            if (addToLibrary) ruleset.manager().addToGlobalLibrary(zone);
        } else if (head == "include") {
            const auto strings = node->extractStrings();
            if (!strings.empty() && strings.back() == "$base") {
                array.emplace_back(VXSyntaxDynamicCollection{});
            } else if (auto lookup = VXZoneDefinitionLookup::initWithSFONode(node)) {
                array.emplace_back(std::move(*lookup));
            }
        }
    }
}

std::vector<const VXSyntaxZoneDefinition*> VXSyntaxZoneDefinition::subzonesForBase(const VXSyntaxRuleset* base) const {
    std::vector<const VXSyntaxZoneDefinition*> out;
    out.reserve(subzones.size());
    for (const auto& item : subzones) {
        if (auto definition = std::get_if<const VXSyntaxZoneDefinition*>(&item)) {
            out.push_back(*definition);
        } else if (std::holds_alternative<VXSyntaxDynamicCollection>(item) && base) {
            // The base's own `$base` entries would stand for these same zones again.
            for (const auto& baseItem : base->zones)
                if (auto definition = std::get_if<const VXSyntaxZoneDefinition*>(&baseItem)) out.push_back(*definition);
        }
    }
    return out;
}

void VXSyntaxZoneDefinition::resolveLookupsForRuleset(VXSyntaxZoneManager& manager) {
    std::vector<const VXSyntaxCollection*> resolving;
    std::lock_guard lock(manager.m_mutex);
    manager.resolveItemsLocked(subzones, *ruleset, resolving);
}

const VXCandidateSet& VXSyntaxZoneDefinition::candidatesForBase(const VXSyntaxRuleset* base) const {
    std::lock_guard lock(m_candidatesMutex);
    for (const auto& [key, set] : m_candidates)
        if (key == base) return *set;
    m_candidates.emplace_back(base, std::make_unique<VXCandidateSet>(*this, base));
    return *m_candidates.back().second;
}

// --- includes ---------------------------------------------------------------------------

std::optional<VXZoneDefinitionLookup> VXZoneDefinitionLookup::initWithSFONode(const SFONodePtr& node) {
    auto strings = node->extractStrings();
    if (strings.empty()) return std::nullopt;
    // Includes of the smarty templates are switched off on purpose: they name nothing.
    if (strings.front() == "@smarty") strings.front() = "@oh-no-you-dont";

    VXZoneDefinitionLookup lookup;
    auto readTarget = [&](const std::string& target) -> bool {
        const size_t at = target.find('@');
        if (at == 0) {
            if (target.size() == 1) return false;
            lookup.isCollection = true;
            lookup.selector = VXScope(target.substr(1));
            return true;
        }
        if (at != std::string::npos) {
            std::string language = target.substr(0, at), collection = target.substr(at + 1);
            if (language.empty() || collection.empty()) return false;
            lookup.ruleset = language;
            lookup.isCollection = true;
            lookup.selector = VXScope(collection);
            return true;
        }
        lookup.selector = VXScope(target);
        return !target.empty();
    };
    if (strings.size() == 1) {
        if (!readTarget(strings.front())) return std::nullopt;
    } else {
        if (!readTarget(strings[1])) return std::nullopt;
        if (strings.front().empty()) return std::nullopt;
        lookup.ruleset = strings.front();
    }
    return lookup;
}

std::string VXZoneDefinitionLookup::selfmlDebuggingRepresentation() const {
    std::string out = "(include";
    if (ruleset) out += " " + *ruleset;
    out += " ";
    if (isCollection) out += "@";
    return out + selector.toString() + ")";
}

std::string selfmlDebuggingRepresentation(const VXZoneItem& item) {
    if (auto definition = std::get_if<const VXSyntaxZoneDefinition*>(&item))
        return (*definition)->selfmlDebuggingRepresentation();
    if (auto lookup = std::get_if<VXZoneDefinitionLookup>(&item)) return lookup->selfmlDebuggingRepresentation();
    return "(include $base)";
}

std::string VXSyntaxZoneDefinition::selfmlDebuggingRepresentation() const {
    std::string out = "(zone " + scope.toString();
    if (startPattern) out += " (start " + startPattern->selfmlDebuggingRepresentation() + ")";
    if (endPattern) out += " (end " + endPattern->selfmlDebuggingRepresentation() + ")";
    if (mainPattern) out += " (match " + mainPattern->selfmlDebuggingRepresentation() + ")";
    if (!innerScope.isNil()) out += " (inner-identifier " + innerScope.toString() + ")";
    if (!subzones.empty()) {
        // Resolved subzones may refer back to this zone or its ancestors: name them only.
        out += " (subzones";
        for (const auto& item : subzones) {
            if (auto definition = std::get_if<const VXSyntaxZoneDefinition*>(&item))
                out += " (zone-ref " + (*definition)->scope.toString() + ")";
            else
                out += " " + vx::selfmlDebuggingRepresentation(item);
        }
        out += ")";
    }
    return out + ")";
}

}  // namespace vx
