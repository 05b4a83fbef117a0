#include "app/editor/tab.hpp"

#include <algorithm>

#include "app/editor/line_layout.hpp"
#include "app/editor/navigation.hpp"
#include "document/encodings.hpp"
#include "document/refresh_monitor.hpp"
#include "document/line_endings.hpp"
#include "syntax/language_catalog.hpp"

namespace vx::editor {
namespace {

// Line breaks of inserted text become `lineBreak`: CRLF, CR and LF alike.
std::u16string withLineBreaks(std::u16string_view text, std::u16string_view lineBreak) {
    std::u16string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' || text[i] == u'\n') {
            if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
            out += lineBreak;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace

Tab::Tab(std::unique_ptr<VXSingleFileDocument> document, std::string path)
    : m_document(std::move(document)), m_text(*m_document), m_pendingPath(std::move(path)) {
    m_document->addView(this);
    m_document->setHighlighter(this);
    documentDidChange();
}

Tab::~Tab() {
    endTyping();
    VXRefreshMonitor::sharedMonitor().removeDocument(m_document.get());
    m_document->removeView(this);
    m_document->setHighlighter(nullptr);
    undoManager().removeAllActionsWithTarget(this);
}

void Tab::documentDidChange() {
    m_shownStorage = &m_document->contents();
    // A document with a file is watched for changes made by other programs.
    VXRefreshMonitor::sharedMonitor().removeDocument(m_document.get());
    if (m_document->fileURL()) VXRefreshMonitor::sharedMonitor().addDocument(m_document.get());
    const VXIndentationContext& indentation = m_document->indentationContext();
    setIndentation(static_cast<int>(indentation.tabSize), indentation.useSoftTabs);
    m_highlighter.reset();
    auto& catalog = VXLanguageCatalog::sharedCatalog();
    const VXLanguage* language = catalog.languageNamed(m_document->language().identifier);
    if (language && language != catalog.plainText())
        if (VXSyntaxRuleset* ruleset = catalog.rulesetForLanguage(*language)) m_highlighter = std::make_unique<TabHighlighter>(*ruleset);
    setSelection(m_selection);
}

void Tab::refreshIfReverted() {
    if (&m_document->contents() != m_shownStorage) documentDidChange();
}

void Tab::recomputeCache(Range editedRange, int64_t, unsigned editedMask, bool fully) {
    if (!m_highlighter || !(editedMask & kTextStorageEditedCharacters)) return;
    if (&m_document->contents() != m_shownStorage) return;  // a revert: documentDidChange starts afresh
    // From the line before: an edit just after a CR may have joined it to an LF.
    uint64_t line = fully ? 0 : m_text.lineForOffset(std::min(editedRange.location, m_text.length()));
    m_highlighter->invalidateFrom(line > 0 ? line - 1 : 0);
}

std::vector<std::string> Tab::scopesAtLocation(uint64_t) {
    return {m_document->language().rootScope};
}

std::string Tab::encodingName() const {
    std::string name = localizedNameOfStringEncoding(m_document->fileEncoding());
    return name.empty() ? std::to_string(m_document->fileEncoding()) : name;
}

std::string Tab::displayName() const {
    std::string path = this->path();
    if (path.empty()) return "untitled";
    auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void Tab::setIndentation(int tabSize, bool softTabs) {
    m_tabSize = std::clamp(tabSize, 1, 18);
    m_softTabs = softTabs;
}

std::u16string Tab::lineBreak() const {
    if (!m_lineBreak.empty()) return m_lineBreak;
    NewlineType type = m_document->lineEndingType();
    if (type != NewlineType::Mixed) return std::u16string(newlineString(type));
    // Mixed: the style of the first line break.
    if (m_text.lineCount() < 2) return u"\n";
    uint64_t end = m_text.lineStart(1);
    if (end >= 2 && m_text.characterAt(end - 2) == u'\r' && m_text.characterAt(end - 1) == u'\n') return u"\r\n";
    return m_text.characterAt(end - 1) == u'\r' ? u"\r" : u"\n";
}

std::string Tab::lineEndingName() const {
    switch (m_document->lineEndingType()) {
        case NewlineType::CRLF: return "CRLF";
        case NewlineType::CR: return "CR";
        case NewlineType::Mixed: return "Mixed";
        default: return "LF";
    }
}

void Tab::setSelection(Selection selection) {
    uint64_t length = m_text.length();
    m_selection = {std::min(selection.anchor, length), std::min(selection.caret, length)};
}

uint64_t Tab::caretColumn() const {
    uint64_t line = caretLine();
    Range content = m_text.lineContentRange(line);
    uint64_t inLine = std::min(m_selection.caret, content.end()) - content.location;
    return columnForOffset(m_text.lineText(line), inLine, m_tabSize);
}

void Tab::replace(Range range, std::u16string_view text, Selection after) {
    Selection before = m_selection;
    std::u16string old = m_text.substring(range);
    m_text.replace(range, text);
    m_selection = after;
    Range inserted{range.location, text.size()};
    undoManager().registerUndo(this, [this, inserted, old, before] { replace(inserted, old, before); });
    m_desiredColumn.reset();
}

void Tab::replaceRange(Range range, std::u16string_view text, Selection after) {
    endTyping();
    replace(range, text, after);
}

void Tab::typeText(std::u16string_view text) {
    if (!m_typing) {
        undoManager().beginUndoGrouping();
        m_typing = true;
    }
    Range range = m_selection.range();
    replace(range, text, Selection::caretAt(range.location + text.size()));
}

void Tab::endTyping() {
    if (!m_typing) return;
    m_typing = false;
    undoManager().endUndoGrouping();
}

void Tab::insertText(std::u16string_view text) {
    endTyping();
    std::u16string converted = withLineBreaks(text, lineBreak());
    Range range = m_selection.range();
    replace(range, converted, Selection::caretAt(range.location + converted.size()));
}

void Tab::insertNewline() {
    endTyping();
    Range range = m_selection.range();
    uint64_t line = m_text.lineForOffset(range.location);
    Range content = m_text.lineContentRange(line);
    std::u16string lineText = m_text.substring({content.location, range.location - content.location});
    std::u16string inserted = lineBreak() + lineText.substr(0, indentationLength(lineText));
    replace(range, inserted, Selection::caretAt(range.location + inserted.size()));
}

std::pair<uint64_t, uint64_t> Tab::selectedLines() const {
    Range range = m_selection.range();
    uint64_t first = m_text.lineForOffset(range.location);
    uint64_t last = m_text.lineForOffset(range.end());
    if (last > first && m_text.lineStart(last) == range.end()) --last;
    return {first, last};
}

void Tab::indent() {
    endTyping();
    std::u16string unit = m_softTabs ? std::u16string(static_cast<size_t>(m_tabSize), u' ') : u"\t";
    auto [first, last] = selectedLines();
    if (first == last && m_selection.range().length < m_text.lineContentRange(first).length) {
        if (m_softTabs) {
            // To the next tab stop, as the columns fall.
            uint64_t column = columnForOffset(m_text.lineText(first), m_selection.range().location - m_text.lineStart(first), m_tabSize);
            unit.resize(static_cast<size_t>(m_tabSize) - column % static_cast<uint64_t>(m_tabSize));
        }
        Range range = m_selection.range();
        replace(range, unit, Selection::caretAt(range.location + unit.size()));
        return;
    }
    undoManager().beginUndoGrouping();
    for (uint64_t line = first; line <= last; ++line) {
        if (m_text.lineContentRange(line).length == 0) continue;  // blank lines stay blank
        replace({m_text.lineStart(line), 0}, unit, m_selection);
    }
    Range lastLine = m_text.lineContentRange(last);
    m_selection = {m_text.lineStart(first), lastLine.end()};
    undoManager().endUndoGrouping();
}

void Tab::unindent() {
    endTyping();
    auto [first, last] = selectedLines();
    bool wasEmpty = m_selection.isEmpty();
    uint64_t caret = m_selection.caret;
    undoManager().beginUndoGrouping();
    for (uint64_t line = first; line <= last; ++line) {
        std::u16string text = m_text.lineText(line);
        uint64_t remove = 0;
        if (!text.empty() && text[0] == u'\t') remove = 1;
        else while (remove < text.size() && remove < static_cast<uint64_t>(m_tabSize) && text[remove] == u' ') ++remove;
        if (remove == 0) continue;
        uint64_t start = m_text.lineStart(line);
        if (wasEmpty && caret > start) caret -= std::min(remove, caret - start);
        replace({start, remove}, u"", m_selection);
    }
    if (wasEmpty) m_selection = Selection::caretAt(caret);
    else m_selection = {m_text.lineStart(first), m_text.lineContentRange(last).end()};
    undoManager().endUndoGrouping();
}

void Tab::deleteRange(Range range) {
    endTyping();
    if (range.length == 0) return;
    replace(range, u"", Selection::caretAt(range.location));
}

void Tab::deleteBackward() {
    if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
    uint64_t caret = m_selection.caret;
    uint64_t start = m_text.lineStart(m_text.lineForOffset(caret));
    // Within soft-tab indentation, back to the previous tab stop.
    if (m_softTabs && caret > start) {
        std::u16string before = m_text.substring({start, caret - start});
        if (before.find_first_not_of(u' ') == std::u16string::npos) {
            uint64_t width = before.size() % static_cast<uint64_t>(m_tabSize);
            if (width == 0) width = std::min<uint64_t>(before.size(), static_cast<uint64_t>(m_tabSize));
            return deleteRange({caret - width, width});
        }
    }
    uint64_t previous = previousCaretPosition(m_text, caret);
    deleteRange({previous, caret - previous});
}

void Tab::deleteForward() {
    if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
    uint64_t next = nextCaretPosition(m_text, m_selection.caret);
    deleteRange({m_selection.caret, next - m_selection.caret});
}

void Tab::deleteWordBackward() {
    if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
    uint64_t start = wordLeft(m_text, m_selection.caret);
    deleteRange({start, m_selection.caret - start});
}

void Tab::deleteWordForward() {
    if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
    uint64_t end = wordRight(m_text, m_selection.caret);
    deleteRange({m_selection.caret, end - m_selection.caret});
}

void Tab::undo() {
    endTyping();
    if (undoManager().canUndo()) undoManager().undo();
}

void Tab::redo() {
    endTyping();
    if (undoManager().canRedo()) undoManager().redo();
}

void Tab::move(Motion motion, bool extend, int pageHeight) {
    endTyping();
    const TextBuffer& text = m_text;
    uint64_t caret = m_selection.caret;
    Range range = m_selection.range();
    bool vertical = motion == Motion::Up || motion == Motion::Down || motion == Motion::PageUp || motion == Motion::PageDown;
    if (!vertical) m_desiredColumn.reset();
    uint64_t target = caret;
    switch (motion) {
        case Motion::Left:
            target = !extend && !m_selection.isEmpty() ? range.location : previousCaretPosition(text, caret);
            break;
        case Motion::Right:
            target = !extend && !m_selection.isEmpty() ? range.end() : nextCaretPosition(text, caret);
            break;
        case Motion::WordLeft: target = wordLeft(text, caret); break;
        case Motion::WordRight: target = wordRight(text, caret); break;
        case Motion::LineStart: {
            // First to the end of the indentation, then to the very start of the line.
            Range content = text.lineContentRange(text.lineForOffset(caret));
            uint64_t indentEnd = content.location + indentationLength(text.substring(content));
            target = caret == indentEnd ? content.location : indentEnd;
            break;
        }
        case Motion::LineEnd: target = text.lineContentRange(text.lineForOffset(caret)).end(); break;
        case Motion::DocumentStart: target = 0; break;
        case Motion::DocumentEnd: target = text.length(); break;
        case Motion::Up:
        case Motion::Down:
        case Motion::PageUp:
        case Motion::PageDown: {
            uint64_t line = text.lineForOffset(caret);
            if (!m_desiredColumn) m_desiredColumn = caretColumn();
            int64_t step = motion == Motion::Up ? -1 : motion == Motion::Down ? 1
                         : motion == Motion::PageUp ? -std::max(pageHeight - 1, 1) : std::max(pageHeight - 1, 1);
            auto lastLine = static_cast<int64_t>(text.lineCount() - 1);
            int64_t wanted = static_cast<int64_t>(line) + step;
            if (wanted < 0) {
                target = 0;  // up from the first line goes to its start
            } else if (wanted > lastLine) {
                target = text.length();
            } else {
                auto newLine = static_cast<uint64_t>(wanted);
                std::u16string lineText = text.lineText(newLine);
                target = text.lineStart(newLine) + offsetForColumn(lineText, *m_desiredColumn, m_tabSize);
            }
            if (motion == Motion::PageUp || motion == Motion::PageDown) {
                auto top = static_cast<int64_t>(topLine) + step;
                topLine = static_cast<uint64_t>(std::clamp<int64_t>(top, 0, lastLine));
            }
            break;
        }
    }
    m_selection = extend ? Selection{m_selection.anchor, target} : Selection::caretAt(target);
}

void Tab::selectAll() {
    endTyping();
    m_desiredColumn.reset();
    m_selection = {0, m_text.length()};
}

void Tab::placeCaret(uint64_t line, uint64_t column, bool extend) {
    endTyping();
    m_desiredColumn.reset();
    line = std::min(line, m_text.lineCount() - 1);
    uint64_t offset = m_text.lineStart(line) + offsetForColumn(m_text.lineText(line), column, m_tabSize, true);
    m_selection = extend ? Selection{m_selection.anchor, offset} : Selection::caretAt(offset);
}

void Tab::scrollToCaret(int rows, int columns) {
    uint64_t line = caretLine();
    auto visibleRows = static_cast<uint64_t>(std::max(rows, 1));
    if (line < topLine) topLine = line;
    else if (line >= topLine + visibleRows) topLine = line - visibleRows + 1;
    uint64_t column = caretColumn();
    auto visibleColumns = static_cast<uint64_t>(std::max(columns, 1));
    // Scroll sideways by a quarter of the width at a time, so typing does not scroll on every key.
    uint64_t jump = std::max<uint64_t>(visibleColumns / 4, 1);
    if (column < leftColumn) leftColumn = column > jump ? column - jump : 0;
    else if (column >= leftColumn + visibleColumns) leftColumn = column - visibleColumns + jump;
}

void Tab::scrollBy(int64_t lines, int rows) {
    auto lastTop = static_cast<int64_t>(m_text.lineCount()) - std::max(rows / 2, 1);
    int64_t top = std::clamp<int64_t>(static_cast<int64_t>(topLine) + lines, 0, std::max<int64_t>(lastTop, 0));
    topLine = static_cast<uint64_t>(top);
}

}  // namespace vx::editor
