// Parsing speed of self-ml on a large definition-like text (about 12 MB), and the writer's.
// Run: build/release/bench/selfml_bench --benchmark_min_time=2
#include <benchmark/benchmark.h>

#include <string>

#include "selfml/sfnode.hpp"
#include "selfml/sfwriter.hpp"

namespace {

// Zones with regexes, lists of words, captures, comments: the shapes language files are made of.
const std::string& definitionLikeText() {
    static const std::string text = [] {
        const std::string zone = R"(
    # a line comment between zones
    (zone string.quoted.double.%
        (start ["])
        (end ["])
        (subzones
            (zone constant.character.escape (match [\\(?:[abfnrtv'"\\?]|[0-7]{1,3}|x[0-9a-fA-F]+)]))
            (include format-placeholders)))
    (zone keyword.control.%
        (match (list if else for while do switch case default break continue return goto)
               (boundary.both)))
    (zone meta.function.%
        (match (regex [^\s*([A-Za-z_][A-Za-z0-9_]*)\s*(\()]
                      (1 entity.name.function)
                      (2 punctuation.definition.parameters.begin))))
    {a block comment { with a nested one } between zones}
    (zone comment.block.% (start `/*`) (end `*/`) (inner-identifier comment.block.inner))
)";
        std::string out = "(root source.bench\n";
        for (int i = 0; out.size() < 12'000'000; ++i) {
            std::string copy = zone;
            for (size_t at; (at = copy.find('%')) != std::string::npos;) copy.replace(at, 1, std::to_string(i));
            out += copy;
        }
        out += ")\n";
        return out;
    }();
    return text;
}

void BM_ParseDefinitionLikeText(benchmark::State& state) {
    const std::string& text = definitionLikeText();
    for (auto _ : state) {
        SFNode* root = SFNodeCreateFromBytes(text.data(), text.size());
        benchmark::DoNotOptimize(root);
        SFNodeFree(root);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseDefinitionLikeText)->Unit(benchmark::kMillisecond);

void BM_WriteDefinitionLikeText(benchmark::State& state) {
    const std::string& text = definitionLikeText();
    SFNode* root = SFNodeCreateFromBytes(text.data(), text.size());
    for (auto _ : state) {
        std::string written = vx::SFNodeSelfmlRepresentation(root);
        benchmark::DoNotOptimize(written.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
    SFNodeFree(root);
}
BENCHMARK(BM_WriteDefinitionLikeText)->Unit(benchmark::kMillisecond);

}  // namespace
