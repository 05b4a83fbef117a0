// Where the characters of one line fall on screen: tabs run to the next tab stop, wide characters
// take two columns, combining marks none, and control characters show as ^X in two columns.
// Columns count from the start of the line, before horizontal scrolling.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace vx::editor {

struct LaidOutCharacter {
    uint64_t offset;    // UTF-16 offset in the line
    uint64_t length;    // UTF-16 units (2 for a surrogate pair)
    uint64_t column;
    int width;          // columns taken: 0 for a combining mark
    char32_t codepoint;
};

// Calls `visit` for every character in order; stops early when it answers false. Characters that
// end at or before `fromColumn` (those wholly left of a horizontally scrolled view) are passed
// over without a visit; the columns of the others are as without it.
void layoutLine(std::u16string_view line, int tabSize, const std::function<bool(const LaidOutCharacter&)>& visit,
                uint64_t fromColumn = 0);

uint64_t columnForOffset(std::u16string_view line, uint64_t offset, int tabSize);
// The offset of the character under `column` (the one it starts in), or the line's length past
// its end. With `nearest`, a column in the right half of a character answers the offset after it.
uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int tabSize, bool nearest = false);

}  // namespace vx::editor
