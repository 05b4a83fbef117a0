#include "syntax/incremental_highlighter.hpp"

#include <algorithm>
#include <set>

#include "document/single_file_document.hpp"
#include "syntax/document_highlighter.hpp"
#include "syntax/language_catalog.hpp"

namespace vx {
namespace {

// An edit that spans more lines than this is highlighted like a newly opened document: in the
// background, visible lines first, rather than with the document waiting for every line.
constexpr uint64_t kLargestWaitedBatch = 512;
// Lines past an edit (and past the visible lines below it) that the walk re-parses before the
// edit returns; a longer walk (a comment opened at the top of a long file) goes on in the
// background, so that no keystroke waits for it.
constexpr uint64_t kLinesWalkedWithTheEdit = 64;

const VXSyntaxRuleset* catalogRuleset(const DocumentLanguage& language) {
    const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
    const VXLanguage* found = catalog.languageNamed(language.name);
    if (!found) found = catalog.languageNamed(language.identifier);
    return found ? catalog.rulesetForLanguage(*found) : nullptr;
}

}  // namespace

VXIncrementalHighlighter::VXIncrementalHighlighter(VXSingleFileDocument& document, RulesetResolver rulesetFor,
                                                   RunLoop* deliveryLoop)
    : m_document(&document), m_resolver(rulesetFor ? std::move(rulesetFor) : RulesetResolver(catalogRuleset)),
      m_invalidator(deliveryLoop) {
    document.setHighlighter(this);
    std::lock_guard lock(m_mutex);
    m_ruleset = m_resolver(document.language());
    rebuildAll();
}

VXIncrementalHighlighter::VXIncrementalHighlighter(VXTextStorage& storage, const VXSyntaxRuleset& ruleset,
                                                   RunLoop* deliveryLoop)
    : m_storage(&storage), m_ruleset(&ruleset), m_invalidator(deliveryLoop) {
    std::lock_guard lock(m_mutex);
    rebuildAll();
}

VXIncrementalHighlighter::~VXIncrementalHighlighter() {
    stopBackground();
    if (m_document) m_document->setHighlighter(nullptr);
    for (auto& marker : m_markers) marker->releaseFuture();
}

VXTextStorage& VXIncrementalHighlighter::storage() const { return m_document ? m_document->contents() : *m_storage; }

void VXIncrementalHighlighter::stopBackground() {
    m_stopping = true;
    m_background.sync([] {});
}

void VXIncrementalHighlighter::willReplaceContents() {
    stopBackground();
    std::lock_guard lock(m_mutex);
    for (auto& marker : m_markers) marker->releaseFuture();
    m_markers.clear();
    m_breaks.clear();
    m_pending.reset();
    m_front = 0;
    m_stopping = false;
}

// --- edits ----------------------------------------------------------------------------------------

void VXIncrementalHighlighter::recomputeCache(Range editedRange, int64_t changeInLength, unsigned editedMask,
                                              bool fully) {
    if (!fully && !(editedMask & kTextStorageEditedCharacters)) return;  // colours alone change no zone
    std::lock_guard lock(m_mutex);
    if (fully || m_markers.empty()) {
        m_pending.reset();
        if (m_document) m_ruleset = m_resolver(m_document->language());
        rebuildAll();
    } else {
        // Edits gather while a batch is open, as one transaction: its changes come out in
        // ascending order, each with text kept between it and the next, so that the lines of each
        // can be read from the text after the batch. Only positions matter here: the new
        // characters are stood in for.
        const Range oldRange{editedRange.location,
                             static_cast<uint64_t>(static_cast<int64_t>(editedRange.length) - changeInLength)};
        if (!m_pending)
            m_pending.emplace(static_cast<uint64_t>(static_cast<int64_t>(storage().length()) - changeInLength));
        m_pending->replace(oldRange, std::u16string(editedRange.length, u' '));
        if (m_batchDepth == 0) applyPendingLocked();
    }
    m_settledChanged.notify_all();
}

void VXIncrementalHighlighter::beginEditBatch() {
    std::lock_guard lock(m_mutex);
    ++m_batchDepth;
}

void VXIncrementalHighlighter::endEditBatch() {
    std::lock_guard lock(m_mutex);
    if (m_batchDepth > 0 && --m_batchDepth == 0 && m_pending) {
        applyPendingLocked();
        m_settledChanged.notify_all();
    }
}

void VXIncrementalHighlighter::rebuildAll() {
    for (auto& marker : m_markers) marker->releaseFuture();
    m_markers.clear();
    m_breaks.clear();
    m_front = 0;
    m_shift = 0;
    m_shiftFrom = 0;
    if (!m_ruleset) return;
    const uint64_t count = storage().lineCount();
    m_markers.reserve(count);
    for (uint64_t line = 0; line < count; ++line) {
        m_markers.push_back(std::make_shared<VXSyntaxLineMarker>());
        m_markers.back()->holdFuture();
        placeMarker(line);
    }
    m_shiftFrom = count;
    scheduleBackground();
}

uint64_t VXIncrementalHighlighter::storedStart(uint64_t line) const {
    const uint64_t stored = m_markers[line]->inclusiveStartLocation;
    return line >= m_shiftFrom ? static_cast<uint64_t>(static_cast<int64_t>(stored) + m_shift) : stored;
}

uint64_t VXIncrementalHighlighter::lineContaining(uint64_t position) const {
    uint64_t low = 0, high = m_markers.size();  // the last line starting at or before position
    while (high - low > 1) {
        const uint64_t mid = low + (high - low) / 2;
        if (storedStart(mid) <= position) low = mid;
        else high = mid;
    }
    return low;
}

void VXIncrementalHighlighter::placeMarker(uint64_t line) {
    const VXTextStorage& text = storage();
    m_markers[line]->setLocations(text.lineRange(line), text.lineContentsRange(line));
}

void VXIncrementalHighlighter::moveShift(uint64_t line, int64_t delta) {
    // Lines from m_shiftFrom on are m_shift short. Make the lines between the old boundary and
    // `line` exact for the new boundary, so that one shift again describes every later line. Only
    // the lines between two successive edits are touched: typing along a line costs nothing here.
    const uint64_t count = m_markers.size();
    if (m_shiftFrom <= line) {
        for (uint64_t i = m_shiftFrom; i < std::min(line, count); ++i) m_markers[i]->offsetLocationsBy(m_shift);
    } else {
        for (uint64_t i = line; i < std::min(m_shiftFrom, count); ++i) m_markers[i]->offsetLocationsBy(-m_shift);
    }
    m_shiftFrom = line;
    m_shift += delta;
}

std::optional<std::pair<uint64_t, uint64_t>> VXIncrementalHighlighter::moveMarkersForEdit(Range editedRange,
                                                                                             int64_t changeInLength) {
    const VXTextStorage& text = storage();
    const Range oldRange{editedRange.location,
                         static_cast<uint64_t>(static_cast<int64_t>(editedRange.length) - changeInLength)};
    // The lines the edit touched, before and after. A line feed typed after a carriage return
    // joins the line above's break, so that line counts as touched too.
    uint64_t first = lineContaining(oldRange.location);
    if (first > 0 && oldRange.location == storedStart(first) && text.characterAtIndex(oldRange.location - 1) == u'\r')
        --first;
    const uint64_t lastOld = lineContaining(oldRange.end());
    const uint64_t lastNew = text.lineIndexForPosition(editedRange.end());
    const uint64_t oldCount = lastOld - first + 1, newCount = lastNew - first + 1;
    if (newCount > kLargestWaitedBatch) return std::nullopt;

    moveShift(lastOld + 1, changeInLength);
    moveBreaks(first, lastOld, static_cast<int64_t>(newCount) - static_cast<int64_t>(oldCount));
    // Replace the touched markers: the first ones are kept (their start contexts are the best
    // guess for the parse below), the rest are removed or new ones inserted.
    auto begin = m_markers.begin() + static_cast<ptrdiff_t>(first);
    const VXContext guess = m_markers[lastOld]->endContext;
    if (newCount < oldCount) {
        for (uint64_t k = newCount; k < oldCount; ++k) m_markers[first + k]->releaseFuture();
        m_markers.erase(begin + static_cast<ptrdiff_t>(newCount), begin + static_cast<ptrdiff_t>(oldCount));
    } else if (newCount > oldCount) {
        std::vector<VXSyntaxLineMarkerPtr> added(newCount - oldCount);
        for (auto& marker : added) {
            marker = std::make_shared<VXSyntaxLineMarker>();
            marker->startContext = guess;
        }
        m_markers.insert(begin + static_cast<ptrdiff_t>(oldCount), added.begin(), added.end());
    }
    m_shiftFrom = first + newCount;
    if (m_front > lastOld) m_front = m_front + newCount - oldCount;
    else m_front = std::min(m_front, first);

    for (uint64_t line = first; line < first + newCount; ++line) {
        placeMarker(line);
        m_markers[line]->completion = VXSyntaxLineMarker::kCompletionNone;
        m_markers[line]->holdFuture();
    }
    return std::pair{first, first + newCount};
}

void VXIncrementalHighlighter::applyPendingLocked() {
    // 1. The markers follow every edit, in order; each edit's lines join the runs of touched
    // lines (an edit on the line where the one before ended extends its run).
    // The changes one after another, each in the text as it is once those before it are made.
    std::vector<VXTextAttributeInvalidationManager::Edit> edits;
    int64_t delta = 0;
    for (const Replacement& change : m_pending->forward().replacements()) {
        const int64_t changeInLength = static_cast<int64_t>(change.text.size()) - static_cast<int64_t>(change.range.length);
        edits.push_back({{static_cast<uint64_t>(static_cast<int64_t>(change.range.location) + delta), change.range.length},
                         changeInLength});
        delta += changeInLength;
    }
    m_pending.reset();
    m_invalidator.noteEdits(edits);
    std::vector<std::pair<uint64_t, uint64_t>> runs;
    for (const auto& edit : edits) {
        const Range editedRange{edit.oldRange.location,
                                static_cast<uint64_t>(static_cast<int64_t>(edit.oldRange.length) + edit.changeInLength)};
        const auto touched = moveMarkersForEdit(editedRange, edit.changeInLength);
        if (!touched) {
            rebuildAll();  // reads the text as it is now, after every pending edit
            return;
        }
        if (!runs.empty() && touched->first < runs.back().second) runs.back().second = std::max(runs.back().second, touched->second);
        else runs.push_back(*touched);
    }
    // Runs the background walk has not reached yet are left to it; so are those past the first
    // kLargestWaitedBatch touched lines (a keystroke at thousands of carets): the walk's front
    // moves back to the first of them, and the background parses them as it passes them.
    uint64_t waited = 0;
    size_t parsedRuns = 0;
    for (; parsedRuns < runs.size() && runs[parsedRuns].first < m_front; ++parsedRuns) {
        waited += runs[parsedRuns].second - runs[parsedRuns].first;
        if (waited > kLargestWaitedBatch) {
            m_front = runs[parsedRuns].first;
            break;
        }
    }
    if (parsedRuns < runs.size()) {
        parseShownLinesAheadLocked(m_mainState);
        scheduleBackground();
    }
    runs.resize(parsedRuns);

    // 2. The touched lines are parsed in order from the running context, and the walk goes on
    // past each run until a line starts where it started before.
    for (const auto& [from, to] : runs) confirmAndWalkLocked(from, to);
}

void VXIncrementalHighlighter::confirmAndWalkLocked(uint64_t first, uint64_t end) {
    VXContext running = contextBefore(first);
    for (uint64_t line = first; line < end; ++line) {
        VXSyntaxLineMarker& marker = *m_markers[line];
        if (marker.completion != VXSyntaxLineMarker::kCompletionValid &&
            !(marker.completion == VXSyntaxLineMarker::kCompletionToConfirm && marker.startContext.equalZoneDefinitions(running)))
            parseLine(line, running, &m_mainState);
        marker.completion = VXSyntaxLineMarker::kCompletionValid;
        reportLine(line);
        marker.releaseFuture();
        running = marker.endContext;
    }
    // Past the edit, until a line starts where it started before (or the walk's front); the
    // shown lines now, the rest in the background from a break left where this walk ends.
    const Range visible = m_order.visibleLines();
    uint64_t limit = end + kLinesWalkedWithTheEdit;
    if (visible.location <= end && visible.end() > end) limit += visible.end() - end;
    for (uint64_t line = end; line < m_front; ++line) {
        VXSyntaxLineMarker& marker = *m_markers[line];
        m_breaks.erase(line);
        if (marker.startContext.equalZoneDefinitions(running)) break;
        if (line >= limit) {
            m_breaks.insert(line);
            scheduleBackground();
            break;
        }
        marker.holdFuture();
        parseLine(line, running, &m_mainState);
        reportLine(line);
        marker.releaseFuture();
        running = marker.endContext;
    }
}

void VXIncrementalHighlighter::moveBreaks(uint64_t first, uint64_t lastOld, int64_t lineDelta) {
    // Breaks on the edited lines go (those lines are confirmed now); later ones move with their lines.
    std::set<uint64_t> moved;
    for (uint64_t line : m_breaks) {
        if (line < first) moved.insert(line);
        else if (line > lastOld) moved.insert(static_cast<uint64_t>(static_cast<int64_t>(line) + lineDelta));
    }
    m_breaks.swap(moved);
}

VXContext VXIncrementalHighlighter::contextBefore(uint64_t line) const {
    return line > 0 ? m_markers[line - 1]->endContext : rootContextForRuleset(*m_ruleset);
}

void VXIncrementalHighlighter::parseLine(uint64_t line, const VXContext& start, VXSyntaxParseState* state) {
    VXSyntaxLineMarker& marker = *m_markers[line];
    const Range range{storedStart(line), marker.inclusiveRange().length};
    marker.parseFrom(start, storage().substring(range), marker.contentRange().length, *m_ruleset, state);
    m_parsedLines.push_back(line);
}

void VXIncrementalHighlighter::reportLine(uint64_t line) {
    const VXSyntaxLineMarker& marker = *m_markers[line];
    Range range = marker.conventionalRange();
    range.location = storedStart(line) + (marker.contentStartLocation - marker.inclusiveStartLocation);
    m_invalidator.didParseRange(range, false);
}

// --- the background walk ----------------------------------------------------------------------------

void VXIncrementalHighlighter::scheduleBackground() {
    if (m_backgroundScheduled || m_stopping || !m_ruleset) return;
    m_backgroundScheduled = true;
    m_background.async([this] { backgroundTurn(); });
}

void VXIncrementalHighlighter::backgroundTurn() {
    // Edits wait for the storage's group, so the text does not change under the walk; the walk
    // checks each line against the storage's line index in case an edit is already made but not
    // yet announced (recomputeCache then comes and schedules the walk again).
    VXTextStorage& text = storage();
    text.waitAndEnter();
    {
        std::lock_guard lock(m_mutex);
        m_backgroundScheduled = false;
        if (!m_stopping && runBackgroundLocked()) scheduleBackground();
        m_settledChanged.notify_all();
    }
    text.leave();
}

VXIncrementalHighlighter::BreakStep VXIncrementalHighlighter::walkFirstBreakLocked(VXSyntaxParseState& state) {
    const uint64_t line = *m_breaks.begin();
    m_breaks.erase(m_breaks.begin());
    if (line >= m_front) return BreakStep::Done;  // the walk from the front parses it anyway
    if (!markerMatchesText(line)) {
        m_breaks.insert(line);
        return BreakStep::TextChanged;
    }
    VXSyntaxLineMarker& marker = *m_markers[line];
    const VXContext running = contextBefore(line);
    if (marker.startContext.equalZoneDefinitions(running)) return BreakStep::Done;
    marker.holdFuture();
    parseLine(line, running, &state);
    reportLine(line);
    marker.releaseFuture();
    if (line + 1 < m_markers.size()) m_breaks.insert(line + 1);
    return BreakStep::Parsed;
}

bool VXIncrementalHighlighter::markerMatchesText(uint64_t line) const {
    const VXTextStorage& text = storage();
    if (line >= text.lineCount()) return false;
    return text.lineRange(line) == Range{storedStart(line), m_markers[line]->inclusiveRange().length};
}

bool VXIncrementalHighlighter::parseShownLinesAheadLocked(VXSyntaxParseState& state) {
    // Visible lines far ahead of the walk: parsed now from the best context at hand, confirmed later.
    const Range ahead = m_order.linesAhead(m_front, m_markers.size());
    for (uint64_t line = ahead.location; line < ahead.end(); ++line) {
        VXSyntaxLineMarker& marker = *m_markers[line];
        if (marker.completion != VXSyntaxLineMarker::kCompletionNone) continue;
        if (!markerMatchesText(line)) return false;
        const bool above = line > 0 && m_markers[line - 1]->completion != VXSyntaxLineMarker::kCompletionNone;
        parseLine(line, above ? m_markers[line - 1]->endContext : rootContextForRuleset(*m_ruleset), &state);
        marker.completion = VXSyntaxLineMarker::kCompletionToConfirm;
        reportLine(line);
    }
    return true;
}

bool VXIncrementalHighlighter::runBackgroundLocked() {
    const uint64_t count = m_markers.size();
    VXSyntaxParseState& state = m_backgroundState;

    if (!parseShownLinesAheadLocked(state)) return false;

    // Walks an edit left behind: from each break until a line starts where it started before.
    uint64_t budget = m_order.linesPerTurn();
    for (; budget > 0 && !m_breaks.empty(); --budget) {
        const auto step = walkFirstBreakLocked(state);
        if (step == BreakStep::TextChanged) return false;
    }

    for (; budget > 0 && m_front < count; --budget)
        if (!advanceFrontLocked(state)) return false;
    return m_front < count || !m_breaks.empty();
}

bool VXIncrementalHighlighter::advanceFrontLocked(VXSyntaxParseState& state) {
    const uint64_t line = m_front;
    VXSyntaxLineMarker& marker = *m_markers[line];
    if (!markerMatchesText(line)) return false;
    const VXContext running = contextBefore(line);
    if (marker.completion == VXSyntaxLineMarker::kCompletionNone || !marker.startContext.equalZoneDefinitions(running)) {
        parseLine(line, running, &state);
        reportLine(line);
    }
    marker.completion = VXSyntaxLineMarker::kCompletionValid;
    marker.releaseFuture();
    ++m_front;
    return true;
}

// --- readers ---------------------------------------------------------------------------------------

void VXIncrementalHighlighter::setVisibleLines(uint64_t first, uint64_t count) {
    std::lock_guard lock(m_mutex);
    m_order.setVisibleLines(first, count);
    if (first < m_markers.size()) {
        const uint64_t last = std::min<uint64_t>(first + count, m_markers.size());
        const uint64_t from = storedStart(first);
        const uint64_t to = last < m_markers.size() ? storedStart(last) : storage().length();
        m_invalidator.setVisibleRange({from, to - from});
    }
    if (m_front < m_markers.size()) scheduleBackground();
}

std::optional<VXIncrementalHighlighter::LineZones> VXIncrementalHighlighter::zonesForLine(uint64_t line, Wait wait) {
    if (wait == Wait::Yes) {
        VXSyntaxLineMarkerPtr marker;
        {
            std::lock_guard lock(m_mutex);
            if (line >= m_markers.size()) return std::nullopt;
            marker = m_markers[line];
        }
        marker->future().wait();  // never while holding the lock: the walk needs it to go on
        // A walk that an edit left to the background may still have to pass the line.
        std::unique_lock lock(m_mutex);
        m_settledChanged.wait(lock, [&] { return line >= m_markers.size() || isConfirmedLocked(line); });
    }
    std::lock_guard lock(m_mutex);
    if (line >= m_markers.size()) return std::nullopt;
    VXSyntaxLineMarker& marker = *m_markers[line];
    auto snapshot = marker.currentZones();
    if (!snapshot) return std::nullopt;
    LineZones out{std::move(snapshot->zones), marker.startContext, snapshot->settled && isConfirmedLocked(line)};
    const auto start = static_cast<int64_t>(storedStart(line));
    for (VXSyntaxZone& zone : out.zones) zone.offsetBy(start);
    return out;
}

std::vector<std::string> VXIncrementalHighlighter::scopesAtLocation(uint64_t location) {
    const uint64_t line = storage().lineIndexForPosition(location);
    {
        // The document's thread asks (its text cannot change meanwhile): a walk the background
        // has not yet done up to this line (from a break or from the front) is done here rather
        // than waited for, so that a
        // caller inside a batch of edits (which keeps background readers out) cannot hang.
        std::lock_guard lock(m_mutex);
        if (m_pending) applyPendingLocked();  // asked from inside a batch of edits
        while (!m_breaks.empty() && *m_breaks.begin() <= line)
            if (walkFirstBreakLocked(m_mainState) == BreakStep::TextChanged) break;
        while (m_front <= line && m_front < m_markers.size())
            if (!advanceFrontLocked(m_mainState)) break;
        m_settledChanged.notify_all();
    }
    auto zones = zonesForLine(line, Wait::Yes);
    if (!zones) return {};
    VXHighlightedLine highlighted;
    const Range range = lineRange(line);
    highlighted.line = {range.location, range.length, range.length};
    highlighted.startContext = std::move(zones->startContext);
    highlighted.events = std::move(zones->zones);
    std::vector<std::string> out;
    for (const VXScope& scope : scopeStackAtColumn(highlighted, location - range.location))
        out.emplace_back(scope.stringRepresentation());
    return out;
}

uint64_t VXIncrementalHighlighter::lineCount() const {
    std::lock_guard lock(m_mutex);
    return m_markers.size();
}

Range VXIncrementalHighlighter::lineRange(uint64_t line) const {
    std::lock_guard lock(m_mutex);
    if (line >= m_markers.size()) return {kNotFound, 0};
    return {storedStart(line), m_markers[line]->inclusiveRange().length};
}

bool VXIncrementalHighlighter::isSettled() const {
    std::lock_guard lock(m_mutex);
    return m_front >= m_markers.size() && m_breaks.empty();
}

void VXIncrementalHighlighter::waitUntilSettled() {
    std::unique_lock lock(m_mutex);
    m_settledChanged.wait(lock, [this] { return m_front >= m_markers.size() && m_breaks.empty(); });
}

bool VXIncrementalHighlighter::isConfirmedLocked(uint64_t line) const {
    return line < m_front && (m_breaks.empty() || *m_breaks.begin() > line);
}

std::vector<uint64_t> VXIncrementalHighlighter::takeParsedLines() {
    std::lock_guard lock(m_mutex);
    return std::exchange(m_parsedLines, {});
}

}  // namespace vx
