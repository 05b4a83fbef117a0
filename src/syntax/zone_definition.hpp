// The compiled form of a language definition's zones.
//
//     (zone string.quoted.double (start `"`) (end `"`) (subzones (include @escapes)))
//
// A zone definition has a scope (its name with the language identifier appended:
// "string.quoted.double.python"), a match pattern or a start/end pair (or neither: a group
// of subzones), an optional inner scope, and subzones: definitions, includes not yet resolved
// (VXZoneDefinitionLookup) and `$base` (VXSyntaxDynamicCollection). After resolution the
// subzones hold only definitions and `$base`. Definitions are owned by their ruleset, which the
// zone manager keeps for the life of the process; everything else refers to them by pointer.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "syntax/pattern_definition.hpp"
#include "syntax/scope.hpp"
#include "selfml/sfonode.hpp"

namespace vx {

class VXSyntaxRuleset;
class VXSyntaxZoneDefinition;
class VXCandidateSet;

// `$base`: stands for the root zones of the language the document is highlighted as.
struct VXSyntaxDynamicCollection {
    friend bool operator==(const VXSyntaxDynamicCollection&, const VXSyntaxDynamicCollection&) = default;
};

// An include before resolution.
//     (include @strings)          the collection "strings" of this language
//     (include python @strings)   ... of python        (include python@strings) the same
//     (include comment.line)      the zones named comment.line in this language
//     (include python comment.line)
struct VXZoneDefinitionLookup {
    std::optional<std::string> ruleset;  // the language's name; none for the current language
    VXScope selector;                    // a zone scope or a collection identifier
    bool isCollection = false;
    friend bool operator==(const VXZoneDefinitionLookup&, const VXZoneDefinitionLookup&) = default;

    // Nothing when the include names no target.
    static std::optional<VXZoneDefinitionLookup> initWithSFONode(const SFONodePtr& node);
    std::string selfmlDebuggingRepresentation() const;
};

using VXZoneItem = std::variant<const VXSyntaxZoneDefinition*, VXZoneDefinitionLookup, VXSyntaxDynamicCollection>;

enum VXSXMatchPatternType : uint32_t {
    VXSXMatchPatternTypeMain = 0,
    VXSXMatchPatternTypeStart = 1,
    VXSXMatchPatternTypeEnd = 2,
};

class VXSyntaxZoneDefinition {
public:
    // Builds a definition (and its nested ones) owned by the ruleset; nothing when the zone is
    // rejected (a start/end or match pattern that yields nothing).
    static const VXSyntaxZoneDefinition* initWithSFONode(const SFONodePtr& node, VXSyntaxRuleset& ruleset);
    // The definition that stands for a language's root: scope = the root scope, subzones = the
    // root zones. A document's context starts with it.
    static std::unique_ptr<VXSyntaxZoneDefinition> rootDefinition(VXSyntaxRuleset& ruleset);

    VXScope scope;
    VXScope innerScope;
    std::unique_ptr<VXSyntaxPatternDefinition> mainPattern;
    std::unique_ptr<VXSyntaxPatternDefinition> startPattern;
    std::unique_ptr<VXSyntaxPatternDefinition> endPattern;
    std::vector<VXZoneItem> subzones;
    VXSyntaxRuleset* ruleset = nullptr;

    bool isStartEnd() const { return startPattern && endPattern; }
    bool isGroup() const { return !mainPattern && !isStartEnd(); }
    const VXSyntaxPatternDefinition* pattern(VXSXMatchPatternType type) const;

    // The subzones with `$base` replaced by the base language's root zones.
    std::vector<const VXSyntaxZoneDefinition*> subzonesForBase(const VXSyntaxRuleset* base) const;
    // Replaces each lookup in the subzones by what it resolves to, in place and in order.
    void resolveLookupsForRuleset(class VXSyntaxZoneManager& manager);

    // The candidates tried inside this zone, flattened for searching (see candidate_set.hpp).
    const VXCandidateSet& candidatesForBase(const VXSyntaxRuleset* base) const;

    std::string selfmlDebuggingRepresentation() const;

    VXSyntaxZoneDefinition();
    ~VXSyntaxZoneDefinition();
    VXSyntaxZoneDefinition(const VXSyntaxZoneDefinition&) = delete;
    VXSyntaxZoneDefinition& operator=(const VXSyntaxZoneDefinition&) = delete;

private:
    mutable std::mutex m_candidatesMutex;
    mutable std::vector<std::pair<const VXSyntaxRuleset*, std::unique_ptr<VXCandidateSet>>> m_candidates;
};

// Appends the zones of a root, collection or subzones list: zone definitions (rejected ones
// skipped), includes as lookups or `$base`; other heads are ignored.
void addZonesFromSFONodes(std::span<const SFOChild> children, std::vector<VXZoneItem>& array, VXSyntaxRuleset& ruleset,
                          bool addToLibrary);

std::string selfmlDebuggingRepresentation(const VXZoneItem& item);

}  // namespace vx
