// VXSnippetSession: a snippet expanded into a text view, live while its fields are walked.
//
//     for (%{1:"int"} %{2:"i"} = 0; %{2} < %{3:"n"}; ++%{2}) {\n\t%{0}\n}
//
// Expanding puts the text at every selection (each replacing its selection, or the range the
// caller names there, such as the trigger word), indented like the line it goes into, and
// selects the first field. The fields are visited by number: 1, 2, ... and 0 last; a snippet
// without a 0 ends at its end. Arriving at a field selects its text, so typing replaces the
// default; with several selections the field is selected at every copy and edited at all of
// them together. After every command the mirrors of each tab stop are brought up to date
// through their filters.
//
// The session ends when the last field is reached, on cancel(), and when the caret leaves the
// snippet (checked after every command). It learns of every change of the text through
// textDidChange, whoever made it, so that its fields keep their places.
//
// Shell commands run on while the editor goes on: the snippet goes in at once with their
// or-else defaults, and their output replaces that text when it comes (within the commands' time
// limit), whether or not the fields are still being walked; the session's end kills them. The owner calls takeShellOutput while
// hasPendingShellCommands says so (between frames, or before reading the text headless).
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "editing/text_view.hpp"
#include "snippets/constructs.hpp"
#include "snippets/shell_constant_runner.hpp"
#include "snippets/snippet_environment.hpp"
#include "snippets/snippet_fields.hpp"

namespace vx {

class VXSnippetSession {
public:
    // Expands `snippet` in `view`: at each of `ranges` (ascending, one per copy; `primary` is the
    // index of the one that becomes the primary selection), or at every selection when `ranges`
    // is empty. `base` gives the file, clipboard, time and shell settings; the selection's own
    // variables are filled in for each copy (ranges given are triggers: they are not selected
    // text, nor part of the current line). The expansion is one undo step. Answers the session,
    // which may already be over (a snippet without fields to visit).
    static std::unique_ptr<VXSnippetSession> expand(VXTextView& view, const CompiledSnippet& snippet,
                                                    const SnippetEnvironment& base, std::vector<Range> ranges = {},
                                                    size_t primary = 0);

    // Whether fields are being walked.
    bool isActive() const { return !m_finished; }
    // Whether the session still follows the text: fields to walk or output to come.
    bool isTracking() const { return !m_finished || !m_jobs.empty(); }
    // The number of the field the caret is in, or nothing before the first.
    std::optional<int64_t> currentNumber() const;

    // Tab and Shift-Tab: to the next field (ending the session at the last), to the previous
    // one (staying at the first). Answer whether they did anything.
    bool nextField();
    bool previousField();
    void cancel() { m_finished = true; }

    // Every change of the view's text: `newRange` is where the new text now lies, `changeInLength`
    // its length less the length of what it replaced.
    void textDidChange(Range newRange, int64_t changeInLength);
    // After each command: mirrors follow their tab stops; a caret outside the snippet ends it.
    void commandDidFinish();

    bool hasPendingShellCommands() const { return !m_jobs.empty(); }
    // Waits up to `wait` for a shell command to finish, then puts the output of every finished
    // one in place (through its construct's filters). Answers whether the text changed.
    bool takeShellOutput(std::chrono::microseconds wait);

    // The copies' fields, in document coordinates (for tests and drawing).
    const std::vector<std::vector<SnippetField>>& copies() {
        settle();
        return m_copies;
    }

private:
    // A command running for the constant construct whose fields its output goes to; the
    // session's end kills it.
    struct PendingShell {
        const SNConstruct* construct;
        std::unique_ptr<ShellConstantRun> run;
    };

    VXSnippetSession(VXTextView& view, SnippetEnvironment environment) : m_view(view), m_environment(std::move(environment)) {}
    void startShellCommands(const SnippetEnvironment& environment);
    // Replaces a field's text as the session's own edit; the replacement joins `edits`.
    void replaceField(size_t copy, int index, const std::u16string& text, std::vector<std::pair<Range, uint64_t>>& edits);
    // Edits shift every copy after them. The shifts of copies an edit does not touch wait in a
    // Fenwick tree (so that typing at 10,000 copies costs 10,000 small updates, not 10,000²) and
    // are written into the fields by settle().
    int64_t pendingShift(size_t copy) const;
    void addShiftFrom(size_t copy, int64_t delta);
    void settle();
    Range rangeOf(size_t copy, size_t index) const;
    void adjustCopy(size_t copy, Range old, uint64_t newLength);
    void updateMirrors();
    bool caretInside() const;
    // Selects the tab stop of m_order[index] at every copy that still has it; false when none does.
    bool selectNumber(size_t index);
    void finishAtEnd();

    VXTextView& m_view;
    SnippetEnvironment m_environment;
    std::vector<std::vector<SnippetField>> m_copies;  // field 0 of each is the copy's whole range
    size_t m_primaryCopy = 0;
    std::vector<int64_t> m_order;                     // tab stop numbers in visiting order, 0 last
    std::optional<size_t> m_current;                  // index into m_order
    bool m_finished = false;
    // While the session writes a mirror: the copy and field being written.
    std::optional<std::pair<size_t, int>> m_writing;
    std::vector<PendingShell> m_jobs;
    std::vector<int64_t> m_shiftTree;  // 1-based Fenwick tree over the copies
    bool m_hasShifts = false;
};

}  // namespace vx
