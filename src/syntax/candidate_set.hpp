// VXCandidateSet: the zones that may start inside one zone, flattened and ready for searching.
//
// The line loop is defined position by position: at each position the candidate definitions
// are tried in file order (groups and includes expanded depth first, each definition once)
// and the first that matches wins. Trying every candidate at every position is slow; the same
// winner is found by asking, for the whole set at once, for the leftmost position where any
// candidate matches and, at that position, the earliest candidate. Oniguruma's regex sets do
// exactly that in one call (position-lead search). Strings and word lists join the set as
// literal expressions, and the boundary and anchor flags are written into each expression, so
// that a match the set finds is a match the anchored test would accept. Expressions that
// cannot be searched for (those using \G, whose meaning depends on where a search starts) are
// tried position by position instead.
//
// A regex set keeps match state, so each thread borrows its own from the set's pool.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "syntax/pattern_definition.hpp"
#include "syntax/regex.hpp"
#include "syntax/zone_definition.hpp"

namespace vx {

struct VXSyntaxCandidate {
    const VXSyntaxZoneDefinition* definition;
    VXSXMatchPatternType patternType;  // main pattern for a match zone, start pattern otherwise
};

// The candidates of a list of definitions in the order the line loop tries them: groups
// replaced by their subzones, `$base` by the base's root zones, each definition once.
std::vector<const VXSyntaxZoneDefinition*> flattenCandidates(const VXSyntaxZoneDefinition& owner,
                                                             const VXSyntaxRuleset* base);

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
    // candidate matches, with the earliest candidate there. `set` is a regex set borrowed from
    // this candidate set (null when none could be had: then every candidate is tried position
    // by position); `region` is scratch for anchored tests.
    std::optional<Found> search(const VXSyntaxLine& line, uint64_t from, VXRegexSet* set, VXRegexRegion* region) const;

    // Borrows a regex set for one thread; null when no candidate is searchable.
    VXRegexSet* acquireRegSet() const;
    void releaseRegSet(VXRegexSet* set) const;

private:
    VXRegexSetPtr buildRegSet() const;

    std::vector<VXSyntaxCandidate> m_candidates;
    std::vector<uint32_t> m_setToCandidate;  // regex set index -> candidate index
    std::vector<uint32_t> m_positional;      // candidates tried position by position
    mutable std::mutex m_poolMutex;
    mutable std::vector<VXRegexSetPtr> m_pool;
    mutable bool m_setFailed = false;
};

// The next position after `position`: a surrogate pair counts as one character, so that no
// match is ever tried inside one.
inline uint64_t VXSyntaxNextCharacter(std::u16string_view text, uint64_t position) {
    if (position + 1 < text.size() && text[position] >= 0xD800 && text[position] <= 0xDBFF &&
        text[position + 1] >= 0xDC00 && text[position + 1] <= 0xDFFF)
        return position + 2;
    return position + 1;
}

}  // namespace vx
