// VXSyntaxLineMarker: what the incremental highlighter keeps for one line of a document.
//
//     startContext ──▶ [ line text → lineZones ] ──▶ endContext ══▶ next line's startContext
//
// A marker remembers the open-zone stack the line was parsed from, the stack it ended in and the
// zone events found on it. Zones are kept with offsets relative to the line's start, so a line
// that moves because of an edit above it needs no change; VXIncrementalHighlighter hands them out
// in document offsets.
//
// Threads: the owner (VXIncrementalHighlighter) changes contexts, locations and completion while
// it holds its own lock. Parses run on the marker's control queue (or on the owner's thread,
// which amounts to the same when the queue is idle). Readers of lineZones may be on any thread:
// they wait on the marker's future, which the owner holds from the moment the line needs parsing
// until the line is confirmed, and copy the zones under the marker's semaphore (enter/leave).
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <semaphore>
#include <string_view>
#include <vector>

#include "platform/dispatch.hpp"
#include "platform/range.hpp"
#include "syntax/context.hpp"
#include "syntax/highlighter.hpp"
#include "syntax/mapped_string.hpp"

namespace vx {

class VXSyntaxLineMarker {
public:
    // completion values: 0 not parsed for the current text, 1 parsed and valid; any other value
    // means parsed from a start context that the walk has still to confirm.
    static constexpr uint8_t kCompletionNone = 0;
    static constexpr uint8_t kCompletionValid = 1;
    static constexpr uint8_t kCompletionToConfirm = 2;

    VXSyntaxLineMarker();
    ~VXSyntaxLineMarker();
    VXSyntaxLineMarker(const VXSyntaxLineMarker&) = delete;
    VXSyntaxLineMarker& operator=(const VXSyntaxLineMarker&) = delete;

    VXContext startContext;
    VXContext endContext;
    uint8_t completion = kCompletionNone;

    // Document offsets as of the owner's last update (the owner shifts lines lazily, see
    // VXIncrementalHighlighter::lineRange). The content excludes the line break.
    uint64_t inclusiveStartLocation = 0, contentStartLocation = 0, contentEndLocation = 0, inclusiveEndLocation = 0;
    void setLocations(Range inclusive, Range content);
    void offsetLocationsBy(int64_t delta);
    Range contentRange() const { return {contentStartLocation, contentEndLocation - contentStartLocation}; }
    Range inclusiveRange() const { return {inclusiveStartLocation, inclusiveEndLocation - inclusiveStartLocation}; }
    // From the content start to the inclusive end: the range reported as re-parsed.
    Range conventionalRange() const { return {contentStartLocation, inclusiveEndLocation - contentStartLocation}; }
    Range range() const { return inclusiveRange(); }

    // Parses the line (its text with its line break; `contentLength` without it) from `start`:
    // stores the zones (line-relative), the start context and the end context.
    void parseFrom(const VXContext& start, std::u16string_view text, uint64_t contentLength,
                   const VXSyntaxRuleset& ruleset, VXSyntaxParseState* state);

    // The zones in line-relative offsets, once the line is confirmed (waits for the future).
    std::vector<VXSyntaxZone> lineZones();
    // The zones as they are now, without waiting: nothing when the line has never been parsed;
    // `settled` is false while the line still waits for its start context to be confirmed.
    struct Snapshot {
        std::vector<VXSyntaxZone> zones;
        bool settled = false;
    };
    std::optional<Snapshot> currentZones();

    // The future readers wait on: held while the line is pending, released when it is confirmed.
    void holdFuture();
    void releaseFuture();
    bool isPending() const { return m_futureHeld.load(std::memory_order_acquire); }
    DispatchGroup& future() { return m_future; }

    // The queue this line's parses run on (made on first use: most lines never need one).
    SerialQueue& controlQueue();

    // Guards the zones while they are written or copied.
    void enter() { m_semaphore.acquire(); }
    void leave() { m_semaphore.release(); }

    // The UTF-16 to UTF-8 offsets of the line's text, for byte-oriented consumers (a terminal
    // writing the line, a matcher over UTF-8); dropped again with recycleIndexMap.
    const HUTF8MappedUTF16String& makeUnicodeMap(const char16_t* characters, uint64_t length);
    const HUTF8MappedUTF16String* indexMap() const { return m_indexMap.get(); }
    void recycleIndexMap() { m_indexMap.reset(); }

private:
    std::vector<VXSyntaxZone> m_zones;
    bool m_everParsed = false;
    std::binary_semaphore m_semaphore{1};
    DispatchGroup m_future;
    std::atomic<bool> m_futureHeld{false};
    std::unique_ptr<SerialQueue> m_queue;
    std::unique_ptr<HUTF8MappedUTF16String> m_indexMap;
};

using VXSyntaxLineMarkerPtr = std::shared_ptr<VXSyntaxLineMarker>;

}  // namespace vx
