// One open document in the editor: the document, the selection, how far the view is scrolled, and
// the editing operations a user performs on it. Every change goes through the document's text
// storage and registers its inverse with the document's undo manager, so undo and redo restore
// the text and the selection, and the document counts its unsaved changes.
//
// A selection is an anchor and a caret; the caret is where typing happens and the end that moves
// when the selection is extended:
//
//     anchor=2 caret=5   "ab[cde|]fg"        anchor=5 caret=2   "ab[|cde]fg"
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/editor/document_text_buffer.hpp"
#include "app/editor/highlighting.hpp"
#include "app/editor/text_buffer.hpp"
#include "document/document_hooks.hpp"
#include "document/single_file_document.hpp"
#include "platform/undo_manager.hpp"

namespace vx::editor {

struct Selection {
    uint64_t anchor = 0;
    uint64_t caret = 0;

    static Selection caretAt(uint64_t offset) { return {offset, offset}; }
    Range range() const {
        return anchor < caret ? Range{anchor, caret - anchor} : Range{caret, anchor - caret};
    }
    bool isEmpty() const { return anchor == caret; }
    friend bool operator==(const Selection&, const Selection&) = default;
};

enum class Motion { Left, Right, Up, Down, WordLeft, WordRight, LineStart, LineEnd, DocumentStart, DocumentEnd, PageUp, PageDown };

class Tab final : public DocumentView, private HighlightingHook {
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

    // The document's file, or the path it is to be saved to; empty for an untitled text.
    std::string path() const { return m_document->fileURL().value_or(m_pendingPath); }
    // The file's name, or "untitled".
    std::string displayName() const;
    bool isModified() const { return m_typing || m_document->hasUnsavedChanges(); }

    // Takes in what the document decided on opening, saving or reverting: language and colours,
    // indentation; a selection past the end of a reverted text is brought back inside it.
    void documentDidChange();
    // Calls documentDidChange when the document was reverted behind the tab's back.
    void refreshIfReverted();

    // DocumentView: how the document sees this tab (the save trim reads and moves the selection).
    Range selectedRange() const override { return m_selection.range(); }
    void setSelectedRange(Range range) override { setSelection({range.location, range.end()}); }

    // Colours from the line highlighter; none for plain text.
    TabHighlighter* highlighter() { return m_highlighter.get(); }
    void setHighlighter(std::unique_ptr<TabHighlighter> highlighter) { m_highlighter = std::move(highlighter); }

    // What the status bar shows about the text.
    std::string languageName() const { return m_document->language().name; }
    std::string encodingName() const;
    // The name of the line break style: LF, CRLF, CR, or Mixed.
    std::string lineEndingName() const;

    int tabSize() const { return m_tabSize; }
    bool softTabs() const { return m_softTabs; }
    void setIndentation(int tabSize, bool softTabs);
    // What Enter inserts: the text's own line break style (LF when it has none).
    std::u16string lineBreak() const;
    void setLineBreak(std::u16string lineBreak) { m_lineBreak = std::move(lineBreak); }

    Selection selection() const { return m_selection; }
    void setSelection(Selection selection);
    uint64_t caretLine() const { return m_text.lineForOffset(m_selection.caret); }
    uint64_t caretColumn() const;
    std::u16string selectedText() const { return m_text.substring(m_selection.range()); }

    // Typing coalesces into one undo step until something else happens (endTyping).
    void typeText(std::u16string_view text);
    void endTyping();
    // Inserts as one step, with its line breaks made the text's own (a paste).
    void insertText(std::u16string_view text);
    void insertNewline();
    void indent();
    void unindent();
    void deleteBackward();
    void deleteForward();
    void deleteWordBackward();
    void deleteWordForward();
    // Replaces a range as one undo step and puts the selection where asked.
    void replaceRange(Range range, std::u16string_view text, Selection after);
    void undo();
    void redo();

    void move(Motion motion, bool extend, int pageHeight);
    void selectAll();
    // Puts the caret at a line and display column (a click); extends the selection when asked.
    void placeCaret(uint64_t line, uint64_t column, bool extend);

    // The first line and column shown; scrollToCaret keeps the caret inside a view of that size.
    uint64_t topLine = 0;
    uint64_t leftColumn = 0;
    void scrollToCaret(int rows, int columns);
    void scrollBy(int64_t lines, int rows);

private:
    // The one place text changes: replaces and registers the inverse.
    void replace(Range range, std::u16string_view text, Selection after);
    void deleteRange(Range range);
    // The lines a line-wise command works on: all lines the selection touches, except a last line
    // the selection only reaches at its start.
    std::pair<uint64_t, uint64_t> selectedLines() const;

    // HighlightingHook: every edit of the storage, whoever makes it, reaches the colours.
    void recomputeCache(Range editedRange, int64_t changeInLength, unsigned editedMask, bool fully) override;
    std::vector<std::string> scopesAtLocation(uint64_t location) override;
    std::optional<TextAttributes> defaultZoneAttributes() override { return std::nullopt; }

    std::unique_ptr<VXSingleFileDocument> m_document;
    DocumentTextBuffer m_text;
    std::unique_ptr<TabHighlighter> m_highlighter;
    std::string m_pendingPath;
    const VXTextStorage* m_shownStorage = nullptr;  // to notice a revert's new storage
    Selection m_selection;
    std::optional<uint64_t> m_desiredColumn;  // kept across vertical moves
    bool m_typing = false;
    int m_tabSize = 4;
    bool m_softTabs = true;
    std::u16string m_lineBreak;
};

}  // namespace vx::editor
