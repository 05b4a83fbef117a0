// VXIncrementalHighlighter: keeps a document's highlighting up to date, one VXSyntaxLineMarker per
// line, re-parsing after each edit only the lines that can have changed.
//
// After an edit (recomputeCache, called by the document before anything else sees the edit; inside
// a batch of edits, such as a keystroke at many carets, at the batch's end, once for all of them):
//   1. the markers of the edited lines are replaced, inserted or removed, and the lines after them
//      move by the change in length;
//   2. the edited lines are parsed from the start contexts they had (the document waits for the
//      first few hundred of them and the shown ones; past those, a keystroke at thousands of
//      carets moves the background walk's front back to the first line left, and the walk
//      parses the rest);
//   3. in line order, with a running context that starts as the end context of the line above the
//      edit, each edited line is kept when it was parsed from a context with the same zone
//      definitions as the running one, else parsed again from the running context;
//   4. the walk goes on past the edit and stops at the first line whose stored start context has
//      the same zone definitions as the running context (or at the document's end). The edit
//      waits only for the visible lines below it and a few more; a longer walk (a "/*" typed at
//      the top of a long file) is left as a break that the background queue walks on from,
//      with the same early stop. Until it passes a line, the line's zones are provisional.
// Every re-parsed line's range goes to invalidator(), which hands merged ranges to the view on
// the main run loop.
//
// Opening a document (recomputeCache with `fully`, or the first edit of an empty highlighter)
// makes a marker per line and parses them in the background, top to bottom, a few hundred lines
// per turn, visible lines first (VXColoringOrder). Until a line is confirmed, zonesForLine(line,
// Wait::No) answers nothing (never parsed) or the provisional zones (parsed ahead of the walk).
//
// For a view:
//   - invalidator().setDelegate(...) to learn which character ranges to colour again (on the
//     main run loop, merged, visible ranges first);
//   - setVisibleLines(first, count) whenever the view scrolls;
//   - zonesForLine(line, Wait::No) while drawing, falling back to plain text when it answers
//     nothing; Wait::Yes blocks until the line is confirmed (for tools that need exact zones).
//
// Threads: edits and recomputeCache on the document's (main) thread; background turns on the
// highlighter's own queue; readers on any thread. One lock guards the list of markers; a reader
// never waits on a line's future while holding it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "document/document_hooks.hpp"
#include "document/text_storage.hpp"
#include "platform/dispatch.hpp"
#include "syntax/coloring_order.hpp"
#include "syntax/invalidation_manager.hpp"
#include "syntax/line_marker.hpp"
#include "syntax/ruleset.hpp"

namespace vx {

class VXSingleFileDocument;

class VXIncrementalHighlighter final : public HighlightingHook {
public:
    // Follows a document: its current text storage and its language (through `rulesetFor`; by
    // default the language catalogue's ruleset for the language's name).
    using RulesetResolver = std::function<const VXSyntaxRuleset*(const DocumentLanguage&)>;
    explicit VXIncrementalHighlighter(VXSingleFileDocument& document, RulesetResolver rulesetFor = {},
                                      RunLoop* deliveryLoop = nullptr);
    // Over a bare text storage in one language (tests, tools).
    VXIncrementalHighlighter(VXTextStorage& storage, const VXSyntaxRuleset& ruleset, RunLoop* deliveryLoop = nullptr);
    ~VXIncrementalHighlighter();
    VXIncrementalHighlighter(const VXIncrementalHighlighter&) = delete;
    VXIncrementalHighlighter& operator=(const VXIncrementalHighlighter&) = delete;

    // --- HighlightingHook ---
    void recomputeCache(Range editedRange, int64_t changeInLength, unsigned editedMask, bool fully) override;
    std::vector<std::string> scopesAtLocation(uint64_t location) override;
    std::optional<TextAttributes> defaultZoneAttributes() override { return m_defaultAttributes; }
    void willReplaceContents() override;
    void beginEditBatch() override;
    void endEditBatch() override;

    // The theme's default attributes, which the document gives new text (the theme lives above).
    void setDefaultZoneAttributes(std::optional<TextAttributes> attributes) { m_defaultAttributes = std::move(attributes); }

    // --- for views ---
    VXTextAttributeInvalidationManager& invalidator() { return m_invalidator; }
    void setVisibleLines(uint64_t first, uint64_t count);
    enum class Wait { No, Yes };
    struct LineZones {
        std::vector<VXSyntaxZone> zones;  // document offsets, text order
        VXContext startContext;
        bool settled = false;             // false: provisional, the line may still change
    };
    std::optional<LineZones> zonesForLine(uint64_t line, Wait wait);

    // --- state ---
    uint64_t lineCount() const;
    // The line's range (with its line break) in the current text.
    Range lineRange(uint64_t line) const;
    // True when every line is confirmed; waitUntilSettled blocks until then.
    bool isSettled() const;
    void waitUntilSettled();
    const VXSyntaxRuleset* ruleset() const { return m_ruleset; }

    // The lines parsed (each time one was parsed), oldest first, since the last call.
    std::vector<uint64_t> takeParsedLines();

private:
    VXTextStorage& storage() const;
    void rebuildAll();
    // The edits gathered so far: markers moved for each, the touched lines parsed once.
    void applyPendingLocked();
    // Moves the markers for one edit; the touched lines (to parse), or nothing when the edit is
    // too large to wait for (the caller then rebuilds).
    std::optional<std::pair<uint64_t, uint64_t>> moveMarkersForEdit(Range editedRange, int64_t changeInLength);
    // Confirms the parsed lines [first, end) in order and walks on past them.
    void confirmAndWalkLocked(uint64_t first, uint64_t end);
    // Brings the pending shift of later lines to start at `line`, adding `delta`.
    void moveShift(uint64_t line, int64_t delta);
    uint64_t storedStart(uint64_t line) const;
    uint64_t lineContaining(uint64_t position) const;  // in the markers' (old) offsets
    void placeMarker(uint64_t line);                  // locations from the storage's line index
    void parseLine(uint64_t line, const VXContext& start, VXSyntaxParseState* state);
    void reportLine(uint64_t line);
    VXContext contextBefore(uint64_t line) const;
    void scheduleBackground();
    void backgroundTurn();
    bool runBackgroundLocked();
    // Parses the shown lines the walk has not reached and nothing has parsed; false when the text
    // is ahead of the markers.
    bool parseShownLinesAheadLocked(VXSyntaxParseState& state);
    // Confirms the line at the walk's front (parsing it when it must) and moves the front on;
    // false when the text is ahead of the markers.
    bool advanceFrontLocked(VXSyntaxParseState& state);
    bool markerMatchesText(uint64_t line) const;
    void stopBackground();
    void moveBreaks(uint64_t first, uint64_t lastOld, int64_t lineDelta);
    // One step of a walk from the first break: the line there confirmed or parsed again (and
    // the break moved to the next line), or TextChanged when the text is ahead of the markers.
    enum class BreakStep { Done, Parsed, TextChanged };
    BreakStep walkFirstBreakLocked(VXSyntaxParseState& state);
    // Parsed from a start context that the lines above confirm (no walk still to pass it).
    bool isConfirmedLocked(uint64_t line) const;

    VXSingleFileDocument* m_document = nullptr;
    VXTextStorage* m_storage = nullptr;
    RulesetResolver m_resolver;
    const VXSyntaxRuleset* m_ruleset = nullptr;
    std::optional<TextAttributes> m_defaultAttributes;
    VXTextAttributeInvalidationManager m_invalidator;

    mutable std::mutex m_mutex;
    std::condition_variable m_settledChanged;
    std::vector<VXSyntaxLineMarkerPtr> m_markers;
    // Lines from m_shiftFrom on are stored m_shift code units short of where they are.
    uint64_t m_shiftFrom = 0;
    int64_t m_shift = 0;
    // Every line before the front is confirmed; the background walk goes on from it.
    uint64_t m_front = 0;
    // Lines before the front whose start context may differ from the end of the line above:
    // where an edit's walk was left to the background. The background walks on from each.
    std::set<uint64_t> m_breaks;
    VXColoringOrder m_order;
    VXSyntaxParseState m_mainState;        // the document thread's
    VXSyntaxParseState m_backgroundState;  // the background queue's
    // Edits not yet applied to the markers (those of an open batch, such as a keystroke at many
    // carets), as one transaction over the text the markers describe.
    std::optional<TransactionBuilder> m_pending;
    int m_batchDepth = 0;
    std::vector<uint64_t> m_parsedLines;

    SerialQueue m_background{"highlighter"};
    bool m_backgroundScheduled = false;
    std::atomic<bool> m_stopping{false};
};

}  // namespace vx
