// Snippet compilation: a typical snippet, and a large one with many nested constructs.
#include <benchmark/benchmark.h>

#include <string>

#include "snippets/dollar_converter.hpp"
#include "snippets/snippet_parser.hpp"

namespace {

const std::u16string kTypical = u"for (%{1:\"size_t\"} %{2:\"i\"} = 0; %{2} < %{3:\"count\"}; ++%{2}) {\n\t%{0:\"\"}\n}";

std::u16string largeSnippet() {
    std::u16string text;
    for (int i = 0; i < 2000; ++i) {
        text += u"line ";
        text += u"%{" + std::u16string(1, static_cast<char16_t>(u'1' + i % 9)) + u":\"default %{10:\"x\"} text\"}";
        text += u" %{VX_FILENAME/(\\w+)\\.(\\w+)/$2 (?1:$1:none)/g} 100% \\\"quoted\\\"\n";
    }
    return text;
}

void BM_CompileTypicalSnippet(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(VXNewSnippetParserCompile(kTypical));
}
BENCHMARK(BM_CompileTypicalSnippet);

void BM_CompileLargeSnippet(benchmark::State& state) {
    const std::u16string text = largeSnippet();
    if (VXNewSnippetParserCompile(text).failed) state.SkipWithError("the large snippet does not parse");
    for (auto _ : state) benchmark::DoNotOptimize(VXNewSnippetParserCompile(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size() * 2));
}
BENCHMARK(BM_CompileLargeSnippet);

void BM_ConvertDollarSnippet(benchmark::State& state) {
    const std::u16string text = u"for (${1:size_t} ${2:i} = 0; $2 < ${3:count}; ++$2) {\n\t${0:${TM_SELECTED_TEXT}}\n}";
    for (auto _ : state) benchmark::DoNotOptimize(vx::convertDollarSnippet(text));
}
BENCHMARK(BM_ConvertDollarSnippet);

}  // namespace
