#include "syntax/candidate_set.hpp"

#include <algorithm>


namespace vx {
namespace {

void flattenInto(const std::vector<const VXSyntaxZoneDefinition*>& list, const VXSyntaxRuleset* base,
                 std::vector<const VXSyntaxZoneDefinition*>& visited, std::vector<const VXSyntaxZoneDefinition*>& out) {
    for (const VXSyntaxZoneDefinition* definition : list) {
        if (std::find(visited.begin(), visited.end(), definition) != visited.end()) continue;
        visited.push_back(definition);
        if (definition->isGroup()) flattenInto(definition->subzonesForBase(base), base, visited, out);
        else out.push_back(definition);
    }
}

}  // namespace

std::vector<const VXSyntaxZoneDefinition*> flattenCandidates(const VXSyntaxZoneDefinition& owner,
                                                             const VXSyntaxRuleset* base) {
    std::vector<const VXSyntaxZoneDefinition*> visited, out;
    flattenInto(owner.subzonesForBase(base), base, visited, out);
    return out;
}

VXCandidateSet::VXCandidateSet(const VXSyntaxZoneDefinition& owner, const VXSyntaxRuleset* base) {
    for (const VXSyntaxZoneDefinition* definition : flattenCandidates(owner, base)) {
        const auto type = definition->isStartEnd() ? VXSXMatchPatternTypeStart : VXSXMatchPatternTypeMain;
        const auto index = static_cast<uint32_t>(m_candidates.size());
        const VXSyntaxPatternDefinition* pattern = definition->pattern(type);
        m_candidates.push_back({definition, type, pattern});
        if (pattern->searchable()) {
            m_searchable.push_back(index);
            m_searchIds.push_back(pattern->searchId());
        } else {
            m_positional.push_back(index);
        }
    }
}

uint64_t VXSyntaxSearchCache::search(const VXSyntaxPatternDefinition& pattern, uint32_t id, const VXSyntaxLine& line,
                                     uint64_t from, VXRegexRegion* region) {
    if (id >= m_entries.size()) m_entries.resize(std::max<size_t>(VXSyntaxPatternDefinition::searchIdCount(), id + 1));
    Entry& entry = m_entries[id];
    if (entry.line != m_line) entry.memo = {};
    entry.line = m_line;
    entry.from = from;
    // A pattern that needs a character the line lacks is passed over without a scan.
    if (m_presentLine != m_line) {
        m_present = VXCharFilter::of(line.text);
        m_presentLine = m_line;
    }
    entry.found = pattern.mayOccurIn(m_present) ? pattern.findNext(line, from, region, &entry.memo) : kNotFound;
    return entry.found;
}

std::optional<VXCandidateSet::Found> VXCandidateSet::search(const VXSyntaxLine& line, uint64_t from,
                                                            VXSyntaxSearchCache& cache, VXRegexRegion* region) const {
    const uint64_t limit = line.contentLength;
    if (from >= limit) return std::nullopt;
    uint64_t found = kNotFound;
    size_t foundIndex = m_candidates.size();
    for (size_t k = 0; k < m_searchable.size(); ++k) {
        const uint32_t index = m_searchable[k];
        const uint64_t at = cache.nextMatch(*m_candidates[index].pattern, m_searchIds[k], line, from, region);
        if (at < found) {  // strictly: on a tie the earlier candidate stays
            found = at;
            foundIndex = index;
            if (found == from) break;  // nothing can be further left
        }
    }
    if (found >= limit) {
        found = kNotFound;
        foundIndex = m_candidates.size();
    }
    // Positions before the searched match: any positional candidate wins. At the searched
    // match: only those that come before its candidate.
    for (uint64_t p = from; p <= found && p < limit; p = VXSyntaxNextCharacter(line.text, p)) {
        for (uint32_t index : m_positional) {
            if (p == found && index > foundIndex) break;
            if (m_candidates[index].pattern->matchAt(line, p, region)) return Found{p, index};
        }
        if (m_positional.empty()) break;
    }
    if (foundIndex == m_candidates.size()) return std::nullopt;
    return Found{found, foundIndex};
}

}  // namespace vx
