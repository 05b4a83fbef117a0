// VXMulticursorController: one per text view. It keeps the view's secondary selections and runs
// every edit and every caret movement once per selection, in ascending order, each time with the
// view's selection set to that range (a temporary selection), carrying the change in length to
// the ranges after it:
//
//     "abcdef", carets at 2 and 5, type x:   ab|cdef -> abx|cdef (d = 1)
//                                            caret 5 moves to 6: abxcde|f -> abxcdex|f
//
// With no secondary ranges the controller is decoherent and edits run once, as in a plain view.
// Focused: the user has focused one range; edits apply there only and the others shift.
//
// The controller talks to the view through EditingSurface, which every front end implements.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "editing/multicursor.hpp"
#include "platform/range.hpp"

namespace vx {

// What the controller needs of a text view.
class EditingSurface {
public:
    virtual ~EditingSurface() = default;
    // The view's selection; location kNotFound when it has none.
    virtual Range selectedRange() const = 0;
    // Sets the view's selection; `reversed` puts the caret at its start.
    virtual void setSelectedRange(Range range, bool reversed) = 0;
    virtual bool selectionIsReversed() const { return false; }
    virtual uint64_t textLength() const = 0;
    virtual std::u16string textInRange(Range range) const = 0;
    // Replaces the selection by `text` as an edit of the view, the caret after it (cut, paste).
    virtual void replaceSelection(std::u16string_view text) = 0;
    // The ranges changed (redraw, status bar).
    virtual void multicursorDidChange() {}
};

// What undo keeps of the selections: the primary and the secondary ranges, with the ends the
// carets are on.
struct MulticursorState {
    multicursor::range primary;
    bool primaryReversed = false;
    std::vector<multicursor::range> secondary;
    std::vector<multicursor::range> reversed;
    bool focused = false;
    friend bool operator==(const MulticursorState&, const MulticursorState&) = default;
};

class VXMulticursorController {
public:
    using Callback = std::function<void()>;

    explicit VXMulticursorController(EditingSurface& tvc) : m_tvc(tvc) {}

    EditingSurface& tvc() const { return m_tvc; }
    const multicursor::context& ctx() const { return m_context; }
    bool isDecoherent() const { return m_context.rawCount() == 0; }
    bool isFocused() const { return m_isFocused; }
    void decohere();

    multicursor::range primaryRange() const;
    // All selections ascending, the primary among them; `primaryIndex` says where.
    std::vector<multicursor::range> allRanges(size_t* primaryIndex = nullptr) const;
    bool isReversed(const multicursor::range& r) const { return m_reversed.count({r.location, r.length}) != 0; }

    // Runs the callback on every range; true when it ran for all of them, false when once.
    bool performEdit(const Callback& callback);
    bool performMovement(const Callback& callback);
    // The view's selection changed: outside the controller's own runs this drops the secondary
    // ranges (a click, a selection made by the user).
    void primarySelectionChanged();
    // Runs `block` with selection changes treated as the controller's own; `block` answers the
    // new primary selection.
    void withTemporarySelection(const std::function<multicursor::range()>& block);
    bool isRunningTemporarySelection() const { return m_temporarySelectionCounter > 0; }

    // Adding and removing ranges, always through the context's rules. False when refused.
    bool addRange(multicursor::range r, bool reversed = false);
    bool removeRangeAtLocation(int64_t location);
    // Replaces every selection at once (the first given is the primary); refused ranges drop out.
    void setRanges(const std::vector<std::pair<multicursor::range, bool>>& ranges);
    // Makes a secondary range the primary; the old primary stays as a secondary when asked.
    bool promoteToPrimary(multicursor::range r, bool keepOldPrimary);
    // Focuses the range under the caret: edits then apply to it alone, the others shift.
    bool focusOnRange(multicursor::range r);
    void unfocus();

    // Copy, cut and paste per range: one text per selection, ascending.
    std::vector<std::u16string> copyStrings() const;
    // The texts joined with line breaks, as one clipboard text.
    std::u16string copyTexts(std::u16string_view lineBreak) const;
    void performCopy(std::vector<std::u16string>& out) const { out = copyStrings(); }
    void performCut();
    // One text per selection when the count matches; otherwise the whole text at each.
    void performPaste(const std::vector<std::u16string>& texts, const std::u16string& whole);

    MulticursorState multicursorState() const;
    void setMulticursorState(const MulticursorState& state, bool shouldClean);

private:
    static Range toRange(const multicursor::range& r) {
        return {static_cast<uint64_t>(r.location), static_cast<uint64_t>(r.length)};
    }
    static multicursor::range fromRange(Range r);
    multicursor::range currentSelection() const;
    void setTemporarySelection(const multicursor::range& r);
    void dropInvalid();
    void pruneReversed();
    template <class Step>
    bool runForAll(Step&& step);

    EditingSurface& m_tvc;
    multicursor::context m_context;
    std::set<std::pair<int64_t, int64_t>> m_reversed;  // ranges whose caret is at their start
    bool m_isFocused = false;
    int m_performEditCount = 0;
    int m_temporarySelectionCounter = 0;
    bool m_primaryReversedAfter = false;  // which end of the new primary the caret is on
    multicursor::context m_temporaryContext;
};

}  // namespace vx
