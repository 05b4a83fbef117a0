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

void VXTextAttributeInvalidationManager::noteEdit(Range oldRange, int64_t changeInLength) {
    std::lock_guard lock(m_state->mutex);
    const uint64_t oldEnd = oldRange.end();
    const auto newEnd = static_cast<uint64_t>(static_cast<int64_t>(oldEnd) + changeInLength);
    std::vector<Range> moved;
    moved.reserve(m_state->ranges.size());
    for (Range r : m_state->ranges) {
        if (r.end() < oldRange.location) {
            moved.push_back(r);  // wholly before the edit
        } else if (r.location > oldEnd) {
            r.location = static_cast<uint64_t>(static_cast<int64_t>(r.location) + changeInLength);
            moved.push_back(r);  // wholly after: moves with the text
        } else {
            // Touches the edit: covers what remains of it plus the new text.
            const uint64_t from = std::min(r.location, oldRange.location);
            const uint64_t to = r.end() > oldEnd ? static_cast<uint64_t>(static_cast<int64_t>(r.end()) + changeInLength)
                                                 : newEnd;
            moved.push_back({from, std::max(to, from) - from});
        }
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
