#include "syntax/invalidation_manager.hpp"

#include <algorithm>

#include "platform/run_loop.hpp"

namespace vx {

struct VXTextAttributeInvalidationManager::State {
    mutable std::mutex mutex;
    RunLoop* loop = nullptr;
    Delegate delegate;
    Range visible{0, 0};
    std::vector<Range> ranges;  // merged, sorted
    bool scheduled = false;

    // Inserts one range into the sorted, merged list, joining the neighbours it touches.
    void insert(Range range) {
        if (range.length == 0) return;
        auto first = std::lower_bound(ranges.begin(), ranges.end(), range.location,
                                      [](const Range& r, uint64_t at) { return r.end() < at; });
        uint64_t from = range.location, to = range.end();
        auto last = first;
        while (last != ranges.end() && last->location <= to) {
            from = std::min(from, last->location);
            to = std::max(to, last->end());
            ++last;
        }
        first = ranges.erase(first, last);
        ranges.insert(first, Range{from, to - from});
    }
};

std::vector<Range> mergeRanges(std::vector<Range> ranges) {
    std::erase_if(ranges, [](const Range& r) { return r.length == 0; });
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) { return a.location < b.location; });
    std::vector<Range> out;
    for (const Range& r : ranges) {
        if (!out.empty() && r.location <= out.back().end()) {
            out.back().length = std::max(out.back().end(), r.end()) - out.back().location;
        } else {
            out.push_back(r);
        }
    }
    return out;
}

VXTextAttributeInvalidationManager::VXTextAttributeInvalidationManager(RunLoop* loop)
    : m_state(std::make_shared<State>()) {
    m_state->loop = loop ? loop : &RunLoop::main();
}

VXTextAttributeInvalidationManager::~VXTextAttributeInvalidationManager() {
    std::lock_guard lock(m_state->mutex);
    m_state->delegate = nullptr;  // a delivery already posted finds no one to tell
}

void VXTextAttributeInvalidationManager::setDelegate(Delegate delegate) {
    std::lock_guard lock(m_state->mutex);
    m_state->delegate = std::move(delegate);
}

void VXTextAttributeInvalidationManager::setVisibleRange(Range range) {
    std::lock_guard lock(m_state->mutex);
    m_state->visible = range;
}

void VXTextAttributeInvalidationManager::didParseRange(Range range, bool wasClean) {
    if (wasClean) return;  // nothing to colour again
    addRange(range);
    nudgeDelegate();
}

void VXTextAttributeInvalidationManager::addRange(Range range) {
    std::lock_guard lock(m_state->mutex);
    m_state->insert(range);
}

namespace {

// A waiting range after an edit: moved when wholly after it, stretched over it when touching.
Range rangeAfterEdit(Range r, Range oldRange, int64_t changeInLength) {
    const uint64_t oldEnd = oldRange.end();
    const auto newEnd = static_cast<uint64_t>(static_cast<int64_t>(oldEnd) + changeInLength);
    if (r.end() < oldRange.location) return r;
    if (r.location > oldEnd) return {static_cast<uint64_t>(static_cast<int64_t>(r.location) + changeInLength), r.length};
    const uint64_t from = std::min(r.location, oldRange.location);
    const uint64_t to = r.end() > oldEnd ? static_cast<uint64_t>(static_cast<int64_t>(r.end()) + changeInLength) : newEnd;
    return {from, std::max(to, from) - from};
}

}  // namespace

void VXTextAttributeInvalidationManager::noteEdit(Range oldRange, int64_t changeInLength) {
    noteEdits({{oldRange, changeInLength}});
}

void VXTextAttributeInvalidationManager::noteEdits(const std::vector<Edit>& edits) {
    std::lock_guard lock(m_state->mutex);
    if (m_state->ranges.empty() || edits.empty()) return;
    // Each edit in the text before all of them, and the change in length of the edits before it.
    std::vector<Range> original(edits.size());
    std::vector<int64_t> before(edits.size() + 1, 0);
    for (size_t i = 0; i < edits.size(); ++i) {
        original[i] = {static_cast<uint64_t>(static_cast<int64_t>(edits[i].oldRange.location) - before[i]),
                       edits[i].oldRange.length};
        before[i + 1] = before[i] + edits[i].changeInLength;
    }
    std::vector<Range> moved;
    moved.reserve(m_state->ranges.size());
    for (Range r : m_state->ranges) {
        // The edits wholly before the range move it; those that touch it are applied in turn.
        size_t i = static_cast<size_t>(std::lower_bound(original.begin(), original.end(), r.location,
                                                        [](const Range& e, uint64_t at) { return e.end() < at; }) -
                                       original.begin());
        r.location = static_cast<uint64_t>(static_cast<int64_t>(r.location) + before[i]);
        for (; i < edits.size() && edits[i].oldRange.location <= r.end(); ++i)
            r = rangeAfterEdit(r, edits[i].oldRange, edits[i].changeInLength);
        moved.push_back(r);
    }
    m_state->ranges = mergeRanges(std::move(moved));
}

void VXTextAttributeInvalidationManager::optimize() {
    std::lock_guard lock(m_state->mutex);
    m_state->ranges = mergeRanges(std::move(m_state->ranges));
}

namespace {

// Hands what was collected to the delegate, the ranges that meet the visible range first (the
// view colours what the user sees first).
void deliver(VXTextAttributeInvalidationManager::State& state);

}  // namespace

void VXTextAttributeInvalidationManager::nudgeDelegate() {
    std::lock_guard lock(m_state->mutex);
    if (m_state->scheduled || m_state->ranges.empty()) return;
    m_state->scheduled = true;
    std::weak_ptr<State> weak = m_state;
    m_state->loop->performBlock([weak] {
        if (auto state = weak.lock()) deliver(*state);
    });
}

void VXTextAttributeInvalidationManager::sendNow() { deliver(*m_state); }

namespace {

void deliver(VXTextAttributeInvalidationManager::State& state) {
    std::vector<Range> ranges;
    VXTextAttributeInvalidationManager::Delegate delegate;
    Range visible;
    {
        std::lock_guard lock(state.mutex);
        state.scheduled = false;
        if (!state.delegate) return;
        ranges.swap(state.ranges);
        delegate = state.delegate;
        visible = state.visible;
    }
    std::stable_partition(ranges.begin(), ranges.end(), [&](const Range& r) {
        return r.location < visible.end() && visible.location < r.end();
    });
    if (!ranges.empty()) delegate(ranges);
}

}  // namespace

std::vector<Range> VXTextAttributeInvalidationManager::pendingRanges() const {
    std::lock_guard lock(m_state->mutex);
    return m_state->ranges;
}

}  // namespace vx
