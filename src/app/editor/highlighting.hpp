// Colours for a tab's lines from the line highlighter.
//
// Each line is parsed from the context the line before it ended in, so colouring line n needs the
// contexts of the lines above it. The contexts are kept as checkpoints every kCheckpointInterval
// lines (a 100 MB file has two million lines; a context for each would cost more than the text);
// a line is coloured by parsing forward from the checkpoint before it. Only what is shown is
// parsed: opening a large file colours its first screen at once, and reaching far into a text
// that was never shown is done in small steps between frames (advance), with the lines shown
// plain until their turn. An edit forgets the checkpoints after the line it starts on.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "app/editor/text_buffer.hpp"
#include "app/tui/screen.hpp"
#include "syntax/context.hpp"
#include "syntax/highlighter.hpp"
#include "syntax/ruleset.hpp"

namespace vx::editor {

struct StyledRun {
    uint64_t start = 0, end = 0;  // UTF-16 offsets within the line
    tui::Style style;
};

// The look of text in a context (the zones open there, outermost first).
class ScopeStyler {
public:
    virtual ~ScopeStyler() = default;
    virtual tui::Style styleFor(const VXContext& context, const tui::Style& base) const = 0;
};

// Colours by the common scope names (comment, string, keyword, ...), for when no theme loads.
class BasicScopeStyler final : public ScopeStyler {
public:
    tui::Style styleFor(const VXContext& context, const tui::Style& base) const override;
};

class TabHighlighter {
public:
    static constexpr uint64_t kCheckpointInterval = 32;
    // Lines a frame may parse to reach the lines it shows; further work goes to advance().
    static constexpr uint64_t kSynchronousLines = 4000;

    explicit TabHighlighter(const VXSyntaxRuleset& ruleset);

    // The runs of a line, or nothing while its context is still out of reach.
    std::optional<std::vector<StyledRun>> runsForLine(const TextBuffer& text, uint64_t line, const ScopeStyler& styler,
                                                      const tui::Style& base);
    // The zones open at the character that follows `offset` (at a line's end, those open there):
    // what auto-pairing and other typing aids match their selectors against.
    VXContext contextAt(const TextBuffer& text, uint64_t offset);
    // An edit starting on `line`: what follows it may parse differently now.
    void invalidateFrom(uint64_t line);
    // Parses towards `target` for about `budget`; true once the context of `target` is known.
    bool advance(const TextBuffer& text, uint64_t target, std::chrono::microseconds budget);
    // Whether the context of `line` is within a frame's reach.
    bool isWithinReach(uint64_t line) const { return line <= knownThrough() + kSynchronousLines; }

private:
    // The last line whose start context can be had from a checkpoint.
    uint64_t knownThrough() const { return (m_checkpoints.size() - 1) * kCheckpointInterval; }
    VXContext parseLine(const TextBuffer& text, uint64_t line, const VXContext& start, std::vector<VXSyntaxZone>& events);
    VXContext contextForLine(const TextBuffer& text, uint64_t line);

    const VXSyntaxRuleset& m_ruleset;
    std::vector<VXContext> m_checkpoints;  // the start context of lines 0, 32, 64, ...
    // The start context of the line after the last one coloured: a frame colours its lines top to
    // bottom, and each then costs one parse instead of a parse from its checkpoint.
    std::optional<std::pair<uint64_t, VXContext>> m_next;
    VXSyntaxParseState m_state;
};

}  // namespace vx::editor
