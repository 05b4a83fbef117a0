#include "editing/text_view.hpp"

#include <algorithm>

#include "editing/line_transform_recipe.hpp"
#include "editing/navigation.hpp"

namespace vx {

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

multicursor::range toMulticursor(const Selection& s) {
    Range r = s.range();
    return {static_cast<int64_t>(r.location), static_cast<int64_t>(r.length)};
}

}  // namespace

VXTextView::VXTextView(TextBuffer& text, UndoManager& undo, TextViewHost& host, const ColumnWidths& widths)
    : m_text(text), m_undo(undo), m_host(host), m_widths(widths) {}

VXTextView::~VXTextView() {
    endTyping();
    m_undo.removeAllActionsWithTarget(this);
}

void VXTextView::setIndentation(int tabSize, bool softTabs) {
    m_tabSize = std::clamp(tabSize, 1, 18);
    m_softTabs = softTabs;
}

uint64_t VXTextView::columnOf(uint64_t offset) const {
    uint64_t line = m_text.lineForOffset(offset);
    Range content = m_text.lineContentRange(line);
    uint64_t inLine = std::min(offset, content.end()) - content.location;
    return m_widths.columnForOffset(m_text.substring(content), inLine, m_tabSize);
}

// --- selections ---

void VXTextView::setSelection(Selection selection) {
    uint64_t length = m_text.length();
    m_selection = {std::min(selection.anchor, length), std::min(selection.caret, length)};
    m_columnAnchor.reset();
    m_multicursor.primarySelectionChanged();
}

std::vector<Selection> VXTextView::selections(size_t* primaryIndex) const {
    std::vector<Selection> out;
    size_t primary = 0;
    for (const auto& r : m_multicursor.allRanges(&primary)) {
        Range range{static_cast<uint64_t>(r.location), static_cast<uint64_t>(r.length)};
        out.push_back(Selection::fromRange(range, m_multicursor.isReversed(r)));
    }
    if (primary < out.size()) out[primary] = m_selection;
    if (primaryIndex) *primaryIndex = primary;
    return out;
}

void VXTextView::setSelections(const std::vector<Selection>& selections) {
    std::vector<std::pair<multicursor::range, bool>> ranges;
    for (const auto& s : selections) ranges.emplace_back(toMulticursor(s), s.isReversed());
    if (ranges.empty()) return;
    m_multicursor.setRanges(ranges);
    m_selection = selections.front();
    m_desiredColumn.reset();
}

// --- undo steps ---

void VXTextView::beginEdit(Run run) {
    if (m_step && (run == Run::None || run != m_run)) endTyping();
    if (!m_step) {
        m_step.emplace(TransactionBuilder(m_text.length(), true), m_multicursor.multicursorState());
    }
    m_run = run;
}

void VXTextView::finishEdit() {
    if (m_run == Run::None) endTyping();
}

void VXTextView::endTyping() {
    if (!m_step) return;
    UndoStep step = std::move(*m_step);
    m_step.reset();
    m_run = Run::None;
    if (step.changes.forward().isIdentity()) return;
    MulticursorState after = m_multicursor.multicursorState();
    m_undo.registerUndo(this, [this, forward = step.changes.forward(), inverse = step.changes.inverse(),
                               before = std::move(step.before), after] { applyStep(inverse, before, forward, after); });
}

void VXTextView::applyStep(const Transaction& change, const MulticursorState& state, const Transaction& reverse,
                           const MulticursorState& reverseState) {
    // A step made for another text (the document was reloaded under it) is dropped.
    if (change.lengthBefore() != m_text.length()) return;
    {
        TextBatch batch(m_text);
        change.applyInOrder([this](Range range, std::u16string_view text) { m_text.replace(range, text); });
    }
    m_multicursor.setMulticursorState(state, true);
    m_desiredColumn.reset();
    m_host.selectionsDidChange();
    m_undo.registerUndo(this, [this, change, state, reverse, reverseState] { applyStep(reverse, reverseState, change, state); });
}

void VXTextView::undo() {
    endTyping();
    if (m_undo.canUndo()) m_undo.undo();
}

void VXTextView::redo() {
    endTyping();
    if (m_undo.canRedo()) m_undo.redo();
}

void VXTextView::replace(Range range, std::u16string_view text, Selection after) {
    if (!m_step) beginEdit(Run::None);
    m_step->changes.replace(range, text, m_text.substring(range));
    m_text.replace(range, text);
    m_selection = after;
    m_desiredColumn.reset();
}

void VXTextView::replaceText(Range range, std::u16string_view text) {
    Selection kept = m_selection;
    replace(range, text, kept);
    uint64_t length = m_text.length();
    m_selection = {std::min(kept.anchor, length), std::min(kept.caret, length)};
}

void VXTextView::replaceSelection(std::u16string_view text) {
    Range range = m_selection.range();
    replace(range, text, Selection::caretAt(range.location + text.size()));
}

void VXTextView::replaceRange(Range range, std::u16string_view text, Selection after) {
    beginEdit(Run::None);
    replace(range, text, after);
    finishEdit();
}

void VXTextView::forEachSelection(const std::function<void()>& edit, Run run) {
    beginEdit(run);
    m_columnAnchor.reset();
    {
        TextBatch batch(m_text);
        m_multicursor.performEdit(edit);
    }
    finishEdit();
}

// --- typing and deleting ---

namespace {

// Whether auto-pairing can do anything but insert `typed`: it belongs to a pair, or is one of
// the characters the pairing rules treat on their own.
bool mayPair(std::u16string_view typed, const VXAutopair::Pairs& pairs) {
    if (typed == u"?" || typed == u"%") return true;
    return std::any_of(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.first == typed || pair.second == typed; });
}

}  // namespace

void VXTextView::typeAtSelection(std::u16string_view typed, const VXAutopair::Pairs& pairs) {
    Range range = m_selection.range();
    if (!mayPair(typed, pairs)) {
        replace(range, typed, Selection::caretAt(range.location + typed.size()));
        return;
    }
    Range line = m_text.lineContentRange(m_text.lineForOffset(range.location));
    Range endLine = m_text.lineContentRange(m_text.lineForOffset(range.end()));
    VXAutopair autopair;
    autopair.pairs = pairs;
    autopair.insertString = std::u16string(typed);
    autopair.selection = range;
    autopair.selectionString = m_text.substring(range);
    autopair.leftString = m_text.substring({line.location, range.location - line.location});
    uint64_t rightStart = std::min(range.end(), endLine.end());
    autopair.rightString = m_text.substring({rightStart, endLine.end() - rightStart});
    autopair.startContext = m_host.scopeContextAt(range.location);
    autopair.endContext = range.length ? m_host.scopeContextAt(range.end()) : autopair.startContext;
    autopair.user_action = range.length ? VXAutopair::TypingOverSelection : VXAutopair::TypingEmpty;
    autopair.setUp();
    int action = autopair.action();
    VXAutopair::Insertion insertion = autopair.shouldInsertText(action);
    Selection after = Selection::fromRange(insertion.newSelection);
    if (action == VXAutopair::StepOver) {
        m_selection = Selection::caretAt(std::min(insertion.newSelection.location, m_text.length()));
        return;
    }
    replace(insertion.replaced, insertion.text, after);
}

void VXTextView::typeText(std::u16string_view text) {
    VXAutopair::Pairs pairs = m_host.autopairs();
    forEachSelection([&] { typeAtSelection(text, pairs); }, Run::Typing);
}

void VXTextView::insertText(std::u16string_view text) {
    std::u16string converted = withLineBreaks(text, lineBreak());
    forEachSelection([&] { replaceSelection(converted); });
}

void VXTextView::insertTexts(const std::vector<std::u16string>& texts) {
    if (texts.empty()) return;
    std::u16string lineBreak = this->lineBreak();
    size_t next = 0;
    forEachSelection([&] { replaceSelection(withLineBreaks(texts[std::min(next++, texts.size() - 1)], lineBreak)); });
}

void VXTextView::insertNewline() {
    forEachSelection([&] {
        Range range = m_selection.range();
        uint64_t line = m_text.lineForOffset(range.location);
        Range content = m_text.lineContentRange(line);
        std::u16string lineText = m_text.substring({content.location, range.location - content.location});
        std::u16string inserted = lineBreak() + lineText.substr(0, indentationLength(lineText));
        replace(range, inserted, Selection::caretAt(range.location + inserted.size()));
    });
}

std::pair<uint64_t, uint64_t> VXTextView::selectedLines() const {
    Range range = m_selection.range();
    uint64_t first = m_text.lineForOffset(range.location);
    uint64_t last = m_text.lineForOffset(range.end());
    if (last > first && m_text.lineStart(last) == range.end()) --last;
    return {first, last};
}

void VXTextView::indent() {
    forEachSelection([&] {
        std::u16string unit = m_softTabs ? std::u16string(static_cast<size_t>(m_tabSize), u' ') : u"\t";
        auto [first, last] = selectedLines();
        Range range = m_selection.range();
        if (first == last && (range.length == 0 || range.length < m_text.lineContentRange(first).length)) {
            if (m_softTabs) {
                // To the next tab stop, as the columns fall.
                uint64_t column = columnOf(range.location);
                unit.resize(static_cast<size_t>(m_tabSize) - column % static_cast<uint64_t>(m_tabSize));
            }
            replace(range, unit, Selection::caretAt(range.location + unit.size()));
            return;
        }
        for (uint64_t line = first; line <= last; ++line) {
            if (m_text.lineContentRange(line).length == 0) continue;  // blank lines stay blank
            replace({m_text.lineStart(line), 0}, unit, m_selection);
        }
        m_selection = {m_text.lineStart(first), m_text.lineContentRange(last).end()};
    });
}

void VXTextView::unindent() {
    forEachSelection([&] {
        auto [first, last] = selectedLines();
        bool wasEmpty = m_selection.isEmpty();
        uint64_t caret = m_selection.caret;
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
    });
}

void VXTextView::deleteRange(Range range) {
    if (range.length == 0) {
        m_selection = Selection::caretAt(range.location);
        return;
    }
    replace(range, u"", Selection::caretAt(range.location));
}

void VXTextView::deleteBackwardAtSelection(const VXAutopair::Pairs& pairs) {
    if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
    uint64_t caret = m_selection.caret;
    Range line = m_text.lineContentRange(m_text.lineForOffset(caret));
    uint64_t start = line.location;
    // An empty pair goes whole.
    bool inPair = caret > start && caret < line.end() && std::any_of(pairs.begin(), pairs.end(), [&](const auto& pair) {
        return !pair.first.empty() && !pair.second.empty() && m_text.characterAt(caret - 1) == pair.first.back() &&
               m_text.characterAt(caret) == pair.second.front();
    });
    if (inPair) {
        VXAutopair autopair;
        autopair.pairs = pairs;
        autopair.selection = {caret, 0};
        autopair.leftString = m_text.substring({start, caret - start});
        autopair.rightString = m_text.substring({caret, line.end() - caret});
        autopair.startContext = autopair.endContext = m_host.scopeContextAt(caret);
        autopair.user_action = VXAutopair::DeletingBackward;
        autopair.setUp();
        Range pair = autopair.shouldDelete(autopair.action());
        if (pair.location != kNotFound) return deleteRange(pair);
    }
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

void VXTextView::deleteBackward() {
    VXAutopair::Pairs pairs = m_host.autopairs();
    forEachSelection([&] { deleteBackwardAtSelection(pairs); }, Run::DeletingBackward);
}

void VXTextView::deleteForward() {
    forEachSelection([&] {
        if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
        uint64_t next = nextCaretPosition(m_text, m_selection.caret);
        deleteRange({m_selection.caret, next - m_selection.caret});
    }, Run::DeletingForward);
}

void VXTextView::deleteWordBackward() {
    forEachSelection([&] {
        if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
        uint64_t start = wordLeft(m_text, m_selection.caret);
        deleteRange({start, m_selection.caret - start});
    });
}

void VXTextView::deleteWordForward() {
    forEachSelection([&] {
        if (!m_selection.isEmpty()) return deleteRange(m_selection.range());
        uint64_t end = wordRight(m_text, m_selection.caret);
        deleteRange({m_selection.caret, end - m_selection.caret});
    });
}

bool VXTextView::runRecipe(const std::function<std::unique_ptr<VXRecipe>(RecipeTarget&)>& make) {
    bool changed = false;
    forEachSelection([&] {
        std::unique_ptr<VXRecipe> recipe = make(*this);
        if (recipe && recipe->main()) changed = true;
    });
    return changed;
}

bool VXTextView::runTransform(std::string_view eventName) {
    int32_t type = VXLineTransformRecipe::typeForEvent(eventName);
    if (type == 0) return false;
    return runRecipe([type](RecipeTarget& target) {
        auto recipe = std::make_unique<VXLineTransformRecipe>(target);
        recipe->type = type;
        return recipe;
    });
}

}  // namespace vx
