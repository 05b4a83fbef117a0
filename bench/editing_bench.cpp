// The editing engine at scale: one keystroke typed at 10,000 carets in a 100,000-line C file,
// and selecting the 10,000 occurrences of a word. The text lives in a document's text storage, as
// in the editor; with the highlighter attached every edit is re-highlighted as the editor's
// document would re-highlight it. Each typing iteration is undone outside the timing.
// Run: build/release/bench/editing_bench --benchmark_repetitions=5
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "document/single_file_document.hpp"
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
using bench::StorageBuffer;

struct Fixture {
    explicit Fixture(bool highlighted) {
        setenv("VX_TRUFFLES", (std::filesystem::path(VX_SOURCE_DIR) / "truffles").c_str(), 1);
        if (highlighted) {
            const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
            const VXSyntaxRuleset* ruleset = catalog.rulesetForLanguage(*catalog.languageNamed("c"));
            highlighter = std::make_unique<VXIncrementalHighlighter>(document, [ruleset](const DocumentLanguage&) { return ruleset; });
        }
        document.contents().replaceCharactersInRange({0, 0}, largeCFile());
        if (highlighter) highlighter->waitUntilSettled();
        view.setIndentation(4, true);
    }
    // A caret at the start of every tenth line.
    void placeCarets() {
        std::vector<Selection> carets;
        for (uint64_t line = 0; line < kCarets * 10ull; line += 10) carets.push_back(Selection::caretAt(buffer.lineStart(line)));
        view.setSelections(carets);
    }
    VXSingleFileDocument document;
    std::unique_ptr<VXIncrementalHighlighter> highlighter;
    StorageBuffer buffer{document};
    Host host;
    Columns columns;
    VXTextView view{buffer, document.undoManager(), host, columns};
};

void typeAtEveryCaret(benchmark::State& state, bool highlighted) {
    Fixture f(highlighted);
    f.placeCarets();
    for (auto _ : state) {
        f.view.typeText(u"x");
        f.view.endTyping();
        state.PauseTiming();
        f.view.undo();
        state.ResumeTiming();
    }
    state.counters["carets"] = static_cast<double>(f.view.selections().size());
}

void BM_TypeAt10000Carets(benchmark::State& state) { typeAtEveryCaret(state, false); }
BENCHMARK(BM_TypeAt10000Carets)->Unit(benchmark::kMillisecond);

void BM_TypeAt10000CaretsHighlighted(benchmark::State& state) { typeAtEveryCaret(state, true); }
BENCHMARK(BM_TypeAt10000CaretsHighlighted)->Unit(benchmark::kMillisecond);

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
