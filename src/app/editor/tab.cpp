#include "app/editor/tab.hpp"

#include <algorithm>

#include "app/editor/line_layout.hpp"
#include "document/encodings.hpp"
#include "document/line_endings.hpp"
#include "document/refresh_monitor.hpp"
#include "platform/unicode.hpp"
#include "syntax/language_catalog.hpp"

namespace vx::editor {

uint64_t TerminalColumns::columnForOffset(std::u16string_view line, uint64_t offset, int tabSize) const {
    return editor::columnForOffset(line, offset, tabSize);
}

uint64_t TerminalColumns::offsetForColumn(std::u16string_view line, uint64_t column, int tabSize, bool nearest) const {
    return editor::offsetForColumn(line, column, tabSize, nearest);
}

Tab::Tab(std::unique_ptr<VXSingleFileDocument> document, std::string path)
    : m_document(std::move(document)), m_text(*m_document), m_pendingPath(std::move(path)) {
    m_view = std::make_unique<VXTextView>(m_text, m_document->undoManager(), static_cast<TextViewHost&>(*this), m_columns);
    m_document->addView(this);
    m_document->setHighlighter(this);
    documentDidChange();
}

Tab::~Tab() {
    m_view.reset();  // closes an open undo step while the document is still here
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
    m_language = catalog.languageNamed(m_document->language().identifier);
    // A text too heavy to colour stays plain, whatever its language.
    if (m_language && m_language != catalog.plainText() && m_document->shouldHighlight())
        if (VXSyntaxRuleset* ruleset = catalog.rulesetForLanguage(*m_language)) m_highlighter = std::make_unique<TabHighlighter>(*ruleset);
    Selection s = m_view->selection();
    uint64_t length = m_text.length();
    if (s.anchor > length || s.caret > length) m_view->setSelection({std::min(s.anchor, length), std::min(s.caret, length)});
}

void Tab::refreshIfReverted() {
    if (&m_document->contents() != m_shownStorage) documentDidChange();
}

void Tab::recomputeCache(Range editedRange, int64_t changeInLength, unsigned editedMask, bool fully) {
    if (m_snippet && (editedMask & kTextStorageEditedCharacters)) {
        if (fully) m_snippet.reset();  // a new text altogether
        else m_snippet->textDidChange(editedRange, changeInLength);
    }
    if (!m_highlighter || !(editedMask & kTextStorageEditedCharacters)) return;
    if (&m_document->contents() != m_shownStorage) return;  // a revert: documentDidChange starts afresh
    // From the line before: an edit just after a CR may have joined it to an LF.
    uint64_t line = fully ? 0 : m_text.lineForOffset(std::min(editedRange.location, m_text.length()));
    m_highlighter->invalidateFrom(line > 0 ? line - 1 : 0);
}

std::vector<std::string> Tab::scopesAtLocation(uint64_t location) {
    std::vector<std::string> scopes;
    for (const auto& zone : scopeContextAt(location)) scopes.emplace_back(zone.scope.stringRepresentation());
    if (scopes.empty()) scopes.push_back(m_document->language().rootScope);
    return scopes;
}

VXContext Tab::scopeContextAt(uint64_t offset) {
    if (m_highlighter) return m_highlighter->contextAt(m_text, std::min(offset, m_text.length()));
    const std::string& root = m_document->language().rootScope;
    if (root.empty()) return {};
    VXScope scope(root);
    return VXContext::fromScopes(std::span(&scope, 1));
}

VXAutopair::Pairs Tab::autopairs() {
    if (!m_language || m_language->pairs.empty()) return VXAutopair::defaultPairs();
    VXAutopair::Pairs pairs;
    for (const auto& [open, close] : m_language->pairs) pairs.emplace_back(utf16FromUtf8(open), utf16FromUtf8(close));
    return pairs;
}

std::u16string Tab::lineCommentMarker() {
    return m_language ? utf16FromUtf8(m_language->lineComment) : std::u16string();
}

std::pair<std::u16string, std::u16string> Tab::blockCommentMarkers() {
    if (!m_language) return {};
    return {utf16FromUtf8(m_language->blockCommentStart), utf16FromUtf8(m_language->blockCommentEnd)};
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

std::u16string Tab::lineBreak() {
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

void Tab::move(Motion motion, bool extend, int pageHeight) {
    m_view->move(motion, extend, pageHeight);
    if (motion == Motion::PageUp || motion == Motion::PageDown) {
        auto step = static_cast<int64_t>(std::max(pageHeight - 1, 1)) * (motion == Motion::PageUp ? -1 : 1);
        auto lastLine = static_cast<int64_t>(m_text.lineCount() - 1);
        topLine = static_cast<uint64_t>(std::clamp<int64_t>(static_cast<int64_t>(topLine) + step, 0, lastLine));
    }
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
