// The editing engine at scale: one keystroke typed at 10,000 carets in a 100,000-line C file,
// and selecting the 10,000 occurrences of a word. The text lives in a document's text storage, as
// in the editor; with the highlighter attached every edit is re-highlighted as the editor's
// document would re-highlight it: the touched lines of a keystroke are parsed once, at its end, and
// the ranges to colour again are delivered as the view's run loop would. Each typing iteration is
// undone outside the timing.
// Run: build/release/bench/editing_bench --benchmark_repetitions=5
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "document/single_file_document.hpp"
#include "editing/document_text_buffer.hpp"
#include "editing/text_view.hpp"
#include "platform/unicode.hpp"
#include "syntax/incremental_highlighter.hpp"
#include "syntax/language_catalog.hpp"
#include "text_view_fixture.hpp"

namespace {

using namespace vx;

constexpr int kLines = 100000;
constexpr int kCarets = 10000;

// Ordinary C, seven lines a function; "needle" once in each of 10,000 functions.
std::u16string largeCFile() {
    std::string text;
    for (int i = 0, lines = 0; lines < kLines; ++i, lines += 7) {
        const std::string n = std::to_string(i);
        text += "// function " + n + ": adds its arguments\n";
        text += "static int add" + n + "(int a, int b) {\n";
        text += "    const char *label = \"" + std::string(i < kCarets ? "needle" : "hay") + n + "\";\n";
        text += "    printf(\"%s %d\\n\", label, a + b * " + n + ");\n";
        text += "    return a + b; // done\n";
        text += "}\n\n";
    }
    return utf16FromUtf8(text);
}

using bench::Columns;
using bench::Host;

struct Fixture {
    explicit Fixture(bool highlighted) {
        setenv("VX_TRUFFLES", (std::filesystem::path(VX_SOURCE_DIR) / "truffles").c_str(), 1);
        if (highlighted) {
            const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
            const VXSyntaxRuleset* ruleset = catalog.rulesetForLanguage(*catalog.languageNamed("c"));
            highlighter = std::make_unique<VXIncrementalHighlighter>(document, [ruleset](const DocumentLanguage&) { return ruleset; });
        }
        document.contents().replaceCharactersInRange({0, 0}, largeCFile());
        if (highlighter) {
            highlighter->setVisibleLines(0, 50);
            highlighter->waitUntilSettled();
            highlighter->invalidator().setDelegate([this](const std::vector<Range>& ranges) { recoloured += ranges.size(); });
            highlighter->invalidator().sendNow();
        }
        view.setIndentation(4, true);
    }
    // A caret at the start of every tenth line.
    void placeCarets() {
        std::vector<Selection> carets;
        for (uint64_t line = 0; line < kCarets * 10ull; line += 10) carets.push_back(Selection::caretAt(buffer.lineStart(line)));
        view.setSelections(carets);
    }
    // The ranges the view is told to colour again, as its run loop would deliver them.
    void deliverColours() {
        if (highlighter) highlighter->invalidator().sendNow();
    }
    void waitUntilHighlighted() {
        if (highlighter) highlighter->waitUntilSettled();
    }
    VXSingleFileDocument document;
    std::unique_ptr<VXIncrementalHighlighter> highlighter;
    size_t recoloured = 0;
    DocumentTextBuffer buffer{document};
    Host host;
    Columns columns;
    VXTextView view{buffer, document.undoManager(), host, columns};
};

// With the highlighter, a keystroke parses the shown touched lines and the first few hundred
// before it returns, and leaves the rest to the background walk. `settled` times the keystroke
// until every touched line is highlighted again; otherwise the walk is waited for outside the
// timing, so that one keystroke's background work does not slow the next.
void typeAtEveryCaret(benchmark::State& state, bool highlighted, bool settled = false) {
    Fixture f(highlighted);
    f.placeCarets();
    if (highlighted) f.highlighter->takeParsedLines();  // not the first highlighting of the file
    for (auto _ : state) {
        f.view.typeText(u"x");
        f.view.endTyping();
        if (settled) f.waitUntilHighlighted();
        f.deliverColours();
        state.PauseTiming();
        f.waitUntilHighlighted();
        f.view.undo();
        f.waitUntilHighlighted();
        f.deliverColours();
        state.ResumeTiming();
    }
    state.counters["carets"] = static_cast<double>(f.view.selections().size());
    if (highlighted) {
        auto parsed = f.highlighter->takeParsedLines();
        state.counters["parsed/keystroke"] = static_cast<double>(parsed.size()) / (2.0 * static_cast<double>(state.iterations()));
    }
}

void BM_TypeAt10000Carets(benchmark::State& state) { typeAtEveryCaret(state, false); }
BENCHMARK(BM_TypeAt10000Carets)->Unit(benchmark::kMillisecond);

// Wall time: the walk runs on the highlighter's own thread.
void BM_TypeAt10000CaretsHighlighted(benchmark::State& state) { typeAtEveryCaret(state, true); }
BENCHMARK(BM_TypeAt10000CaretsHighlighted)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_TypeAt10000CaretsUntilHighlighted(benchmark::State& state) { typeAtEveryCaret(state, true, true); }
BENCHMARK(BM_TypeAt10000CaretsUntilHighlighted)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_UndoTypingAt10000Carets(benchmark::State& state) {
    Fixture f(false);
    f.placeCarets();
    for (auto _ : state) {
        state.PauseTiming();
        f.view.typeText(u"x");
        f.view.endTyping();
        state.ResumeTiming();
        f.view.undo();
    }
}
BENCHMARK(BM_UndoTypingAt10000Carets)->Unit(benchmark::kMillisecond);

void BM_SelectAll10000Occurrences(benchmark::State& state) {
    Fixture f(false);
    uint64_t first = f.buffer.lineStart(2) + 25;  // "needle0"
    size_t count = 0;
    for (auto _ : state) {
        f.view.setSelection(Selection{first, first + 6});
        count = f.view.selectAllOccurrences();
    }
    state.counters["selections"] = static_cast<double>(count);
}
BENCHMARK(BM_SelectAll10000Occurrences)->Unit(benchmark::kMillisecond);

}  // namespace
