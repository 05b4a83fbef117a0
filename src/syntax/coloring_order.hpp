// VXColoringOrder: in which order the background highlighter colours a document's lines.
//
// Contexts flow downwards, so the only exact order is top to bottom. When the view shows lines
// far below what has been parsed (a document reopened at its old position, a jump to its end),
// the visible lines are parsed first from the best context at hand (the end of the nearest parsed
// line above, else the document's start) and shown at once; the top-to-bottom walk reaches them
// later and either confirms them (same open definitions: nothing to redo) or parses them again.
//
//   lines:  0 ........ front ................ [visible] ........ end
//           confirmed   ^ the walk goes on      parsed first,
//                         from here              confirmed later
#pragma once

#include <cstdint>

#include "platform/range.hpp"

namespace vx {

class VXColoringOrder {
public:
    // Lines the walk parses per turn of the background queue: small enough that an edit waits
    // only briefly for the turn in progress.
    static constexpr uint64_t kLinesPerTurn = 256;
    // Lines below the visible ones that are coloured early too (a page of scrolling).
    static constexpr uint64_t kLookahead = 64;

    void setVisibleLines(uint64_t first, uint64_t count) { m_visible = {first, count}; }
    Range visibleLines() const { return m_visible; }

    // The lines to parse ahead of the walk: the visible lines (with the lookahead) that lie
    // beyond the walk's front. Empty when the walk is at or past them.
    Range linesAhead(uint64_t front, uint64_t lineCount) const;

    // Lines the walk may parse in one turn.
    uint64_t linesPerTurn() const { return kLinesPerTurn; }

private:
    Range m_visible{0, 0};
};

}  // namespace vx
