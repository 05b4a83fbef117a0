#include "syntax/candidate_set.hpp"

#include <algorithm>

#include "platform/log.hpp"
#include "syntax/onig_handles.hpp"

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
        m_candidates.push_back({definition, type});
        if (definition->pattern(type)->searchRegex()) m_setToCandidate.push_back(index);
        else m_positional.push_back(index);
    }
}

VXRegexSetPtr VXCandidateSet::buildRegSet() const {
    // A set owns the expressions put into it, so it gets its own compiled copies.
    std::vector<OnigRegexPtr> owned;
    for (uint32_t index : m_setToCandidate) {
        const auto& candidate = m_candidates[index];
        const VXSyntaxPatternDefinition* pattern = candidate.definition->pattern(candidate.patternType);
        OnigRegexPtr regex = compileOnigRegex(pattern->searchExpression(), pattern->searchOptions());
        if (!regex) return {};
        owned.push_back(std::move(regex));
    }
    OnigRegSet* raw = nullptr;
    if (onig_regset_new(&raw, 0, nullptr) != ONIG_NORMAL) return {};
    VXRegexSetPtr set(vxSet(raw));
    for (auto& regex : owned) {
        if (onig_regset_add(onigSet(set.get()), regex.get()) != ONIG_NORMAL) return {};
        regex.release();  // the set frees it now
    }
    return set;
}

VXRegexSet* VXCandidateSet::acquireRegSet() const {
    if (m_setToCandidate.empty()) return nullptr;
    {
        std::lock_guard lock(m_poolMutex);
        if (m_setFailed) return nullptr;
        if (!m_pool.empty()) {
            VXRegexSet* set = m_pool.back().release();
            m_pool.pop_back();
            return set;
        }
    }
    VXRegexSetPtr set = buildRegSet();
    if (!set) {
        VX_LOG_DEBUG("syntax", "regex set could not be built; candidates are tried one position at a time");
        std::lock_guard lock(m_poolMutex);
        m_setFailed = true;
        return nullptr;
    }
    return set.release();
}

void VXCandidateSet::releaseRegSet(VXRegexSet* set) const {
    if (!set) return;
    std::lock_guard lock(m_poolMutex);
    m_pool.emplace_back(set);
}

std::optional<VXCandidateSet::Found> VXCandidateSet::search(const VXSyntaxLine& line, uint64_t from, VXRegexSet* set,
                                                            VXRegexRegion* region) const {
    // Candidates are tried only before the content end (see the line loop). The set searches
    // to the line's end, as a shorter range is not reliably exclusive, and its answer is checked.
    const uint64_t limit = line.contentLength;
    if (from >= limit || m_candidates.empty()) return std::nullopt;
    // Without a set every candidate is tried position by position.
    const bool searchable = set != nullptr;
    uint64_t found = limit;
    size_t foundIndex = m_candidates.size();
    if (searchable) {
        const OnigUChar* str = onigBytes(line.text.data());
        const OnigUChar* end = str + line.text.size() * 2;
        int position = 0;
        const int r = onig_regset_search(onigSet(set), str, end, str + from * 2, end, ONIG_REGSET_POSITION_LEAD,
                                         ONIG_OPTION_NONE, &position);
        if (r >= 0 && static_cast<uint64_t>(position) / 2 < limit) {
            found = static_cast<uint64_t>(position) / 2;
            foundIndex = m_setToCandidate[static_cast<size_t>(r)];
        }
    }
    const std::vector<uint32_t>* positional = &m_positional;
    std::vector<uint32_t> everything;
    if (!searchable) {
        everything.resize(m_candidates.size());
        for (uint32_t i = 0; i < everything.size(); ++i) everything[i] = i;
        positional = &everything;
    }
    if (!positional->empty()) {
        // Positions before the set's match: any positional candidate wins. At the set's match:
        // only those that come before the set's winner.
        for (uint64_t p = from; p <= found && p < limit; p = VXSyntaxNextCharacter(line.text, p)) {
            for (uint32_t index : *positional) {
                if (p == found && index > foundIndex) break;
                const auto& candidate = m_candidates[index];
                const VXSyntaxPatternDefinition* pattern = candidate.definition->pattern(candidate.patternType);
                if (pattern->matchAt(line, p, region)) return Found{p, index};
            }
        }
    }
    if (foundIndex == m_candidates.size()) return std::nullopt;
    return Found{found, foundIndex};
}

}  // namespace vx
