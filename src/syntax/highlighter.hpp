// The line highlighter: runs a language's zone definitions over one line at a time.
//
// A line starts in the context the previous line ended in (the zones still open), and the
// highlighter appends the line's zone events in text order and answers the context at its
// end. The loop is defined position by position:
//
//   1. if the innermost open zone has an end pattern and it matches here, the zone ends;
//   2. otherwise, at the line's content end, stop;
//   3. otherwise try the candidates (the innermost zone's subzones, or the root zones) in file
//      order; the first that matches wins (a match zone is reported, a start/end zone opens);
//   4. move past the match; a zero-length match is tried again at most twice before the
//      position moves on by one character; with no match move on by one character.
//
// VXSyntaxParseLine finds the same winners by searching (see candidate_set.hpp) rather than
// testing every position; the position-by-position building blocks below define the result.
// Expressions see the line with its line break; positions run over its content only.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "syntax/candidate_set.hpp"
#include "syntax/context.hpp"
#include "syntax/regex.hpp"
#include "syntax/ruleset.hpp"
#include "syntax/speedy_array.hpp"
#include "syntax/zone.hpp"

namespace vx {

// An open zone with, for an end pattern built for it alone (back-references), the leftmost
// end match at or after endSearchedFrom on this line (line-relative; kNotFound: none).
struct VXSyntaxOpenZone {
    VXSyntaxZone zone;
    uint64_t endSearchedFrom = kNotFound;
    uint64_t endFoundAt = kNotFound;
};
using VXSyntaxZoneStack = VXSpeedyArray<VXSyntaxOpenZone>;

// Scratch that one thread keeps while it highlights a run of lines: the match region and what
// the searches on the current line found. Optional: a line parsed without one makes its own.
class VXSyntaxParseState {
public:
    VXSyntaxParseState();
    VXSyntaxParseState(const VXSyntaxParseState&) = delete;
    VXSyntaxParseState& operator=(const VXSyntaxParseState&) = delete;

    VXRegexRegion* region() { return m_region.get(); }
    VXSyntaxSearchCache searches;
    // Times a search found a match that the anchored test then refused (the line loop then
    // decides that position the long way). Only an expression whose meaning depends on where
    // matching starts can cause it; the tests expect none.
    uint64_t disagreements = 0;

private:
    VXRegexRegionPtr m_region;
};

// Highlights one line: appends its events to `events` (document offsets) and answers the
// context at its end. `ruleset` is the document's language (also what `$base` stands for).
VXContext VXSyntaxParseLine(const VXContext& incoming, const VXSyntaxLine& line, std::vector<VXSyntaxZone>& events,
                            const VXSyntaxRuleset& ruleset, VXSyntaxParseState* state = nullptr);

// Expressions see a line's break as "\n" whatever the text uses ("\r\n", or a lone "\r"), so
// that `$`, "\n" and look-aheads behave alike in every file. Calls `parse` with the line as
// the expressions should see it (a copy when its break differs) and moves the events it added
// that lie past the content end onto the real break.
inline bool VXSyntaxBreakIsLineFeed(const VXSyntaxLine& line) {
    const uint64_t breakLength = line.text.size() - line.contentLength;
    return breakLength == 0 || (breakLength == 1 && line.text.back() == u'\n');
}
VXContext VXSyntaxParseWithLineFeedBreak(const VXSyntaxLine& line, std::vector<VXSyntaxZone>& events,
                                         const std::function<VXContext(const VXSyntaxLine&)>& parse);

// --- the position-by-position building blocks --------------------------------------------

// Tests one pattern of one definition at exactly one position; `zone` is the open zone whose
// end is tested (its start match built the end pattern when that refers back to it).
std::optional<uint64_t> VXSyntaxParseHasMatch(const VXSyntaxZoneDefinition& definition, const VXSyntaxZone* zone,
                                              VXSXMatchPatternType patternType, const VXSyntaxLine& line,
                                              uint64_t position, VXRegexRegion* region);
// Tests the end pattern of the innermost open zone at a position.
std::optional<uint64_t> VXSyntaxParseAttemptEnd(VXSyntaxZoneStack& stack, const VXSyntaxLine& line, uint64_t position,
                                                VXRegexRegion* region);

struct VXSyntaxMatch {
    const VXSyntaxZoneDefinition* definition = nullptr;
    uint64_t length = 0;
};
// Tries definitions in order at one position (groups by their subzones, each definition once
// per descent); the first that matches wins. The region holds the winner's match.
std::optional<VXSyntaxMatch> VXSyntaxParseZonesForLine(std::span<const VXSyntaxZoneDefinition* const> definitions,
                                                       const VXSyntaxRuleset* base, const VXSyntaxLine& line,
                                                       uint64_t position,
                                                       std::vector<const VXSyntaxZoneDefinition*>& visited,
                                                       VXRegexRegion* region);

// The definition whose subzones are the candidates: the innermost open zone's, or the root.
const VXSyntaxZoneDefinition& VXSyntaxCandidateOwner(VXSyntaxZoneStack& stack, const VXSyntaxRuleset& ruleset);

void VXSyntaxLoadStack(const VXContext& context, VXSyntaxZoneStack& stack);
VXContext VXSyntaxContextFromStack(VXSyntaxZoneStack& stack);

// Reports a winning match zone, or opens a start/end zone (pushing it), for the match at
// [position, position + length) whose groups are in `region`.
void VXSyntaxEmitMatch(const VXSyntaxZoneDefinition& definition, uint64_t position, uint64_t length,
                       const VXRegexRegion* region, const VXSyntaxLine& line, VXSyntaxZoneStack& stack,
                       std::vector<VXSyntaxZone>& events);
// Ends the innermost open zone with the end match at [position, position + length).
void VXSyntaxEmitEnd(VXSyntaxZoneStack& stack, uint64_t position, uint64_t length, const VXRegexRegion* region,
                     const VXSyntaxLine& line, std::vector<VXSyntaxZone>& events);
// Capture events of one match, nested: an earlier start is outside, and of two captures that
// start together the longer is outside; an end comes before a start at the same position.
void VXSyntaxDealWithCaptures(const VXSyntaxPatternDefinition& pattern, const VXRegexRegion* region,
                              const VXSyntaxLine& line, uint32_t parent, std::vector<VXSyntaxZone>& events);

// How the empty-match rule moves the position: answers the next position and updates the
// count of consecutive empty matches at this position.
uint64_t VXSyntaxPositionAfterMatch(const VXSyntaxLine& line, uint64_t position, uint64_t length, int& emptyMatches);

}  // namespace vx
