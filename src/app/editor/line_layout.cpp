#include "app/editor/line_layout.hpp"

#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::editor {

void layoutLine(std::u16string_view line, int tabSize, const std::function<bool(const LaidOutCharacter&)>& visit) {
    if (tabSize < 1) tabSize = 1;
    uint64_t column = 0;
    for (size_t i = 0; i < line.size();) {
        size_t start = i;
        char32_t c = tui::decodeUtf16(line, i);
        int width;
        if (c == U'\t') width = tabSize - static_cast<int>(column % static_cast<uint64_t>(tabSize));
        else if (c < 0x20 || c == 0x7f) width = 2;
        else width = tui::codepointWidth(c);
        if (!visit({start, i - start, column, width, c})) return;
        column += static_cast<uint64_t>(width);
    }
}

uint64_t columnForOffset(std::u16string_view line, uint64_t offset, int tabSize) {
    uint64_t result = 0;
    layoutLine(line, tabSize, [&](const LaidOutCharacter& ch) {
        if (ch.offset >= offset) {
            result = ch.column;
            return false;
        }
        result = ch.column + static_cast<uint64_t>(ch.width);
        return true;
    });
    return result;
}

uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int tabSize, bool nearest) {
    uint64_t result = line.size();
    bool takeNext = false;  // the answer is the next character that is not a mark
    layoutLine(line, tabSize, [&](const LaidOutCharacter& ch) {
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
    });
    return result;
}

}  // namespace vx::editor
