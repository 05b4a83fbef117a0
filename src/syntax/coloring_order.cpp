#include "syntax/coloring_order.hpp"

#include <algorithm>

namespace vx {

Range VXColoringOrder::linesAhead(uint64_t front, uint64_t lineCount) const {
    if (m_visible.length == 0) return {front, 0};
    // Visible lines the walk reaches within a turn or two gain nothing from parsing them twice.
    const uint64_t from = std::max(m_visible.location, front);
    if (from <= front + kLinesPerTurn) return {front, 0};
    const uint64_t to = std::min(lineCount, m_visible.end() + kLookahead);
    if (from >= to) return {front, 0};
    return {from, to - from};
}

}  // namespace vx
