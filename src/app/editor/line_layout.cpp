#include "app/editor/line_layout.hpp"

#include <algorithm>

#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::editor {
namespace {

// Most text is printable ASCII, one column a unit; runs of it are stepped over without decoding,
// so that a line of megabytes (minified code) costs a tight loop, not a call per character.
bool isPlainAscii(char16_t c) { return c >= 0x20 && c < 0x7f; }

int widthAt(char32_t c, uint64_t column, int tabSize) {
    if (c == U'\t') return tabSize - static_cast<int>(column % static_cast<uint64_t>(tabSize));
    if (c < 0x20 || c == 0x7f) return 2;
    return tui::codepointWidth(c);
}

// The length of the run of printable ASCII at `i`, at most `limit` units.
size_t plainRun(std::u16string_view line, size_t i, size_t limit) {
    const size_t end = std::min(line.size(), i + limit);
    size_t j = i;
    while (j < end && isPlainAscii(line[j])) ++j;
    return j - i;
}

}  // namespace

void layoutLine(std::u16string_view line, int tabSize, const std::function<bool(const LaidOutCharacter&)>& visit,
                uint64_t fromColumn) {
    if (tabSize < 1) tabSize = 1;
    uint64_t column = 0;
    size_t i = 0;
    // Characters that end at or before `fromColumn` are passed over without a visit.
    while (fromColumn > 0 && i < line.size()) {
        const size_t run = column < fromColumn ? plainRun(line, i, fromColumn - column) : 0;
        i += run;
        column += run;
        if (run > 0 || i >= line.size()) continue;
        size_t next = i;
        const char32_t c = tui::decodeUtf16(line, next);
        const int width = widthAt(c, column, tabSize);
        if (column + static_cast<uint64_t>(width) > fromColumn) break;
        column += static_cast<uint64_t>(width);
        i = next;
    }
    while (i < line.size()) {
        const size_t start = i;
        const char32_t c = tui::decodeUtf16(line, i);
        const int width = widthAt(c, column, tabSize);
        if (!visit({start, i - start, column, width, c})) return;
        column += static_cast<uint64_t>(width);
    }
}

uint64_t columnForOffset(std::u16string_view line, uint64_t offset, int tabSize) {
    if (tabSize < 1) tabSize = 1;
    offset = std::min<uint64_t>(offset, line.size());
    uint64_t column = 0;
    for (size_t i = 0; i < offset;) {
        const size_t run = plainRun(line, i, offset - i);
        i += run;
        column += run;
        if (i >= offset) break;
        // A character that begins before the offset counts whole (an offset inside a surrogate
        // pair falls after it).
        const char32_t c = tui::decodeUtf16(line, i);
        column += static_cast<uint64_t>(widthAt(c, column, tabSize));
    }
    return column;
}

uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int tabSize, bool nearest) {
    uint64_t result = line.size();
    bool takeNext = false;  // the answer is the next character that is not a mark
    layoutLine(
        line, tabSize,
        [&](const LaidOutCharacter& ch) {
            if (ch.width == 0) return true;  // the caret never stops between a character and its marks
            if (takeNext) {
                result = ch.offset;
                return false;
            }
            uint64_t end = ch.column + static_cast<uint64_t>(ch.width);
            if (column >= end) return true;
            if (nearest && ch.width > 1 && (column - ch.column) * 2 >= static_cast<uint64_t>(ch.width)) {
                takeNext = true;
                return true;
            }
            result = ch.offset;
            return false;
        },
        column);
    return result;
}

}  // namespace vx::editor
