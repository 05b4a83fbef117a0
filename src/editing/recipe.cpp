#include "editing/recipe.hpp"

namespace vx {

bool VXRecipe::replaceTextInRange(Range range, std::u16string_view text) {
    if (range.end() > length()) return false;
    m_target.replaceText(range, text);
    return true;
}

std::pair<uint64_t, uint64_t> VXRecipe::linesOf(Range range) const {
    const TextBuffer& text = m_target.buffer();
    uint64_t first = text.lineForOffset(range.location);
    // A range that ends just after a line break does not take in the line that follows.
    uint64_t last = range.length > 0 ? text.lineForOffset(range.end() - 1) : first;
    return {first, std::max(first, last)};
}

Range VXRecipe::rangeOfLineInRange(Range range) const {
    const TextBuffer& text = m_target.buffer();
    auto [first, last] = linesOf(range);
    uint64_t start = text.lineStart(first);
    uint64_t end = last + 1 < text.lineCount() ? text.lineStart(last + 1) : text.length();
    return {start, end - start};
}

Range VXRecipe::contentRangeOfLinesInRange(Range range) const {
    const TextBuffer& text = m_target.buffer();
    auto [first, last] = linesOf(range);
    uint64_t start = text.lineStart(first);
    return {start, text.lineContentRange(last).end() - start};
}

std::vector<std::u16string> VXRecipe::splitLines(std::u16string_view text) {
    std::vector<std::u16string> lines(1);
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' || text[i] == u'\n') {
            if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
            lines.emplace_back();
        } else {
            lines.back() += text[i];
        }
    }
    return lines;
}

std::u16string VXRecipe::joinLines(const std::vector<std::u16string>& lines, std::u16string_view lineBreak) {
    std::u16string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i) out += lineBreak;
        out += lines[i];
    }
    return out;
}

}  // namespace vx
