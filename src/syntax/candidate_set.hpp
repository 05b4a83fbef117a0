// VXCandidateSet: the zones that may start inside one zone, flattened and ready for searching.
//
// The line loop is defined position by position: at each position the candidate definitions
// are tried in file order (groups and includes expanded depth first, each definition once)
// and the first that matches wins. Trying every candidate at every position is slow; the same
// winner is found from, for each candidate, the leftmost position at or after the current one
// where it matches: the smallest of those wins, the earliest candidate on a tie. Each pattern
// finds that position itself (VXSyntaxPatternDefinition::findNext): strings and word lists, and
// expressions whose prefilter tells where a match can begin (regex_prefilter.hpp), test those
// positions with their own anchored match; other expressions are searched with the flags
// written into them. A match found further along a line stays the next one until the position
// passes it, so each pattern is searched again only then (VXSyntaxSearchCache), whichever zone
// asks.
//
// Why not Oniguruma's regex sets, which answer "leftmost, earliest expression first" in one
// call: each call starts every expression's own scan for its literal prefix afresh, so one
// expression that does not occur on a long line costs a scan to the line's end per call, and
// the line's cost grows with its length squared (a minified 89 KB script took two minutes). A
// shorter search range does not help: Oniguruma then misses matches that start inside the range
// but extend past it. Expressions that cannot be searched for (those using \G, whose meaning
// depends on where a search starts) are tried position by position instead.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "syntax/pattern_definition.hpp"
#include "platform/range.hpp"
#include "syntax/regex.hpp"
#include "syntax/zone_definition.hpp"

namespace vx {

struct VXSyntaxCandidate {
    const VXSyntaxZoneDefinition* definition;
    VXSXMatchPatternType patternType;  // main pattern for a match zone, start pattern otherwise
    const VXSyntaxPatternDefinition* pattern;  // that pattern
};

// The candidates of a list of definitions in the order the line loop tries them: groups
// replaced by their subzones, `$base` by the base's root zones, each definition once.
std::vector<const VXSyntaxZoneDefinition*> flattenCandidates(const VXSyntaxZoneDefinition& owner,
                                                             const VXSyntaxRuleset* base);

// The leftmost match of each search pattern at or after a position, kept for one line.
class VXSyntaxSearchCache {
public:
    void beginLine() { ++m_line; }
    // The leftmost position at or after `from` where the pattern matches (see findNext)
    // (up to the end of the line's text, its break included), or kNotFound.
    uint64_t nextMatch(const VXSyntaxPatternDefinition& pattern, const VXSyntaxLine& line, uint64_t from,
                       VXRegexRegion* region) {
        return nextMatch(pattern, pattern.searchId(), line, from, region);
    }
    // The same with the pattern's search id known (the candidate loop's fast path).
    uint64_t nextMatch(const VXSyntaxPatternDefinition& pattern, uint32_t id, const VXSyntaxLine& line, uint64_t from,
                       VXRegexRegion* region) {
        if (id < m_entries.size()) {
            const Entry& entry = m_entries[id];
            if (entry.line == m_line && entry.from <= from && (entry.found == kNotFound || entry.found >= from))
                return entry.found;
        }
        return search(pattern, id, line, from, region);
    }

private:
    uint64_t search(const VXSyntaxPatternDefinition& pattern, uint32_t id, const VXSyntaxLine& line, uint64_t from,
                    VXRegexRegion* region);
    struct Entry {
        uint64_t line = 0;
        uint64_t from = 0;
        uint64_t found = 0;
        VXRegexPrefilter::Memo memo;  // for this line only
    };
    std::vector<Entry> m_entries;
    uint64_t m_line = 1;
    // The units of the current line, found when first needed.
    VXCharFilter m_present;
    uint64_t m_presentLine = 0;
};

class VXCandidateSet {
public:
    VXCandidateSet(const VXSyntaxZoneDefinition& owner, const VXSyntaxRuleset* base);
    VXCandidateSet(const VXCandidateSet&) = delete;
    VXCandidateSet& operator=(const VXCandidateSet&) = delete;

    const std::vector<VXSyntaxCandidate>& candidates() const { return m_candidates; }
    bool empty() const { return m_candidates.empty(); }

    struct Found {
        uint64_t position;
        size_t index;  // into candidates()
    };
    // The leftmost position at or after `from`, before the line's content end, where a
    // candidate matches, with the earliest candidate there.
    std::optional<Found> search(const VXSyntaxLine& line, uint64_t from, VXSyntaxSearchCache& cache,
                                VXRegexRegion* region) const;

private:
    std::vector<VXSyntaxCandidate> m_candidates;
    std::vector<uint32_t> m_searchable;  // candidates found by searching, in order
    std::vector<uint32_t> m_searchIds;   // their patterns' search ids
    std::vector<uint32_t> m_positional;  // candidates tried position by position, in order
};

}  // namespace vx
