#include "editing/multicursor_controller.hpp"

#include <algorithm>

namespace vx {

namespace {

// Stands for "no primary" while one focused range is edited: maps to invalid for any text
// shorter than 98,765,475 units.
constexpr multicursor::range kPlaceholderPrimary{98765432, 43};

// Restores a counter however the block it guards ends.
struct CounterGuard {
    int& counter;
    explicit CounterGuard(int& c) : counter(c) { ++counter; }
    ~CounterGuard() { --counter; }
};

}  // namespace

multicursor::range VXMulticursorController::fromRange(Range r) {
    if (r.location == kNotFound) return multicursor::range::invalid();
    return {static_cast<int64_t>(r.location), static_cast<int64_t>(r.length)};
}

multicursor::range VXMulticursorController::primaryRange() const {
    return fromRange(m_tvc.selectedRange());
}

multicursor::range VXMulticursorController::currentSelection() const {
    return primaryRange();
}

void VXMulticursorController::setTemporarySelection(const multicursor::range& r) {
    m_tvc.setSelectedRange(toRange(r), isReversed(r));
}

void VXMulticursorController::decohere() {
    if (isDecoherent()) return;
    m_context.removeAll();
    m_reversed.clear();
    m_isFocused = false;
    m_tvc.multicursorDidChange();
}

std::vector<multicursor::range> VXMulticursorController::allRanges(size_t* primaryIndex) const {
    std::vector<multicursor::range> out = m_context.ranges();
    multicursor::range primary = primaryRange();
    auto at = std::lower_bound(out.begin(), out.end(), primary,
                               [](const multicursor::range& a, const multicursor::range& b) { return a.location < b.location; });
    if (primaryIndex) *primaryIndex = static_cast<size_t>(at - out.begin());
    out.insert(at, primary);
    return out;
}

void VXMulticursorController::dropInvalid() {
    // Invalid ranges sort first (location -1), so one look at the front finds them all.
    while (m_context.rawCount() > 0 && !m_context.rangeAtRawIndex(0).valid()) m_context.removeRange(multicursor::range::invalid());
}

void VXMulticursorController::pruneReversed() {
    std::set<std::pair<int64_t, int64_t>> kept;
    for (const auto& r : m_context.ranges())
        if (m_reversed.count({r.location, r.length})) kept.insert({r.location, r.length});
    m_reversed = std::move(kept);
}

void VXMulticursorController::withTemporarySelection(const std::function<multicursor::range()>& block) {
    if (m_temporarySelectionCounter == 0) m_temporaryContext = m_context;
    m_primaryReversedAfter = m_tvc.selectionIsReversed();
    multicursor::range primary;
    {
        CounterGuard guard(m_temporarySelectionCounter);
        primary = block();
    }
    if (primary.valid()) m_tvc.setSelectedRange(toRange(primary), m_primaryReversedAfter);
}

template <class Step>
bool VXMulticursorController::runForAll(Step&& step) {
    CounterGuard guard(m_performEditCount);
    std::set<std::pair<int64_t, int64_t>> reversed;
    withTemporarySelection([&] {
        multicursor::range primary = primaryRange();
        if (m_tvc.selectionIsReversed()) m_reversed.insert({primary.location, primary.length});
        multicursor::range newPrimary = m_context.mapRange(primary, [&](const multicursor::range& r) {
            multicursor::range mapped = step(r);
            if (mapped.valid() && m_tvc.selectionIsReversed()) reversed.insert({mapped.location, mapped.length});
            if (r == primary) m_primaryReversedAfter = mapped.valid() && m_tvc.selectionIsReversed();
            return mapped;
        });
        m_reversed = std::move(reversed);
        return newPrimary;
    });
    dropInvalid();
    pruneReversed();
    m_tvc.multicursorDidChange();
    return true;
}

bool VXMulticursorController::performEdit(const Callback& callback) {
    if (isDecoherent() || m_performEditCount >= 1) {
        callback();
        return false;
    }
    if (m_isFocused) {
        CounterGuard guard(m_performEditCount);
        Range selection = m_tvc.selectedRange();
        auto before = static_cast<int64_t>(m_tvc.textLength());
        {
            CounterGuard temporary(m_temporarySelectionCounter);
            callback();
        }
        auto after = static_cast<int64_t>(m_tvc.textLength());
        auto threshold = static_cast<int64_t>(selection.end());
        m_context.mapRange(kPlaceholderPrimary, [&](const multicursor::range& r) {
            if (!r.valid() || r.max() > before) return multicursor::range::invalid();
            if (r.location < threshold) return r;
            multicursor::range moved{r.location + (after - before), r.length};
            return moved.max() > after ? multicursor::range::invalid() : moved;
        });
        dropInvalid();
        pruneReversed();
        m_tvc.multicursorDidChange();
        return true;
    }
    int64_t d = 0;
    return runForAll([&](multicursor::range r) {
        r.location += d;  // earlier edits have moved this range
        auto length = static_cast<int64_t>(m_tvc.textLength());
        if (!r.valid() || r.max() > length) return multicursor::range::invalid();
        setTemporarySelection(r);
        callback();
        d += static_cast<int64_t>(m_tvc.textLength()) - length;
        multicursor::range result = currentSelection();
        return result.max() > static_cast<int64_t>(m_tvc.textLength()) ? multicursor::range::invalid() : result;
    });
}

bool VXMulticursorController::performMovement(const Callback& callback) {
    if (isDecoherent() || m_performEditCount >= 1) {
        callback();
        return false;
    }
    return runForAll([&](multicursor::range r) {
        if (!r.valid() || r.max() > static_cast<int64_t>(m_tvc.textLength())) return multicursor::range::invalid();
        setTemporarySelection(r);
        callback();
        return currentSelection();
    });
}

void VXMulticursorController::primarySelectionChanged() {
    if (m_temporarySelectionCounter <= 0 && !m_isFocused) decohere();
}

bool VXMulticursorController::addRange(multicursor::range r, bool reversed) {
    if (!r.valid() || r.max() > static_cast<int64_t>(m_tvc.textLength())) return false;
    if (!m_context.addRange(r, primaryRange())) return false;
    if (reversed && !r.isEmpty()) m_reversed.insert({r.location, r.length});
    m_tvc.multicursorDidChange();
    return true;
}

bool VXMulticursorController::removeRangeAtLocation(int64_t location) {
    multicursor::range r = m_context.rangeForLocation(location);
    if (!r.valid() || !m_context.removeRange(r)) return false;
    m_reversed.erase({r.location, r.length});
    if (isDecoherent()) m_isFocused = false;
    m_tvc.multicursorDidChange();
    return true;
}

void VXMulticursorController::setRanges(const std::vector<std::pair<multicursor::range, bool>>& ranges) {
    m_context.removeAll();
    m_reversed.clear();
    m_isFocused = false;
    if (ranges.empty()) return;
    {
        CounterGuard guard(m_temporarySelectionCounter);
        m_tvc.setSelectedRange(toRange(ranges.front().first), ranges.front().second);
    }
    for (size_t i = 1; i < ranges.size(); ++i) addRange(ranges[i].first, ranges[i].second);
    m_tvc.multicursorDidChange();
}

bool VXMulticursorController::promoteToPrimary(multicursor::range r, bool keepOldPrimary) {
    if (m_context.rawIndexForRange(r) < 0) return false;
    multicursor::range old = primaryRange();
    bool oldReversed = m_tvc.selectionIsReversed();
    bool reversed = isReversed(r);
    m_context.removeRange(r);
    m_reversed.erase({r.location, r.length});
    {
        CounterGuard guard(m_temporarySelectionCounter);
        m_tvc.setSelectedRange(toRange(r), reversed);
    }
    if (keepOldPrimary && old.valid()) addRange(old, oldReversed);
    m_tvc.multicursorDidChange();
    return true;
}

bool VXMulticursorController::focusOnRange(multicursor::range r) {
    if (isDecoherent()) return false;
    if (!(r == primaryRange()) && !promoteToPrimary(r, true)) return false;
    m_isFocused = true;
    m_tvc.multicursorDidChange();
    return true;
}

void VXMulticursorController::unfocus() {
    if (!m_isFocused) return;
    m_isFocused = false;
    m_tvc.multicursorDidChange();
}

std::vector<std::u16string> VXMulticursorController::copyStrings() const {
    std::vector<std::u16string> out;
    for (const auto& r : allRanges()) out.push_back(m_tvc.textInRange(toRange(r)));
    return out;
}

std::u16string VXMulticursorController::copyTexts(std::u16string_view lineBreak) const {
    std::u16string out;
    auto strings = copyStrings();
    for (size_t i = 0; i < strings.size(); ++i) {
        if (i) out += lineBreak;
        out += strings[i];
    }
    return out;
}

void VXMulticursorController::performCut() {
    performEdit([this] { m_tvc.replaceSelection(u""); });
}

void VXMulticursorController::performPaste(const std::vector<std::u16string>& texts, const std::u16string& whole) {
    size_t count = isDecoherent() ? 1 : m_context.rawCount() + 1;
    if (texts.size() != count || count == 1) {
        performEdit([&] { m_tvc.replaceSelection(whole); });
        return;
    }
    size_t next = 0;
    performEdit([&] { m_tvc.replaceSelection(texts[std::min(next++, texts.size() - 1)]); });
}

MulticursorState VXMulticursorController::multicursorState() const {
    MulticursorState state;
    state.primary = primaryRange();
    state.primaryReversed = m_tvc.selectionIsReversed();
    state.secondary = m_context.ranges();
    for (const auto& [location, length] : m_reversed) state.reversed.push_back({location, length});
    state.focused = m_isFocused;
    return state;
}

void VXMulticursorController::setMulticursorState(const MulticursorState& state, bool shouldClean) {
    auto length = static_cast<int64_t>(m_tvc.textLength());
    {
        CounterGuard guard(m_temporarySelectionCounter);
        if (state.primary.valid() && state.primary.max() <= length)
            m_tvc.setSelectedRange(toRange(state.primary), state.primaryReversed);
    }
    m_context.assign(state.secondary);
    m_reversed.clear();
    for (const auto& r : state.reversed) m_reversed.insert({r.location, r.length});
    m_isFocused = state.focused;
    if (shouldClean) {
        m_context.mapRange(primaryRange(), [length](const multicursor::range& r) {
            return r.valid() && r.max() <= length ? r : multicursor::range::invalid();
        });
        dropInvalid();
        pruneReversed();
    }
    if (isDecoherent()) m_isFocused = false;
    m_tvc.multicursorDidChange();
}

}  // namespace vx
