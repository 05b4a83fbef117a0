// Highlighting: loading a bundled language, then whole files through the line highlighter
// (events only, no output), on the bundled samples and, when present, the peer comparison's
// files (bench/highlight_peers.sh installs them). Bytes per second are UTF-8 bytes of the file.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "platform/file_cache.hpp"
#include "syntax/document_highlighter.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/mapped_string.hpp"

namespace {

using namespace vx;

const VXLanguageCatalog& catalog() {
    static VXLanguageCatalog* shared = [] {
        auto* made = new VXLanguageCatalog();
        made->loadTruffleDirectories({std::string(VX_SOURCE_DIR) + "/truffles"});
        return made;
    }();
    return *shared;
}

void BM_LoadLanguage(benchmark::State& state, const char* name) {
    const VXLanguage* language = catalog().languageNamed(name);
    if (!language) return state.SkipWithError("language not bundled");
    for (auto _ : state) {
        VXFileCache::sharedFileCache().clear();
        VXSyntaxZoneManager manager;
        catalog().attachTo(manager);
        benchmark::DoNotOptimize(manager.rulesetForLanguage(language->folderName));
    }
}
BENCHMARK_CAPTURE(BM_LoadLanguage, cpp, "c++")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LoadLanguage, html, "html")->Unit(benchmark::kMillisecond);

void BM_HighlightFile(benchmark::State& state, const char* path, const char* languageName) {
    auto bytes = readWholeFile(path[0] == '/' ? std::string(path) : std::string(VX_SOURCE_DIR) + "/" + path);
    if (!bytes) return state.SkipWithError("file not present");
    static VXSyntaxZoneManager manager;
    catalog().attachTo(manager);
    const VXLanguage* language = catalog().languageNamed(languageName);
    VXSyntaxRuleset* ruleset = language ? manager.rulesetForLanguage(language->folderName) : nullptr;
    if (!ruleset) return state.SkipWithError("language not bundled");
    const std::u16string text = utf16FromUtf8(*bytes);
    highlightText(text, *ruleset);  // compiles what is compiled lazily
    for (auto _ : state) benchmark::DoNotOptimize(highlightText(text, *ruleset));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes->size()));
}
BENCHMARK_CAPTURE(BM_HighlightFile, sample_cpp, "tests/data/syntax/c++/interval_map.cpp", "c++")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HighlightFile, sample_html, "tests/data/syntax/html/dashboard.html", "html")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HighlightFile, sqlite3_h, "/usr/include/sqlite3.h", "c")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HighlightFile, stl_algo_h, "/usr/include/c++/12/bits/stl_algo.h", "c++")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HighlightFile, pydecimal_py, "/usr/lib/python3.11/_pydecimal.py", "python")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HighlightFile, jquery_js, "/usr/share/javascript/jquery/jquery.js", "javascript")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HighlightFile, jquery_min_js, "/usr/share/javascript/jquery/jquery.min.js", "javascript")->Unit(benchmark::kMillisecond);

}  // namespace
