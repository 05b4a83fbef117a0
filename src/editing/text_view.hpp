// VXTextView: the engine's text view. A text buffer, its selections (the primary one and the
// multiple-selection controller's secondary ones), undo steps kept as transactions with the
// selections before and after, and every editing operation a user performs: typing with
// auto-pairing, deleting, line breaks, indentation, moving, finding occurrences, the recipes.
// Front ends draw it and feed it input; `vx edit` drives the same operations headless.
//
// A selection is an anchor and a caret; the caret is where typing happens and the end that moves
// when the selection is extended:
//
//     anchor=2 caret=5   "ab[cde|]fg"        anchor=5 caret=2   "ab[|cde]fg"
//
// Every operation runs once per selection, ascending (VXMulticursorController::performEdit), and
// is one undo step; a run of typing, of backspaces or of forward deletes is one step together.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "editing/autopair.hpp"
#include "editing/multicursor_controller.hpp"
#include "editing/recipe.hpp"
#include "editing/text_buffer.hpp"
#include "document/transaction.hpp"
#include "platform/undo_manager.hpp"
#include "syntax/context.hpp"

namespace vx {

struct Selection {
    uint64_t anchor = 0;
    uint64_t caret = 0;

    static Selection caretAt(uint64_t offset) { return {offset, offset}; }
    static Selection fromRange(Range range, bool reversed = false) {
        return reversed ? Selection{range.end(), range.location} : Selection{range.location, range.end()};
    }
    Range range() const { return anchor < caret ? Range{anchor, caret - anchor} : Range{caret, anchor - caret}; }
    bool isEmpty() const { return anchor == caret; }
    bool isReversed() const { return caret < anchor; }
    friend bool operator==(const Selection&, const Selection&) = default;
};

// LineStart goes to the end of the indentation first (the Home key); LineBeginning to column 0.
enum class Motion { Left, Right, Up, Down, WordLeft, WordRight, LineStart, LineBeginning, LineEnd, DocumentStart, DocumentEnd, PageUp, PageDown };

// Where characters fall in columns: terminal cells for the terminal, font widths elsewhere.
class ColumnWidths {
public:
    virtual ~ColumnWidths() = default;
    virtual uint64_t columnForOffset(std::u16string_view line, uint64_t offset, int tabSize) const = 0;
    // The offset of the character under `column`; with `nearest`, the closer edge of it.
    virtual uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int tabSize, bool nearest) const = 0;
};

// What the view asks of the document and the layers above it.
class TextViewHost {
public:
    virtual ~TextViewHost() = default;
    // The zones open at the character that follows `offset` (at a line's end: those open there).
    virtual VXContext scopeContextAt(uint64_t offset) = 0;
    virtual VXAutopair::Pairs autopairs() { return VXAutopair::defaultPairs(); }
    virtual std::u16string lineCommentMarker() { return {}; }
    virtual std::pair<std::u16string, std::u16string> blockCommentMarkers() { return {}; }
    // What a new line break is in this document.
    virtual std::u16string lineBreak() = 0;
    // The selections changed in a way the front end did not ask for (undo, a multi-range edit).
    virtual void selectionsDidChange() {}
};

class VXTextView final : private EditingSurface, public RecipeTarget {
public:
    VXTextView(TextBuffer& text, UndoManager& undo, TextViewHost& host, const ColumnWidths& widths);
    ~VXTextView() override;
    VXTextView(const VXTextView&) = delete;
    VXTextView& operator=(const VXTextView&) = delete;

    const TextBuffer& text() const { return m_text; }
    TextBuffer& buffer() override { return m_text; }
    void replaceText(Range range, std::u16string_view text) override;
    UndoManager& undoManager() { return m_undo; }
    VXMulticursorController& multicursor() { return m_multicursor; }
    const VXMulticursorController& multicursor() const { return m_multicursor; }

    // --- selections ---
    Selection selection() const { return m_selection; }
    // A selection the user made: drops the secondary selections (unless one range is focused).
    void setSelection(Selection selection);
    // Every selection, ascending by location, and which of them is the primary.
    std::vector<Selection> selections(size_t* primaryIndex = nullptr) const;
    // Replaces all selections; the first is the primary, others join through the overlap rules.
    void setSelections(const std::vector<Selection>& selections);
    uint64_t caretLine() const { return m_text.lineForOffset(m_selection.caret); }
    uint64_t caretColumn() const { return columnOf(m_selection.caret); }
    uint64_t columnOf(uint64_t offset) const;
    std::u16string selectedText() const { return m_text.substring(m_selection.range()); }

    // RecipeTarget (a recipe sees the one selection it runs on).
    Range targetSelection() const override { return m_selection.range(); }
    void setTargetSelection(Range range) override { m_selection = Selection::fromRange(range); }
    int tabSize() const override { return m_tabSize; }
    bool softTabs() const override { return m_softTabs; }
    void setIndentation(int tabSize, bool softTabs);
    std::u16string lineBreak() const override { return m_host.lineBreak(); }
    std::u16string lineCommentMarker() const override { return m_host.lineCommentMarker(); }
    std::pair<std::u16string, std::u16string> blockCommentMarkers() const override { return m_host.blockCommentMarkers(); }

    // --- editing, at every selection ---
    // One keystroke's text, through auto-pairing; a run of typing is one undo step.
    void typeText(std::u16string_view text);
    // Text inserted as it is (a paste), its line breaks made the document's own.
    void insertText(std::u16string_view text);
    // Different texts for the selections, in ascending order (a multi-selection paste).
    void insertTexts(const std::vector<std::u16string>& texts);
    void insertNewline();
    void indent();
    void unindent();
    void deleteBackward();
    void deleteForward();
    void deleteWordBackward();
    void deleteWordForward();
    // Replaces a range as one undo step and puts the (single) selection where asked.
    void replaceRange(Range range, std::u16string_view text, Selection after);
    // Runs a recipe once per selection as one undo step; whether any run changed the text.
    bool runRecipe(const std::function<std::unique_ptr<VXRecipe>(RecipeTarget&)>& make);
    bool runTransform(std::string_view eventName);
    void undo();
    void redo();
    // Closes the undo step being built (a run of typing); the next edit starts a new one.
    void endTyping();
    bool hasOpenEdit() const { return m_step.has_value(); }

    // --- moving, at every selection ---
    void move(Motion motion, bool extend, int pageHeight);
    void selectAll();
    // Puts the caret at a line and display column (a click); extends the selection when asked.
    void placeCaret(uint64_t line, uint64_t column, bool extend);

    // --- multiple selections ---
    // A caret on the line above (-1) or below (+1) the topmost or bottommost selection, at the
    // primary caret's column.
    bool addCaretOnAdjacentLine(int direction);
    // With an empty primary, selects the word at the caret; otherwise adds the next occurrence
    // of the selected text after the last selection (wrapping). With `skip`, the primary is
    // dropped as the next one is added.
    bool selectNextOccurrence(bool skip);
    // Every occurrence of the selected text (or the word at the caret); answers how many.
    size_t selectAllOccurrences();
    // Each line of each selection becomes a selection of its own.
    void splitSelectionIntoLines();
    // A block from one line and column to another: one selection per line (the caret's line is
    // the primary); lines too short to reach the block are left out.
    void setColumnSelection(uint64_t anchorLine, uint64_t anchorColumn, uint64_t caretLine, uint64_t caretColumn);
    // Extends the column selection (starting one from the primary when there is none).
    void extendColumnSelection(int lines, int columns);
    // Escape: one selection again, the primary's caret.
    void collapseSelections();
    // Focuses the primary range: edits apply to it alone until Escape.
    bool focusPrimary();

    // Copy: each selection's text, ascending (a whole line for an empty single selection).
    std::vector<std::u16string> copyTexts(bool* wholeLine = nullptr) const;
    void cut();

private:
    // An undo step being built: the changes so far (with their inverse) and the selections before.
    struct UndoStep {
        UndoStep(TransactionBuilder changes, MulticursorState before)
            : changes(std::move(changes)), before(std::move(before)) {}
        TransactionBuilder changes;
        MulticursorState before;
    };
    enum class Run { None, Typing, DeletingBackward, DeletingForward };

    // EditingSurface
    Range selectedRange() const override { return m_selection.range(); }
    void setSelectedRange(Range range, bool reversed) override { m_selection = Selection::fromRange(range, reversed); }
    bool selectionIsReversed() const override { return m_selection.isReversed(); }
    uint64_t textLength() const override { return m_text.length(); }
    std::u16string textInRange(Range range) const override { return m_text.substring(range); }
    void replaceSelection(std::u16string_view text) override;
    void multicursorDidChange() override { m_host.selectionsDidChange(); }

    // The one place text changes: records the change in the open undo step.
    void replace(Range range, std::u16string_view text, Selection after);
    void deleteRange(Range range);
    // Opens (or continues, for the same kind of run) an undo step around an operation.
    void beginEdit(Run run);
    void finishEdit();
    void applyStep(const Transaction& change, const MulticursorState& state, const Transaction& reverse,
                   const MulticursorState& reverseState);
    void forEachSelection(const std::function<void()>& edit, Run run = Run::None);
    void typeAtSelection(std::u16string_view typed, const VXAutopair::Pairs& pairs);
    void deleteBackwardAtSelection(const VXAutopair::Pairs& pairs);
    std::pair<uint64_t, uint64_t> selectedLines() const;
    multicursor::range toMulticursorRange() const {
        Range r = m_selection.range();
        return {static_cast<int64_t>(r.location), static_cast<int64_t>(r.length)};
    }
    Range wordAt(uint64_t offset) const;
    uint64_t targetOf(Motion motion, bool extend, int pageHeight, bool keepColumn);

    TextBuffer& m_text;
    UndoManager& m_undo;
    TextViewHost& m_host;
    const ColumnWidths& m_widths;
    VXMulticursorController m_multicursor{*this};
    Selection m_selection;
    std::optional<uint64_t> m_desiredColumn;  // kept across vertical moves
    std::optional<UndoStep> m_step;
    Run m_run = Run::None;
    int m_tabSize = 4;
    bool m_softTabs = true;
    // The corner a column selection grows from: line and display column.
    std::optional<std::pair<uint64_t, uint64_t>> m_columnAnchor, m_columnCaret;
};

}  // namespace vx
