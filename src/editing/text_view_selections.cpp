// VXTextView: moving the carets, and making and dropping selections.
#include <algorithm>

#include "editing/navigation.hpp"
#include "editing/text_view.hpp"

namespace vx {

uint64_t VXTextView::targetOf(Motion motion, bool extend, int pageHeight, bool keepColumn) {
    const TextBuffer& text = m_text;
    uint64_t caret = m_selection.caret;
    Range range = m_selection.range();
    switch (motion) {
        case Motion::Left: return !extend && !m_selection.isEmpty() ? range.location : previousCaretPosition(text, caret);
        case Motion::Right: return !extend && !m_selection.isEmpty() ? range.end() : nextCaretPosition(text, caret);
        case Motion::WordLeft: return wordLeft(text, caret);
        case Motion::WordRight: return wordRight(text, caret);
        case Motion::LineStart: {
            // First to the end of the indentation, then to the very start of the line.
            Range content = text.lineContentRange(text.lineForOffset(caret));
            uint64_t indentEnd = content.location + indentationLength(text.substring(content));
            return caret == indentEnd ? content.location : indentEnd;
        }
        case Motion::LineBeginning: return text.lineStart(text.lineForOffset(caret));
        case Motion::LineEnd: return text.lineContentRange(text.lineForOffset(caret)).end();
        case Motion::DocumentStart: return 0;
        case Motion::DocumentEnd: return text.length();
        case Motion::Up:
        case Motion::Down:
        case Motion::PageUp:
        case Motion::PageDown: {
            uint64_t line = text.lineForOffset(caret);
            uint64_t column = keepColumn && m_desiredColumn ? *m_desiredColumn : columnOf(caret);
            if (keepColumn) m_desiredColumn = column;
            int64_t step = motion == Motion::Up ? -1 : motion == Motion::Down ? 1
                         : motion == Motion::PageUp ? -std::max(pageHeight - 1, 1) : std::max(pageHeight - 1, 1);
            auto lastLine = static_cast<int64_t>(text.lineCount() - 1);
            int64_t wanted = static_cast<int64_t>(line) + step;
            if (wanted < 0) return 0;  // up from the first line goes to its start
            if (wanted > lastLine) return text.length();
            auto newLine = static_cast<uint64_t>(wanted);
            return text.lineStart(newLine) + m_widths.offsetForColumn(text.lineText(newLine), column, m_tabSize, false);
        }
    }
    return caret;
}

void VXTextView::move(Motion motion, bool extend, int pageHeight) {
    endTyping();
    m_columnAnchor.reset();
    bool vertical = motion == Motion::Up || motion == Motion::Down || motion == Motion::PageUp || motion == Motion::PageDown;
    if (!vertical) m_desiredColumn.reset();
    // One caret remembers its column across lines of different lengths; several carets each
    // take the column they are at.
    bool keepColumn = m_multicursor.isDecoherent();
    std::optional<uint64_t> desired = m_desiredColumn;
    m_multicursor.performMovement([&] {
        uint64_t target = targetOf(motion, extend, pageHeight, keepColumn);
        m_selection = extend ? Selection{m_selection.anchor, target} : Selection::caretAt(target);
    });
    if (keepColumn && vertical && !m_desiredColumn) m_desiredColumn = desired;
}

void VXTextView::selectAll() {
    endTyping();
    m_desiredColumn.reset();
    setSelection(Selection{0, m_text.length()});
}

void VXTextView::placeCaret(uint64_t line, uint64_t column, bool extend) {
    endTyping();
    m_desiredColumn.reset();
    line = std::min(line, m_text.lineCount() - 1);
    uint64_t offset = m_text.lineStart(line) + m_widths.offsetForColumn(m_text.lineText(line), column, m_tabSize, true);
    setSelection(extend ? Selection{m_selection.anchor, offset} : Selection::caretAt(offset));
}

bool VXTextView::addCaretOnAdjacentLine(int direction) {
    endTyping();
    auto all = selections();
    const Selection& edge = direction < 0 ? all.front() : all.back();
    uint64_t line = m_text.lineForOffset(edge.caret);
    if (direction < 0 ? line == 0 : line + 1 >= m_text.lineCount()) return false;
    line = direction < 0 ? line - 1 : line + 1;
    uint64_t column = m_desiredColumn.value_or(caretColumn());
    uint64_t offset = m_text.lineStart(line) + m_widths.offsetForColumn(m_text.lineText(line), column, m_tabSize, false);
    m_desiredColumn = column;
    return m_multicursor.addRange(multicursor::range::caret(static_cast<int64_t>(offset)));
}

Range VXTextView::wordAt(uint64_t offset) const {
    uint64_t start = offset, end = offset;
    while (start > 0 && isWordCharacter(m_text.characterAt(start - 1))) --start;
    while (end < m_text.length() && isWordCharacter(m_text.characterAt(end))) ++end;
    return {start, end - start};
}

namespace {

// Calls `found` with each place of `needle` in [from, until), ascending, without copying the
// text whole: windows that overlap by the needle's length, so no match is cut in two. Stops when
// `found` answers false.
template <class Found>
void findOccurrences(const TextBuffer& text, std::u16string_view needle, uint64_t from, uint64_t until, Found&& found) {
    if (needle.empty()) return;
    constexpr uint64_t kWindow = 1 << 16;
    uint64_t next = from;  // matches may not overlap: none starts before this
    for (uint64_t at = from; at + needle.size() <= until; at += kWindow) {
        uint64_t end = std::min(until, at + kWindow + needle.size() - 1);
        std::u16string window = text.substring({at, end - at});
        for (size_t hit = window.find(needle, next - at); hit != std::u16string::npos; hit = window.find(needle, hit + needle.size())) {
            if (!found(at + hit)) return;
            next = at + hit + needle.size();
        }
        next = std::max(next, at + kWindow);
    }
}

std::optional<uint64_t> findForward(const TextBuffer& text, std::u16string_view needle, uint64_t from, uint64_t until) {
    std::optional<uint64_t> first;
    findOccurrences(text, needle, from, until, [&](uint64_t at) {
        first = at;
        return false;
    });
    return first;
}

}  // namespace

bool VXTextView::selectNextOccurrence(bool skip) {
    endTyping();
    if (m_selection.isEmpty()) {
        Range word = wordAt(m_selection.caret);
        if (word.length == 0) return false;
        m_selection = Selection::fromRange(word);
        m_host.selectionsDidChange();
        return true;
    }
    std::u16string needle = selectedText();
    auto all = selections();
    uint64_t after = std::max(all.back().range().end(), m_selection.range().end());
    std::optional<uint64_t> found = findForward(m_text, needle, after, m_text.length());
    if (!found) found = findForward(m_text, needle, 0, m_text.length());
    if (!found) return false;
    multicursor::range next{static_cast<int64_t>(*found), static_cast<int64_t>(needle.size())};
    if (!m_multicursor.addRange(next)) return false;
    // Skipping drops the selection the next one replaces.
    return m_multicursor.promoteToPrimary(next, !skip);
}

size_t VXTextView::selectAllOccurrences() {
    endTyping();
    if (m_selection.isEmpty()) {
        Range word = wordAt(m_selection.caret);
        if (word.length == 0) return 0;
        m_selection = Selection::fromRange(word);
    }
    std::u16string needle = selectedText();
    Range primary = m_selection.range();
    m_multicursor.decohere();
    size_t count = 1;
    findOccurrences(m_text, needle, 0, m_text.length(), [&](uint64_t at) {
        if (at != primary.location && m_multicursor.addRange({static_cast<int64_t>(at), static_cast<int64_t>(needle.size())}))
            ++count;
        return true;
    });
    m_host.selectionsDidChange();
    return count;
}

void VXTextView::splitSelectionIntoLines() {
    endTyping();
    std::vector<Selection> out;
    size_t primaryIndex = 0;
    for (const Selection& s : selections()) {
        Range range = s.range();
        uint64_t first = m_text.lineForOffset(range.location), last = m_text.lineForOffset(range.end());
        if (first == last) {
            out.push_back(s);
            continue;
        }
        for (uint64_t line = first; line <= last; ++line) {
            Range content = m_text.lineContentRange(line);
            uint64_t start = std::max(content.location, range.location), end = std::min(content.end(), range.end());
            if (line == last && end == content.location && line != first) continue;  // the selection ends at the line's start
            out.push_back(Selection{start, std::max(start, end)});
        }
    }
    // The primary stays on the line the caret was on.
    for (size_t i = 0; i < out.size(); ++i)
        if (out[i].range().location <= m_selection.caret && m_selection.caret <= out[i].range().end()) primaryIndex = i;
    std::swap(out[0], out[primaryIndex]);
    setSelections(out);
}

void VXTextView::setColumnSelection(uint64_t anchorLine, uint64_t anchorColumn, uint64_t caretLine, uint64_t caretColumn) {
    endTyping();
    uint64_t lastLine = m_text.lineCount() - 1;
    anchorLine = std::min(anchorLine, lastLine);
    caretLine = std::min(caretLine, lastLine);
    uint64_t left = std::min(anchorColumn, caretColumn), right = std::max(anchorColumn, caretColumn);
    bool reversed = caretColumn < anchorColumn;
    std::vector<Selection> lines;
    Selection primary;
    for (uint64_t line = std::min(anchorLine, caretLine); line <= std::max(anchorLine, caretLine); ++line) {
        std::u16string text = m_text.lineText(line);
        uint64_t width = m_widths.columnForOffset(text, text.size(), m_tabSize);
        if (width < left && line != caretLine) continue;
        uint64_t start = m_text.lineStart(line);
        Range range{start + m_widths.offsetForColumn(text, left, m_tabSize, false), 0};
        range.length = start + m_widths.offsetForColumn(text, right, m_tabSize, false) - range.location;
        Selection s = Selection::fromRange(range, reversed);
        if (line == caretLine) primary = s;
        else lines.push_back(s);
    }
    lines.insert(lines.begin(), primary);
    setSelections(lines);
    m_columnAnchor = {anchorLine, anchorColumn};
    m_columnCaret = {caretLine, caretColumn};
}

void VXTextView::extendColumnSelection(int lines, int columns) {
    std::pair<uint64_t, uint64_t> anchor = m_columnAnchor.value_or(std::pair(caretLine(), caretColumn()));
    std::pair<uint64_t, uint64_t> caret = m_columnAnchor ? *m_columnCaret : anchor;
    auto shift = [](uint64_t value, int by) { return by < 0 && value < static_cast<uint64_t>(-by) ? 0 : value + by; };
    caret = {shift(caret.first, lines), shift(caret.second, columns)};
    setColumnSelection(anchor.first, anchor.second, caret.first, caret.second);
}

void VXTextView::collapseSelections() {
    endTyping();
    m_columnAnchor.reset();
    if (!m_multicursor.isDecoherent()) {
        m_multicursor.decohere();
        return;
    }
    m_selection = Selection::caretAt(m_selection.caret);
}

bool VXTextView::focusPrimary() {
    endTyping();
    return m_multicursor.focusOnRange(toMulticursorRange());
}

std::vector<std::u16string> VXTextView::copyTexts(bool* wholeLine) const {
    if (wholeLine) *wholeLine = false;
    if (m_multicursor.isDecoherent() && m_selection.isEmpty()) {
        // With nothing selected, the whole line (with its line break) is what is copied.
        uint64_t line = caretLine();
        uint64_t start = m_text.lineStart(line);
        uint64_t end = line + 1 < m_text.lineCount() ? m_text.lineStart(line + 1) : m_text.length();
        if (wholeLine) *wholeLine = true;
        return {m_text.substring({start, end - start})};
    }
    std::vector<std::u16string> out;
    for (const Selection& s : selections()) out.push_back(m_text.substring(s.range()));
    return out;
}

void VXTextView::cut() {
    bool wholeLine = false;
    copyTexts(&wholeLine);
    if (wholeLine) {
        uint64_t line = caretLine();
        uint64_t start = m_text.lineStart(line);
        uint64_t end = line + 1 < m_text.lineCount() ? m_text.lineStart(line + 1) : m_text.length();
        replaceRange({start, end - start}, u"", Selection::caretAt(start));
        return;
    }
    forEachSelection([&] { deleteRange(m_selection.range()); });
}

}  // namespace vx
