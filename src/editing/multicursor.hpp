// The set of secondary selections of a text view: ranges ordered by location, at most one per
// location, kept free of overlaps. The primary selection (the view's own) is never stored here;
// operations that must see it take it as an argument and put it in for their duration.
//
//     text     a b c d e f g h
//     primary        [c d)            (2, 2)
//     context  [a)       |   [g h)    (0, 1) (4, 0) (6, 2)     a caret at 4
//
// The rules for overlap are deliberately asymmetric (indexesIntersect is asked of one range about
// another); the repairs depend on which side is asked, so keep them exactly as they are.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

namespace vx::multicursor {

struct range {
    static constexpr int64_t kLimit = 2'147'483'647;

    int64_t location = -1;
    int64_t length = -1;

    static range invalid() { return {}; }
    static range caret(int64_t at) { return {at, 0}; }

    bool valid() const { return location >= 0 && location < kLimit && length >= 0 && length < kLimit; }
    int64_t max() const { return location + length; }
    bool isEmpty() const { return length == 0; }

    // Any two invalid ranges are equal; a valid and an invalid one are not.
    friend bool operator==(const range& a, const range& b) {
        if (!a.valid() || !b.valid()) return a.valid() == b.valid();
        return a.location == b.location && a.length == b.length;
    }
    // By location only: two ranges at one location are equivalent, so a set keeps one of them.
    friend bool operator<(const range& a, const range& b) { return !(a == b) && a.location < b.location; }

    // A caret contains every index at or after its own location.
    bool containsIndex(int64_t index) const {
        return valid() && location <= index && (length == 0 || location + length > index);
    }
    bool containsRange(const range& r) const;
    // Whether `b` touches this range, as asked from this range's side (see the header).
    bool indexesIntersect(const range& b) const;
};

class context {
public:
    using Block = std::function<void(const range&)>;
    using MapBlock = std::function<range(const range&)>;

    size_t rawCount() const { return m_ranges.size(); }
    size_t count(const range&) const { return m_ranges.size() + 1; }
    bool empty() const { return m_ranges.empty(); }

    bool canAddRange(const range& r) const;
    bool canAddRange(const range& r, const range& primary) const;
    bool addRange(const range& r);
    bool addRange(const range& r, const range& primary);
    bool removeRange(const range& r);
    void removeAll() {
        m_ranges.clear();
        m_longest = 0;
    }

    // In ascending order over a copy, so the block may change the set.
    void foreachRange(const Block& block) const;
    void foreachRange(const range& primary, const Block& block) const;

    range rangeAtRawIndex(size_t i) const;
    range rangeAtIndex(size_t i, const range& primary) const;
    // The position in ascending order, or -1 when the range is not there.
    int64_t rawIndexForRange(const range& r) const;
    int64_t indexForRange(const range& r, const range& primary) const;
    // The first range that contains `location` (per containsIndex); invalid when none.
    range rangeForLocation(int64_t location) const;
    range rangeForLocation(int64_t location, const range& primary) const;

    // Maps every range and the primary through `block`, in ascending order; answers the new
    // primary. Mapped ranges that overlap are then repaired (fixOverlaps).
    range mapRange(const range& primary, const MapBlock& block);
    bool fixOverlaps(const range& primary);
    bool fixPrimaryOverlaps(const range& primary);
    bool fixSecondaryOverlaps();

    // The secondary ranges, ascending; only valid ones.
    std::vector<range> ranges() const;
    // Puts the ranges back as they were saved (no checks; they came from this set).
    void assign(const std::vector<range>& ranges) {
        removeAll();
        for (const range& r : ranges) insert(r);
    }
    friend bool operator==(const context& a, const context& b) { return a.m_ranges == b.m_ranges; }

private:
    std::set<range> withPrimary(const range& primary) const;
    bool insert(const range& r);

    std::set<range> m_ranges;
    int64_t m_longest = 0;  // the longest length stored since the set was last rebuilt
};

}  // namespace vx::multicursor
