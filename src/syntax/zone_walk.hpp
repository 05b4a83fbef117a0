// Walking one highlighted line: the zones open at each column, rebuilt from the line's start
// context and its events. Whoever shows a line (scope runs for checking, styled runs for the
// terminal) walks it this way.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "syntax/context.hpp"

namespace vx {

class VXLineZoneStack {
public:
    // The zones open at the line's start, each followed by its inner part when it has one.
    explicit VXLineZoneStack(const VXContext& start);

    void push(const VXSyntaxZone& zone) { m_entries.push_back(zone); }
    // Closes the innermost entry of the same origin, even when crossing captures left it below the top.
    void pop(const VXSyntaxZone& zone);

    VXContext context() const;
    std::vector<VXScope> scopes() const;
    // The same into `out`, reusing its storage.
    void scopesInto(std::vector<VXScope>& out) const;

private:
    std::vector<VXSyntaxZone> m_entries;
};

// Calls onSpan(from, to, stack) for each stretch of columns (relative to lineStart, clipped to
// until) over which the open zones stay the same, in order; returns the last column reached.
template <class OnSpan>
uint64_t VXWalkLineZones(VXLineZoneStack& stack, std::span<const VXSyntaxZone> events, uint64_t lineStart,
                         uint64_t until, OnSpan&& onSpan) {
    uint64_t column = 0;
    auto advanceTo = [&](uint64_t to) {
        to = std::min(to, until);
        if (to <= column) return;
        onSpan(column, to, stack);
        column = to;
    };
    auto relative = [&](uint64_t location) { return location < lineStart ? 0 : location - lineStart; };
    for (const VXSyntaxZone& zone : events) {
        advanceTo(relative(zone.range.location));
        switch (zone.effectiveType) {
            case VXSXZoneEffectiveTypeStart: stack.push(zone); break;
            case VXSXZoneEffectiveTypeEnd: stack.pop(zone); break;
            case VXSXZoneEffectiveTypeWhole:
                stack.push(zone);
                advanceTo(relative(zone.range.end()));
                stack.pop(zone);
                break;
        }
    }
    advanceTo(until);
    return column;
}

}  // namespace vx
