// Selector scoring and compiling, sized like a theme: 200 rules against an 8-deep context.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "selectors/selector.hpp"

namespace {

using namespace vx;

// Scope names a theme styles, and the shapes its selectors take.
const char* const kScopes[] = {
    "comment", "comment.line", "comment.block.documentation", "string", "string.quoted.double",
    "string.quoted.single", "string.regexp", "constant.numeric", "constant.language", "constant.character.escape",
    "keyword", "keyword.control", "keyword.operator", "storage.type", "storage.modifier", "entity.name.function",
    "entity.name.type", "entity.name.tag", "entity.other.attribute-name", "entity.other.inherited-class",
    "variable.parameter", "variable.language", "support.function", "support.class", "support.type",
    "meta.tag", "meta.function-call", "meta.embedded", "markup.bold", "markup.italic", "markup.heading",
    "punctuation.definition.string", "punctuation.section.embedded", "invalid.illegal", "invalid.deprecated",
    "source.js", "source.python", "text.html", "meta.brace.curly", "meta.block"};
constexpr int kScopeCount = sizeof(kScopes) / sizeof(kScopes[0]);

// 200 selectors; a non-zero generation adds a suffix to every scope, giving texts (and scopes)
// never seen before.
std::vector<std::string> themeSelectors(int generation) {
    auto scope = [generation](int i) {
        std::string name = kScopes[i % kScopeCount];
        if (generation) name += ".g" + std::to_string(generation);
        return name;
    };
    std::vector<std::string> selectors;
    for (int i = 0; selectors.size() < 200; ++i) {
        switch (i % 5) {
        case 0: selectors.push_back(scope(i)); break;
        case 1: selectors.push_back(scope(i + 7) + " " + scope(i)); break;
        case 2: selectors.push_back(scope(i) + ", " + scope(i + 3)); break;
        case 3: selectors.push_back(scope(i + 11) + " " + scope(i) + " - " + scope(i + 5)); break;
        case 4: selectors.push_back("(" + scope(i) + " | " + scope(i + 2) + ") - " + scope(i + 9)); break;
        }
    }
    return selectors;
}

VXContext eightDeep() {
    const VXScope scopes[] = {VXScope("text.html.basic"), VXScope("meta.embedded.block.js"), VXScope("source.js"),
                              VXScope("meta.function.js"), VXScope("meta.block.js"), VXScope("meta.brace.curly.js"),
                              VXScope("string.quoted.double.js"),
                              VXScope("punctuation.definition.string.begin.js")};
    return VXContext::fromScopes(scopes);
}

struct Rule {
    const VXSelector* selector;
};

void BM_BestItemTheme200Deep8(benchmark::State& state) {
    std::vector<Rule> rules;
    for (const std::string& text : themeSelectors(0)) rules.push_back({VXSelector::compileString(text)});
    const VXContext context = eightDeep();
    for (auto _ : state) benchmark::DoNotOptimize(bestItemInArray(rules, &Rule::selector, context));
    state.counters["ns_per_selector"] =
        benchmark::Counter(double(state.iterations()) * double(rules.size()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_BestItemTheme200Deep8)->Unit(benchmark::kMicrosecond);

void BM_CompileTheme200Cold(benchmark::State& state) {
    static int generation = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::string> texts = themeSelectors(++generation);
        state.ResumeTiming();
        for (const std::string& text : texts) benchmark::DoNotOptimize(VXSelector::compileString(text));
    }
}
// Every iteration adds 200 selectors to the process-wide cache; a bounded count keeps it small.
BENCHMARK(BM_CompileTheme200Cold)->Unit(benchmark::kMicrosecond)->Iterations(300);

void BM_CompileTheme200Cached(benchmark::State& state) {
    const std::vector<std::string> texts = themeSelectors(0);
    for (const std::string& text : texts) VXSelector::compileString(text);
    for (auto _ : state)
        for (const std::string& text : texts) benchmark::DoNotOptimize(VXSelector::compileString(text));
}
BENCHMARK(BM_CompileTheme200Cached)->Unit(benchmark::kMicrosecond);

}  // namespace
