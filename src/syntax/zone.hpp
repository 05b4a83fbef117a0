// VXSyntaxZone: one zone event that the line highlighter reports, and the entries of a VXContext.
//
// A zone is a plain value: the scope it gives the text, the definition that produced it (owned by
// its ruleset, which the zone manager keeps for the whole process, so a bare pointer is enough
// and copying a zone costs no reference counting), what kind of event it is, and where it sits.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/range.hpp"
#include "syntax/scope.hpp"

namespace vx {

// Defined with the language definitions (syntax/zone_definition.hpp, pattern_definition.hpp).
class VXSyntaxZoneDefinition;
struct VXSyntaxEndPatternInstance;

// Which part of a zone an event stands for. The numbers are stored and printed.
enum VXSXZoneEffectiveType : uint8_t {
    VXSXZoneEffectiveTypeWhole = 0,  // start and end in this one event
    VXSXZoneEffectiveTypeStart = 1,
    VXSXZoneEffectiveTypeEnd = 2,
};

// What caused an event.
enum VXSXZoneSemanticType : uint8_t {
    VXSXZoneSemanticTypeMatch = 0,     // a match zone
    VXSXZoneSemanticTypeStartEnd = 1,  // a start/end zone's delimiters
    VXSXZoneSemanticTypeCapture = 2,   // a capture group of a match
    VXSXZoneSemanticTypeInner = 3,     // the inner part of a zone
};

// A capture definition's scope with the range its group captured.
struct VXSXCapture {
    VXScope scope;
    Range range;
    friend bool operator==(const VXSXCapture&, const VXSXCapture&) = default;
};

struct VXSyntaxZone {
    // Marks a zone with no enclosing zone.
    static constexpr uint32_t kNoParent = UINT32_MAX;

    VXScope scope;
    // May be null: contexts built from bare scopes (selector tests, a document's root) have none.
    const VXSyntaxZoneDefinition* definition = nullptr;
    // The enclosing zone, as its index in the stack of open zones when this zone was found
    // (so in a VXContext the parent of entry i is entry i - 1); kNoParent at the outermost level.
    // An index rather than a pointer because zones are values copied between arrays.
    uint32_t parent = kNoParent;
    VXSXZoneEffectiveType effectiveType = VXSXZoneEffectiveTypeWhole;
    VXSXZoneSemanticType semanticType = VXSXZoneSemanticTypeMatch;
    // Where the event sits: for a start, where the zone begins (length 0); for an end, just after
    // the end delimiter (length 0); for a whole zone, the match.
    Range range;
    // The delimiter or match text that caused the event.
    Range semanticRange;
    // Captures collected for this zone's match, when the highlighter keeps them with the zone.
    std::vector<VXSXCapture> captures;
    // For an open zone whose end pattern refers back to its start match (a heredoc's
    // delimiter): that end pattern, built from this zone's start. Null otherwise. Shared per
    // distinct text, so equal starts give equal zones.
    std::shared_ptr<const VXSyntaxEndPatternInstance> endPattern;

    // The span the event touches: both ranges together.
    uint64_t startPoint() const { return range.location < semanticRange.location ? range.location : semanticRange.location; }
    uint64_t endPoint() const { return range.end() > semanticRange.end() ? range.end() : semanticRange.end(); }
    Range effectiveRange() const { return {startPoint(), endPoint() - startPoint()}; }

    // Moves the event by delta code units (a line moved after an edit above it); captures move too.
    void offsetBy(int64_t delta) {
        range.location += static_cast<uint64_t>(delta);
        semanticRange.location += static_cast<uint64_t>(delta);
        for (VXSXCapture& capture : captures) capture.range.location += static_cast<uint64_t>(delta);
    }

    friend bool operator==(const VXSyntaxZone&, const VXSyntaxZone&) = default;
};

inline VXSyntaxZone VXSyntaxZoneCreate(VXScope scope, const VXSyntaxZoneDefinition* definition,
                                       VXSXZoneEffectiveType effectiveType, VXSXZoneSemanticType semanticType,
                                       Range range, Range semanticRange) {
    VXSyntaxZone zone;
    zone.scope = scope;
    zone.definition = definition;
    zone.effectiveType = effectiveType;
    zone.semanticType = semanticType;
    zone.range = range;
    zone.semanticRange = semanticRange;
    return zone;
}

}  // namespace vx
