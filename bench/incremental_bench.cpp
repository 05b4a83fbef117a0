// Re-highlighting after an edit in a 100,000-line C file (already highlighted once): a character
// typed inside a line, and "/*" typed at the top and deleted again (the walk goes to the end of
// the text and back). Each iteration makes the edit and undoes it, so one iteration is two edits
// each followed by its re-highlighting. The file has no block comment, so an opened one runs to
// its end and the walk with it. Run with --benchmark_repetitions=9 for medians.
#include <benchmark/benchmark.h>

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

void BM_RehighlightAfterOpeningCommentAtTop(benchmark::State& state) {
    Fixture& f = fixture();
    VXTextStorage& text = f.document.contents();
    const uint64_t at = f.highlighter->lineRange(2).location;
    for (auto _ : state) {
        text.replaceCharactersInRange({at, 0}, u"/*");
        text.replaceCharactersInRange({at, 2}, u"");
    }
}
BENCHMARK(BM_RehighlightAfterOpeningCommentAtTop)->Unit(benchmark::kMillisecond);

}  // namespace
