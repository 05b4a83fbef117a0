// Re-highlighting after an edit in a 100,000-line C file (already highlighted once), the first
// 50 lines shown: a character typed inside a line, and "/*" typed at the top and deleted again
// (the walk goes to the end of the text and back). Each iteration makes the edit and undoes it,
// so one iteration is two edits. The file has no block comment, so an opened one runs to its end
// and the walk with it: the edit itself re-parses the shown lines, the rest goes on in the
// background (OpeningCommentAtTop times the edits, ...AndWholeWalk waits for the walks too).
// KeystrokesDuringBackgroundWalk types on a shown line while such a walk runs and reports the
// slowest keystroke (target: under 5 ms). Run with --benchmark_repetitions=9 for medians.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "document/single_file_document.hpp"
#include "syntax/incremental_highlighter.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/mapped_string.hpp"

namespace {

using namespace vx;

constexpr int kLines = 100000;

// Ordinary C: functions with comments, strings, numbers and calls.
std::u16string largeCFile() {
    std::string text = "#include <stdio.h>\n\n";
    for (int i = 0, lines = 2; lines < kLines; ++i, lines += 7) {
        const std::string n = std::to_string(i);
        text += "// function " + n + ": adds its arguments\n";
        text += "static int add" + n + "(int a, int b) {\n";
        text += "    const char *label = \"add" + n + "\";\n";
        text += "    printf(\"%s %d\\n\", label, a + b * " + n + ");\n";
        text += "    return a + b; // done\n";
        text += "}\n\n";
    }
    return utf16FromUtf8(text);
}

struct Fixture {
    Fixture() {
        setenv("VX_TRUFFLES", (std::filesystem::path(VX_SOURCE_DIR) / "truffles").c_str(), 1);
        const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
        ruleset = catalog.rulesetForLanguage(*catalog.languageNamed("c"));
        highlighter = std::make_unique<VXIncrementalHighlighter>(document, [this](const DocumentLanguage&) { return ruleset; });
        document.contents().replaceCharactersInRange({0, 0}, largeCFile());
        highlighter->setVisibleLines(0, 50);
        highlighter->waitUntilSettled();
    }
    VXSingleFileDocument document;
    const VXSyntaxRuleset* ruleset = nullptr;
    std::unique_ptr<VXIncrementalHighlighter> highlighter;
};

Fixture& fixture() {
    static Fixture shared;
    return shared;
}

void BM_RehighlightAfterKeystrokeInsideLine(benchmark::State& state) {
    Fixture& f = fixture();
    VXTextStorage& text = f.document.contents();
    // Inside the string on a line in the middle of the file.
    const uint64_t at = f.highlighter->lineRange(kLines / 2 + 2).location + 30;
    for (auto _ : state) {
        text.replaceCharactersInRange({at, 0}, u"x");
        text.replaceCharactersInRange({at, 1}, u"");
    }
}
BENCHMARK(BM_RehighlightAfterKeystrokeInsideLine)->Unit(benchmark::kMicrosecond);

// "/*" typed at the top and deleted again; with `wholeWalk` each edit also waits for its walk.
void openAndCloseCommentAtTop(benchmark::State& state, bool wholeWalk) {
    Fixture& f = fixture();
    VXTextStorage& text = f.document.contents();
    const uint64_t at = f.highlighter->lineRange(2).location;
    for (auto _ : state) {
        text.replaceCharactersInRange({at, 0}, u"/*");
        if (wholeWalk) f.highlighter->waitUntilSettled();
        text.replaceCharactersInRange({at, 2}, u"");
        if (wholeWalk) f.highlighter->waitUntilSettled();
    }
    f.highlighter->waitUntilSettled();
}

void BM_RehighlightAfterOpeningCommentAtTop(benchmark::State& state) { openAndCloseCommentAtTop(state, false); }
BENCHMARK(BM_RehighlightAfterOpeningCommentAtTop)->Unit(benchmark::kMillisecond);

void BM_RehighlightAfterOpeningCommentAtTopAndWholeWalk(benchmark::State& state) {
    openAndCloseCommentAtTop(state, true);
}
BENCHMARK(BM_RehighlightAfterOpeningCommentAtTopAndWholeWalk)->Unit(benchmark::kMillisecond);

void BM_KeystrokesDuringBackgroundWalk(benchmark::State& state) {
    Fixture& f = fixture();
    VXTextStorage& text = f.document.contents();
    const uint64_t top = f.highlighter->lineRange(2).location;
    using Clock = std::chrono::steady_clock;
    double slowest = 0, total = 0;
    int64_t keystrokes = 0, duringWalk = 0;
    for (auto _ : state) {
        // "/*" at the top starts a walk over the whole file; then a word typed on a shown line.
        text.replaceCharactersInRange({top, 0}, u"/*");
        const uint64_t at = f.highlighter->lineRange(20).location + 8;
        for (int k = 0; k < 20; ++k) {
            if (!f.highlighter->isSettled()) ++duringWalk;
            const auto start = Clock::now();
            text.replaceCharactersInRange({at + static_cast<uint64_t>(k), 0}, u"x");
            const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
            slowest = std::max(slowest, ms);
            total += ms;
            ++keystrokes;
        }
        text.replaceCharactersInRange({at, 20}, u"");
        text.replaceCharactersInRange({top, 2}, u"");
        f.highlighter->waitUntilSettled();
    }
    state.counters["slowest_ms"] = slowest;
    state.counters["mean_ms"] = total / static_cast<double>(std::max<int64_t>(keystrokes, 1));
    state.counters["during_walk"] = static_cast<double>(duringWalk) / static_cast<double>(std::max<int64_t>(keystrokes, 1));
}
BENCHMARK(BM_KeystrokesDuringBackgroundWalk)->Unit(benchmark::kMillisecond);

}  // namespace
