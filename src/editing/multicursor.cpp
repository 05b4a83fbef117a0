#include "editing/multicursor.hpp"

#include <algorithm>
#include <iterator>

namespace vx::multicursor {

bool range::containsRange(const range& r) const {
    if (!valid() || !r.valid() || location > r.location) return false;
    if (isEmpty() && !r.isEmpty()) return false;
    int64_t rLast = r.isEmpty() ? r.location : r.location + r.length - 1;
    int64_t last = isEmpty() ? location : location + length - 1;
    return rLast <= last;
}

bool range::indexesIntersect(const range& b) const {
    const range& a = *this;
    if (a.isEmpty() && b.isEmpty()) return a.location == b.location;
    if (a.isEmpty()) return b.location <= a.location && a.location < b.max();
    if (b.isEmpty()) return a.location <= b.location && b.location < a.max();
    // Does b hold a's last index, or a's first? A b strictly inside a holds neither.
    return (b.location <= a.max() - 1 && a.max() - 1 < b.max()) || (b.location <= a.location && a.location < b.max());
}

std::set<range> context::withPrimary(const range& primary) const {
    std::set<range> all = m_ranges;
    all.insert(primary);
    return all;
}

bool context::canAddRange(const range& r) const {
    // Only a stored range that starts within the longest stored length before r, or inside r,
    // can hold one of r's ends or lie on it; the rest of the set is not looked at.
    auto from = m_ranges.lower_bound(range{std::max<int64_t>(r.location - m_longest, 0), 0});
    for (auto it = from; it != m_ranges.end() && it->location <= std::max(r.max(), r.location); ++it)
        if (r.indexesIntersect(*it)) return false;
    return true;
}

bool context::canAddRange(const range& r, const range& primary) const {
    return canAddRange(r) && !r.indexesIntersect(primary);
}

bool context::insert(const range& r) {
    if (!m_ranges.insert(r).second) return false;
    m_longest = std::max(m_longest, r.length);
    return true;
}

bool context::addRange(const range& r) {
    return canAddRange(r) && insert(r);
}

bool context::addRange(const range& r, const range& primary) {
    return canAddRange(r, primary) && insert(r);
}

bool context::removeRange(const range& r) {
    auto found = m_ranges.find(r);
    if (found == m_ranges.end() || !(*found == r)) return false;
    m_ranges.erase(found);
    return true;
}

void context::foreachRange(const Block& block) const {
    const std::set<range> snapshot = m_ranges;
    for (const range& r : snapshot) block(r);
}

void context::foreachRange(const range& primary, const Block& block) const {
    const std::set<range> snapshot = withPrimary(primary);
    for (const range& r : snapshot) block(r);
}

range context::rangeAtRawIndex(size_t i) const {
    if (i >= m_ranges.size()) return range::invalid();
    return *std::next(m_ranges.begin(), static_cast<std::ptrdiff_t>(i));
}

range context::rangeAtIndex(size_t i, const range& primary) const {
    std::set<range> all = withPrimary(primary);
    if (i >= all.size()) return range::invalid();
    return *std::next(all.begin(), static_cast<std::ptrdiff_t>(i));
}

int64_t context::rawIndexForRange(const range& r) const {
    auto found = m_ranges.find(r);
    if (found == m_ranges.end() || !(*found == r)) return -1;
    return std::distance(m_ranges.begin(), found);
}

int64_t context::indexForRange(const range& r, const range& primary) const {
    std::set<range> all = withPrimary(primary);
    auto found = all.find(r);
    if (found == all.end() || !(*found == r)) return -1;
    return std::distance(all.begin(), found);
}

range context::rangeForLocation(int64_t location) const {
    for (const range& r : m_ranges)
        if (r.containsIndex(location)) return r;
    return range::invalid();
}

range context::rangeForLocation(int64_t location, const range& primary) const {
    for (const range& r : withPrimary(primary))
        if (r.containsIndex(location)) return r;
    return range::invalid();
}

range context::mapRange(const range& primary, const MapBlock& block) {
    range newPrimary = primary;
    std::set<range> mapped;
    for (const range& r : withPrimary(primary)) {
        range result = block(r);
        if (r == primary) newPrimary = result;
        else if (r.valid()) mapped.insert(result);
    }
    m_ranges = std::move(mapped);
    m_longest = 0;
    for (const range& r : m_ranges) m_longest = std::max(m_longest, r.length);
    fixOverlaps(newPrimary);
    return newPrimary;
}

bool context::fixPrimaryOverlaps(const range& primary) {
    bool dropped = false;
    for (auto it = m_ranges.begin(); it != m_ranges.end();) {
        if (it->indexesIntersect(primary)) {
            it = m_ranges.erase(it);
            dropped = true;
        } else {
            ++it;
        }
    }
    return dropped;
}

bool context::fixSecondaryOverlaps() {
    bool dropped = false;
    const range* kept = nullptr;
    for (auto it = m_ranges.begin(); it != m_ranges.end();) {
        if (kept && it->indexesIntersect(*kept)) {
            it = m_ranges.erase(it);
            dropped = true;
        } else {
            kept = &*it;
            ++it;
        }
    }
    return dropped;
}

bool context::fixOverlaps(const range& primary) {
    // One pass never does both; the next edit's pass catches what is left.
    if (fixPrimaryOverlaps(primary)) return true;
    return fixSecondaryOverlaps();
}

std::vector<range> context::ranges() const {
    std::vector<range> out;
    for (const range& r : m_ranges)
        if (r.valid()) out.push_back(r);
    return out;
}

}  // namespace vx::multicursor
