// Indentation detection and the highlighting gate over large texts.
//
//   build/release/bench/indentation_bench
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>

#include "document/tabdetection.hpp"

namespace {

// 100,000 lines of code-like text: nesting up to five levels of four spaces, some blank and
// comment lines, line lengths from 10 to 70 units.
std::u16string sourceLikeText(size_t lines) {
    std::mt19937 random(42);
    std::u16string text;
    int depth = 0;
    for (size_t i = 0; i < lines; ++i) {
        int roll = int(random() % 10);
        if (roll == 0) {
            text += u'\n';
            continue;
        }
        depth = std::clamp(depth + int(random() % 3) - 1, 0, 5);
        text.append(size_t(depth) * 4, u' ');
        if (roll == 1) text += u"// ";
        text.append(10 + random() % 60, u'a' + char16_t(random() % 26));
        text += u'\n';
    }
    return text;
}

void BM_DetectSpaces100kLines(benchmark::State& state) {
    const std::u16string text = sourceLikeText(100'000);
    for (auto _ : state) benchmark::DoNotOptimize(vx::detect(text));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size() * sizeof(char16_t)));
}
BENCHMARK(BM_DetectSpaces100kLines)->Unit(benchmark::kMillisecond);

void BM_DetectTabs100kLines(benchmark::State& state) {
    std::u16string text = sourceLikeText(100'000);
    // The same text indented with tabs: the vote is skipped, so this is the scan alone.
    std::u16string tabbed;
    for (size_t i = 0; i < text.size();) {
        size_t spaces = 0;
        while (i + spaces < text.size() && text[i + spaces] == u' ') ++spaces;
        tabbed.append(spaces / 4, u'\t');
        size_t end = text.find(u'\n', i + spaces);
        end = end == std::u16string::npos ? text.size() : end + 1;
        tabbed.append(text, i + spaces, end - i - spaces);
        i = end;
    }
    for (auto _ : state) benchmark::DoNotOptimize(vx::detect(tabbed));
}
BENCHMARK(BM_DetectTabs100kLines)->Unit(benchmark::kMillisecond);

void BM_ShouldHighlight2MUnits(benchmark::State& state) {
    std::u16string text = sourceLikeText(60'000);
    text.resize(2'000'000, u'x');  // ends in one long line
    for (auto _ : state) benchmark::DoNotOptimize(vx::shouldHighlight(text));
}
BENCHMARK(BM_ShouldHighlight2MUnits)->Unit(benchmark::kMicrosecond);

}  // namespace
