// One open document in the editor: the document, the engine's text view over its text storage
// (selections, editing, undo), and how far the view is scrolled. Editing itself is the engine's
// (editing/text_view.hpp); the tab gives it the document's language, its scope contexts from
// the highlighter, and terminal cells as columns.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "editing/document_text_buffer.hpp"
#include "app/editor/highlighting.hpp"
#include "document/document_hooks.hpp"
#include "document/single_file_document.hpp"
#include "editing/text_view.hpp"
#include "platform/undo_manager.hpp"
#include "snippets/snippet_session.hpp"

namespace vx {
struct VXLanguage;
}

namespace vx::editor {

// Terminal cells: tabs to the next stop, wide characters two cells, marks none.
class TerminalColumns final : public ColumnWidths {
public:
    uint64_t columnForOffset(std::u16string_view line, uint64_t offset, int tabSize) const override;
    uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int tabSize, bool nearest) const override;
};

class Tab final : public DocumentView, private HighlightingHook, private TextViewHost {
public:
    // `path` names the file a document without one will be saved to (a file that does not exist yet).
    explicit Tab(std::unique_ptr<VXSingleFileDocument> document, std::string path = {});
    ~Tab();
    Tab(const Tab&) = delete;
    Tab& operator=(const Tab&) = delete;

    VXSingleFileDocument& document() { return *m_document; }
    TextBuffer& text() { return m_text; }
    const TextBuffer& text() const { return m_text; }
    UndoManager& undoManager() { return m_document->undoManager(); }
    VXTextView& view() { return *m_view; }
    const VXTextView& view() const { return *m_view; }

    // The document's file, or the path it is to be saved to; empty for an untitled text.
    std::string path() const { return m_document->fileURL().value_or(m_pendingPath); }
    // The file's name, or "untitled".
    std::string displayName() const;
    bool isModified() const { return m_view->hasOpenEdit() || m_document->hasUnsavedChanges(); }

    // Takes in what the document decided on opening, saving or reverting: language and colours,
    // indentation; a selection past the end of a reverted text is brought back inside it.
    void documentDidChange();
    // Calls documentDidChange when the document was reverted behind the tab's back.
    void refreshIfReverted();

    // DocumentView: how the document sees this tab (the save trim reads and moves the selection).
    Range selectedRange() const override { return m_view->selection().range(); }
    void setSelectedRange(Range range) override { setSelection({range.location, range.end()}); }

    // Colours from the line highlighter; none for plain text.
    TabHighlighter* highlighter() { return m_highlighter.get(); }
    void setHighlighter(std::unique_ptr<TabHighlighter> highlighter) { m_highlighter = std::move(highlighter); }

    // What the status bar shows about the text.
    std::string languageName() const { return m_document->language().name; }
    std::string encodingName() const;
    // The name of the line break style: LF, CRLF, CR, or Mixed.
    std::string lineEndingName() const;

    int tabSize() const { return m_view->tabSize(); }
    bool softTabs() const { return m_view->softTabs(); }
    void setIndentation(int tabSize, bool softTabs) { m_view->setIndentation(tabSize, softTabs); }
    // What Enter inserts: the text's own line break style (LF when it has none).
    std::u16string lineBreak() override;
    void setLineBreak(std::u16string lineBreak) { m_lineBreak = std::move(lineBreak); }

    Selection selection() const { return m_view->selection(); }
    void setSelection(Selection selection) { m_view->setSelection(selection); }
    uint64_t caretLine() const { return m_view->caretLine(); }
    uint64_t caretColumn() const { return m_view->caretColumn(); }
    std::u16string selectedText() const { return m_view->selectedText(); }

    void typeText(std::u16string_view text) { m_view->typeText(text); }
    void endTyping() { m_view->endTyping(); }
    void insertText(std::u16string_view text) { m_view->insertText(text); }
    void replaceRange(Range range, std::u16string_view text, Selection after) { m_view->replaceRange(range, text, after); }
    // Undo and redo end a snippet session: the text they bring back is not the snippet's.
    void undo() {
        endSnippetSession();
        m_view->undo();
    }
    void redo() {
        endSnippetSession();
        m_view->redo();
    }

    // The snippet whose fields are being filled in, while there is one. The last snippet follows
    // every edit of the text as long as it walks fields or waits for shell output.
    VXSnippetSession* snippetSession() { return m_snippet && m_snippet->isActive() ? m_snippet.get() : nullptr; }
    void startSnippetSession(std::unique_ptr<VXSnippetSession> session) { m_snippet = std::move(session); }
    // Escape: no more fields to walk; output still to come goes in when it comes.
    void cancelSnippetSession() {
        if (m_snippet) m_snippet->cancel();
    }
    // Forgets the snippet altogether (undo, redo).
    void endSnippetSession() { m_snippet.reset(); }
    bool hasSnippetOutputPending() const { return m_snippet && m_snippet->hasPendingShellCommands(); }
    void takeSnippetOutput(std::chrono::microseconds wait) {
        if (m_snippet) m_snippet->takeShellOutput(wait);
    }
    // The scope context at an offset, as the typing aids see it.
    VXContext contextAt(uint64_t offset) { return scopeContextAt(offset); }

    void move(Motion motion, bool extend, int pageHeight);
    void placeCaret(uint64_t line, uint64_t column, bool extend) { m_view->placeCaret(line, column, extend); }

    // The first line and column shown; scrollToCaret keeps the caret inside a view of that size.
    uint64_t topLine = 0;
    uint64_t leftColumn = 0;
    void scrollToCaret(int rows, int columns);
    void scrollBy(int64_t lines, int rows);

private:
    // HighlightingHook: every edit of the storage, whoever makes it, reaches the colours.
    void recomputeCache(Range editedRange, int64_t changeInLength, unsigned editedMask, bool fully) override;
    std::vector<std::string> scopesAtLocation(uint64_t location) override;
    std::optional<TextAttributes> defaultZoneAttributes() override { return std::nullopt; }

    // TextViewHost
    VXContext scopeContextAt(uint64_t offset) override;
    VXAutopair::Pairs autopairs() override;
    std::u16string lineCommentMarker() override;
    std::pair<std::u16string, std::u16string> blockCommentMarkers() override;

    std::unique_ptr<VXSingleFileDocument> m_document;
    DocumentTextBuffer m_text;
    TerminalColumns m_columns;
    std::unique_ptr<VXTextView> m_view;
    std::unique_ptr<TabHighlighter> m_highlighter;
    std::unique_ptr<VXSnippetSession> m_snippet;
    const VXLanguage* m_language = nullptr;
    std::string m_pendingPath;
    const VXTextStorage* m_shownStorage = nullptr;  // to notice a revert's new storage
    std::u16string m_lineBreak;
};

}  // namespace vx::editor
