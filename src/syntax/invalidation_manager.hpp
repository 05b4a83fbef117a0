// VXTextAttributeInvalidationManager: collects the ranges the highlighter re-parsed and hands them
// to the view later, on the main run loop, merged.
//
//   highlighter thread(s)                          main run loop
//   didParseRange(a) didParseRange(b) ... ──nudge──▶ sendNow: delegate(merged ranges, visible first)
//
// Parsing reports one range per line, often thousands in a row; the view only wants to know which
// characters to colour again, once per turn of its loop. Reports are merged as they come
// (adjacent or overlapping ranges become one) and the first report after a delivery schedules the
// next delivery. Ranges waiting for delivery follow later edits (shifted, or stretched when the edit
// falls inside them), so what the view receives is always in the current text's offsets.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/range.hpp"

namespace vx {

class RunLoop;

class VXTextAttributeInvalidationManager {
public:
    // Receives merged ranges in the current text's offsets, the visible ones first.
    using Delegate = std::function<void(const std::vector<Range>& ranges)>;

    // Deliveries are posted to `loop` (the main run loop unless given).
    explicit VXTextAttributeInvalidationManager(RunLoop* loop = nullptr);
    ~VXTextAttributeInvalidationManager();
    VXTextAttributeInvalidationManager(const VXTextAttributeInvalidationManager&) = delete;
    VXTextAttributeInvalidationManager& operator=(const VXTextAttributeInvalidationManager&) = delete;

    // Set from the main thread; nothing is delivered while there is no delegate (ranges keep).
    void setDelegate(Delegate delegate);
    // The visible character range: delivered first.
    void setVisibleRange(Range range);

    // From any thread: a range was parsed (clean: its colours did not change).
    void didParseRange(Range range, bool wasClean);
    void addRange(Range range);
    // From the editing thread: the text changed at oldRange by changeInLength.
    void noteEdit(Range oldRange, int64_t changeInLength);
    // Edits made one after another, each at or after the end of the one before (a keystroke at
    // many carets), each given in the text as it was when it was made: the same as noteEdit for
    // each in turn, in one pass.
    struct Edit {
        Range oldRange;
        int64_t changeInLength;
    };
    void noteEdits(const std::vector<Edit>& edits);

    // Merges the collected ranges (kept merged anyway; exposed for callers that batch).
    void optimize();
    // Schedules a delivery on the run loop unless one is scheduled.
    void nudgeDelegate();
    // Delivers what was collected, now, on the calling thread.
    void sendNow();

    // What is waiting for delivery (for tests and diagnostics).
    std::vector<Range> pendingRanges() const;

    struct State;

private:
    std::shared_ptr<State> m_state;
};

// Merges a list of ranges: sorted by location, overlapping or touching ranges joined, empty ones dropped.
std::vector<Range> mergeRanges(std::vector<Range> ranges);

}  // namespace vx
