#include "snippets/snippet_session.hpp"

#include <algorithm>

#include "editing/navigation.hpp"
#include "snippets/shell_constant_runner.hpp"
#include "snippets/snippet_expansion.hpp"

namespace vx {
namespace {

std::u16string indentationOf(std::u16string_view line) {
    size_t end = 0;
    while (end < line.size() && (line[end] == u' ' || line[end] == u'\t')) ++end;
    return std::u16string(line.substr(0, end));
}

// The word around a range: the word characters that end at its start and begin at its end.
std::optional<std::u16string> wordAround(const TextBuffer& text, Range range) {
    uint64_t start = range.location, end = range.end();
    while (start > 0 && isWordCharacter(text.characterAt(start - 1))) --start;
    while (end < text.length() && isWordCharacter(text.characterAt(end))) ++end;
    if (start == range.location && end == range.end()) return std::nullopt;
    return text.substring({start, range.location - start}) + text.substring({range.end(), end - range.end()});
}

// A position carried through the replacement of `old` by `newLength` units; one inside the
// replaced text stays at most at the new text's end.
uint64_t carried(uint64_t position, Range old, uint64_t newLength) {
    if (position >= old.end()) return position - old.length + newLength;
    if (position <= old.location) return position;
    return old.location + std::min(position - old.location, newLength);
}

// The selections carried through replacements made one after another in ascending order (each
// range in the text as the ones before it left it), in one pass over both.
void carryThrough(std::vector<Selection>& selections, const std::vector<std::pair<Range, uint64_t>>& edits) {
    if (edits.empty()) return;
    std::vector<uint64_t*> ends;
    for (Selection& selection : selections) {
        ends.push_back(&selection.anchor);
        ends.push_back(&selection.caret);
    }
    std::sort(ends.begin(), ends.end(), [](const uint64_t* a, const uint64_t* b) { return *a < *b; });
    int64_t delta = 0;
    size_t next = 0;
    for (uint64_t* end : ends) {
        uint64_t position = static_cast<uint64_t>(static_cast<int64_t>(*end) + delta);
        while (next < edits.size() && edits[next].first.end() <= position) {
            const int64_t change = static_cast<int64_t>(edits[next].second) - static_cast<int64_t>(edits[next].first.length);
            position = static_cast<uint64_t>(static_cast<int64_t>(position) + change);
            delta += change;
            ++next;
        }
        if (next < edits.size()) position = carried(position, edits[next].first, edits[next].second);
        *end = position;
    }
}

// Puts the primary selection first, as setSelections wants it.
std::vector<Selection> primaryFirst(std::vector<Selection> selections, size_t primary) {
    std::rotate(selections.begin(), selections.begin() + static_cast<std::ptrdiff_t>(primary),
                selections.begin() + static_cast<std::ptrdiff_t>(primary) + 1);
    return selections;
}

const SnippetField* tabStopOf(const std::vector<SnippetField>& fields, int64_t number) {
    for (const SnippetField& field : fields)
        if (field.alive && field.kind == SnippetField::Kind::TabStop && field.number == number) return &field;
    return nullptr;
}

}  // namespace

std::unique_ptr<VXSnippetSession> VXSnippetSession::expand(VXTextView& view, const CompiledSnippet& snippet,
                                                           const SnippetEnvironment& base, std::vector<Range> ranges,
                                                           size_t primary) {
    const bool atSelections = ranges.empty();
    if (atSelections) {
        for (const Selection& selection : view.selections(&primary)) ranges.push_back(selection.range());
    }
    if (ranges.empty()) return nullptr;
    primary = std::min(primary, ranges.size() - 1);
    std::unique_ptr<VXSnippetSession> session(new VXSnippetSession(view, base));
    const TextBuffer& text = view.text();

    std::vector<SnippetExpansion> expansions(ranges.size());
    SnippetEnvironment primaryEnvironment;
    for (size_t i = 0; i < ranges.size(); ++i) {
        const Range range = ranges[i];
        const uint64_t line = text.lineForOffset(range.location);
        const std::u16string lineText = text.lineText(line);
        SnippetEnvironment environment = base;
        if (atSelections && range.length > 0) environment.selectedText = text.substring(range);
        // The line as the snippet finds it: a trigger it replaces is not part of it.
        environment.currentLine = lineText;
        if (!atSelections) {
            const uint64_t column = range.location - text.lineStart(line);
            environment.currentLine->erase(std::min<uint64_t>(column, lineText.size()), range.length);
        }
        environment.currentWord = wordAround(text, range);
        environment.lineNumber = line + 1;
        SnippetLayout layout{view.lineBreak(), indentationOf(lineText), view.tabSize(), view.softTabs()};
        expansions[i] = expandSnippet(snippet, environment, layout, ShellCommands::Defer);
        if (i == primary) primaryEnvironment = environment;
    }

    std::vector<Selection> targets;
    targets.push_back(Selection::fromRange(ranges[primary]));
    for (size_t i = 0; i < ranges.size(); ++i)
        if (i != primary) targets.push_back(Selection::fromRange(ranges[i]));
    view.setSelections(targets);
    std::vector<std::u16string> texts;
    for (const auto& expansion : expansions) texts.push_back(expansion.text);
    view.insertTexts(texts);

    // Each copy lands where its range was, moved by what the copies before it added.
    int64_t delta = 0;
    for (size_t i = 0; i < ranges.size(); ++i) {
        const uint64_t start = static_cast<uint64_t>(static_cast<int64_t>(ranges[i].location) + delta);
        for (SnippetField& field : expansions[i].fields) field.range.location += start;
        delta += static_cast<int64_t>(expansions[i].text.size()) - static_cast<int64_t>(ranges[i].length);
        session->m_copies.push_back(std::move(expansions[i].fields));
    }
    session->m_primaryCopy = primary;

    std::vector<int64_t> numbers;
    for (const auto& fields : session->m_copies)
        for (const SnippetField& field : fields)
            if (field.alive && field.kind == SnippetField::Kind::TabStop) numbers.push_back(field.number);
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    if (!numbers.empty() && numbers.front() == 0) std::rotate(numbers.begin(), numbers.begin() + 1, numbers.end());
    session->m_order = std::move(numbers);
    session->nextField();
    session->startShellCommands(primaryEnvironment);
    return session;
}

std::optional<int64_t> VXSnippetSession::currentNumber() const {
    if (!m_current) return std::nullopt;
    return m_order[*m_current];
}

int64_t VXSnippetSession::pendingShift(size_t copy) const {
    int64_t shift = 0;
    if (!m_hasShifts) return 0;
    for (size_t i = copy + 1; i > 0; i -= i & (~i + 1)) shift += m_shiftTree[i];
    return shift;
}

void VXSnippetSession::addShiftFrom(size_t copy, int64_t delta) {
    if (copy >= m_copies.size() || delta == 0) return;
    if (m_shiftTree.size() != m_copies.size() + 1) m_shiftTree.assign(m_copies.size() + 1, 0);
    for (size_t i = copy + 1; i < m_shiftTree.size(); i += i & (~i + 1)) m_shiftTree[i] += delta;
    m_hasShifts = true;
}

void VXSnippetSession::settle() {
    if (!m_hasShifts) return;
    for (size_t copy = 0; copy < m_copies.size(); ++copy) {
        const int64_t shift = pendingShift(copy);
        if (shift == 0) continue;
        for (SnippetField& field : m_copies[copy]) field.range.location = static_cast<uint64_t>(static_cast<int64_t>(field.range.location) + shift);
    }
    std::fill(m_shiftTree.begin(), m_shiftTree.end(), 0);
    m_hasShifts = false;
}

Range VXSnippetSession::rangeOf(size_t copy, size_t index) const {
    Range range = m_copies[copy][index].range;
    range.location = static_cast<uint64_t>(static_cast<int64_t>(range.location) + pendingShift(copy));
    return range;
}

bool VXSnippetSession::selectNumber(size_t index) {
    settle();
    const int64_t number = m_order[index];
    std::vector<Selection> selections;
    std::optional<Selection> primary;
    for (size_t copy = 0; copy < m_copies.size(); ++copy) {
        const SnippetField* stop = tabStopOf(m_copies[copy], number);
        if (!stop) continue;
        const Selection selection{stop->range.location, stop->range.end()};
        if (copy == m_primaryCopy || !primary) {
            if (primary) selections.push_back(*primary);
            primary = selection;
        } else {
            selections.push_back(selection);
        }
    }
    if (!primary) return false;
    selections.insert(selections.begin(), *primary);
    m_view.setSelections(selections);
    m_current = index;
    return true;
}

void VXSnippetSession::finishAtEnd() {
    settle();
    std::vector<Selection> carets;
    for (size_t copy = 0; copy < m_copies.size(); ++copy) {
        const SnippetField& root = m_copies[copy].front();
        if (!root.alive) continue;
        Selection caret = Selection::caretAt(root.range.end());
        if (copy == m_primaryCopy) carets.insert(carets.begin(), caret);
        else carets.push_back(caret);
    }
    if (!carets.empty()) m_view.setSelections(carets);
    m_finished = true;
}

bool VXSnippetSession::nextField() {
    if (m_finished) return false;
    for (size_t index = m_current ? *m_current + 1 : 0; index < m_order.size(); ++index) {
        if (!selectNumber(index)) continue;
        if (m_order[index] == 0) m_finished = true;  // the exit point ends the session
        return true;
    }
    finishAtEnd();
    return true;
}

bool VXSnippetSession::previousField() {
    if (m_finished || !m_current) return false;
    for (size_t index = *m_current; index-- > 0;)
        if (m_order[index] != 0 && selectNumber(index)) return true;
    return false;
}

// The copies lie in ascending order without overlapping, and a copy whose snippet was taken
// out keeps an empty root where it was, so the copies an edit touches are found by bisection;
// the copies after them only shift.
void VXSnippetSession::textDidChange(Range newRange, int64_t changeInLength) {
    if (!isTracking() || m_copies.empty()) return;
    const Range old{newRange.location, static_cast<uint64_t>(static_cast<int64_t>(newRange.length) - changeInLength)};
    size_t low = 0, high = m_copies.size();
    while (low < high) {
        const size_t middle = (low + high) / 2;
        if (rangeOf(middle, 0).end() < old.location) low = middle + 1;
        else high = middle;
    }
    size_t copy = low;
    for (; copy < m_copies.size() && rangeOf(copy, 0).location <= old.end(); ++copy) adjustCopy(copy, old, newRange.length);
    addShiftFrom(copy, changeInLength);
}

void VXSnippetSession::adjustCopy(size_t copy, Range old, uint64_t newLength) {
    auto& fields = m_copies[copy];
    const int64_t shift = pendingShift(copy);
    for (SnippetField& field : fields) field.range.location = static_cast<uint64_t>(static_cast<int64_t>(field.range.location) + shift);
    const int edited = m_writing && m_writing->first == copy ? m_writing->second : snippetFieldHolding(fields, old, currentNumber());
    adjustSnippetFields(fields, old, newLength, edited);
    SnippetField& root = fields.front();
    if (!root.alive) root.range = {carried(root.range.location, old, newLength), 0};
    for (SnippetField& field : fields) field.range.location = static_cast<uint64_t>(static_cast<int64_t>(field.range.location) - shift);
}

bool VXSnippetSession::caretInside() const {
    const Range caret = m_view.selection().range();
    for (size_t copy = 0; copy < m_copies.size(); ++copy) {
        const Range root = rangeOf(copy, 0);
        if (m_copies[copy].front().alive && root.location <= caret.location && caret.end() <= root.end()) return true;
    }
    return false;
}

void VXSnippetSession::commandDidFinish() {
    if (m_finished) return;
    if (!caretInside()) {
        m_finished = true;
        return;
    }
    updateMirrors();
}

// A command runs once per snippet, with the primary selection's variables; its output goes to
// the same construct's field in every copy.
void VXSnippetSession::startShellCommands(const SnippetEnvironment& environment) {
    if (!environment.runShellCommands) return;
    for (const SnippetField& field : m_copies[m_primaryCopy]) {
        if (!field.alive || !field.awaitsShell) continue;
        const auto& constant = static_cast<const SNShellConstant&>(*static_cast<const SNConstantConstruct&>(*field.construct).constant);
        // A command that cannot start leaves its default, as one that fails does.
        if (auto run = ShellConstantRun::start(constant.prefix, constant.script, environment))
            m_jobs.push_back({field.construct.get(), std::move(run)});
    }
}

bool VXSnippetSession::takeShellOutput(std::chrono::microseconds wait) {
    if (m_jobs.empty()) return false;
    size_t primary = 0;
    std::vector<Selection> selections = m_view.selections(&primary);
    std::vector<std::pair<Range, uint64_t>> edits;
    for (auto job = m_jobs.begin(); job != m_jobs.end();) {
        // The first waits; the others are only asked whether they are done.
        const auto output = job->run->poll(job == m_jobs.begin() ? wait : std::chrono::microseconds(0));
        if (!output) {
            ++job;
            continue;
        }
        for (size_t copy = 0; copy < m_copies.size(); ++copy) {
            for (size_t index = 1; index < m_copies[copy].size(); ++index) {
                SnippetField& field = m_copies[copy][index];
                if (!field.alive || !field.awaitsShell || field.construct.get() != job->construct) continue;
                field.awaitsShell = false;
                const std::u16string text = constantText(field, *output, m_environment);
                if (m_view.text().substring(rangeOf(copy, index)) == text) continue;
                replaceField(copy, static_cast<int>(index), text, edits);
            }
        }
        job = m_jobs.erase(job);
    }
    settle();
    if (edits.empty()) return false;
    carryThrough(selections, edits);
    m_view.setSelections(primaryFirst(std::move(selections), primary));
    if (!m_finished) updateMirrors();
    return true;
}

void VXSnippetSession::replaceField(size_t copy, int index, const std::u16string& text, std::vector<std::pair<Range, uint64_t>>& edits) {
    const Range range = rangeOf(copy, static_cast<size_t>(index));
    m_writing = {copy, index};
    m_view.replaceText(range, text);
    m_writing.reset();
    edits.emplace_back(range, text.size());
}

void VXSnippetSession::updateMirrors() {
    size_t primary = 0;
    std::vector<Selection> selections = m_view.selections(&primary);
    std::vector<std::pair<Range, uint64_t>> edits;
    for (size_t copy = 0; copy < m_copies.size(); ++copy) {
        for (size_t index = 1; index < m_copies[copy].size(); ++index) {
            const SnippetField& mirror = m_copies[copy][index];
            if (!mirror.alive || mirror.kind != SnippetField::Kind::Mirror) continue;
            const SnippetField* stop = tabStopOf(m_copies[copy], mirror.number);
            if (!stop) continue;  // no field of its own: the mirror keeps its default
            const Range stopRange = rangeOf(copy, static_cast<size_t>(stop - m_copies[copy].data()));
            const std::u16string text = mirrorText(mirror, m_view.text().substring(stopRange), m_environment);
            if (m_view.text().substring(rangeOf(copy, index)) == text) continue;
            replaceField(copy, static_cast<int>(index), text, edits);
        }
    }
    settle();
    if (edits.empty()) return;
    carryThrough(selections, edits);
    m_view.setSelections(primaryFirst(std::move(selections), primary));
}

}  // namespace vx
