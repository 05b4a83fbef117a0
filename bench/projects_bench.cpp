// Quick open over generated project trees held in memory: one search per iteration at 100,000 and
// 500,000 paths (matching, scoring and sorting on every core), the symbol-list ranking, and the
// memory an index costs per path beyond the text of the paths.
//
//     build/release/bench/projects_bench --benchmark_filter=Query
//
// bench/quick_open_peers.py compares indexing and a query with the command-line tools people use.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>

#include "projects/quick_open.hpp"
#include "projects/smart_sort.hpp"

namespace {

// Paths shaped like a large source tree: a few top folders, nested modules 2 to 6 deep, source
// files named from common words with a mix of extensions.
std::vector<std::string> generatedPaths(size_t count) {
    static const char* const words[] = {
        "src",     "lib",   "core",   "util",   "view",   "model",  "controller", "server", "client", "test",
        "string",  "parse", "render", "layout", "cache",  "buffer", "network",    "http",   "json",   "config",
        "widget",  "event", "thread", "memory", "stream", "index",  "search",     "query",  "table",  "file",
        "window",  "text",  "editor", "plugin", "color",  "theme",  "syntax",     "token",  "scope",  "match"};
    static const char* const extensions[] = {".c", ".h", ".cpp", ".hpp", ".py", ".js", ".ts", ".go", ".rs", ".md", ".json", ".txt"};
    std::mt19937 random(12345);
    auto word = [&] { return std::string(words[random() % std::size(words)]); };
    std::vector<std::string> paths;
    paths.reserve(count);
    while (paths.size() < count) {
        std::string folder = word();
        const int depth = 1 + static_cast<int>(random() % 5);
        for (int d = 0; d < depth; ++d) folder += "/" + word() + (random() % 3 == 0 ? "_" + word() : "");
        const size_t files = 5 + random() % 40;
        for (size_t f = 0; f < files && paths.size() < count; ++f) {
            std::string name = word() + (random() % 2 ? "_" + word() : "") + (random() % 4 == 0 ? std::to_string(f) : "");
            if (random() % 3 == 0) name[0] = static_cast<char>(name[0] - 32);  // some CamelCase
            paths.push_back(folder + "/" + name + extensions[random() % std::size(extensions)]);
        }
    }
    return paths;
}

vx::QuickOpenIndex& indexOf(size_t count) {
    static std::map<size_t, std::unique_ptr<vx::QuickOpenIndex>> indexes;
    auto& index = indexes[count];
    if (!index) {
        index = std::make_unique<vx::QuickOpenIndex>();
        const auto paths = generatedPaths(count);
        index->searchIndexFiles.queue.sync([&] {
            for (const auto& path : paths)
                index->searchIndexFiles.add(path, vx::lowercasePath(path),
                                            static_cast<uint32_t>(std::count(path.begin(), path.end(), '/') + 1));
        });
    }
    return *index;
}

void BM_QuickOpenQuery(benchmark::State& state) {
    vx::QuickOpenIndex& index = indexOf(static_cast<size_t>(state.range(0)));
    const char* const queries[] = {"vie", "src/vie", "contr", "util/str", "rendlay", "jsonpars"};
    size_t rows = 0, i = 0;
    for (auto _ : state) rows += vx::quickOpenRows(index, queries[i++ % std::size(queries)]).size();
    state.counters["rows"] = benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_QuickOpenQuery)->Arg(100'000)->Arg(500'000)->Unit(benchmark::kMillisecond)->UseRealTime();

// Memory per path: the index's blocks and item records, less the path text and its lower-cased
// copy. Reported as counters; the loop only re-reads the sizes.
void BM_QuickOpenIndexMemory(benchmark::State& state) {
    vx::QuickOpenIndex& index = indexOf(100'000);
    const auto& files = index.searchIndexFiles;
    size_t text = 0, pathText = 0;
    for (const auto& item : files.items) {
        text += item.pathLength + item.lowerLength;
        pathText += item.pathLength;
    }
    // A deque keeps its records in 512-byte blocks plus a map of block pointers.
    const size_t itemBlocks = (files.items.size() * sizeof(vx::path_item) + 511) / 512;
    const size_t total = files.text.bytesReserved() + itemBlocks * 512 + itemBlocks * sizeof(void*);
    for (auto _ : state) benchmark::DoNotOptimize(files.items.size());
    const double paths = static_cast<double>(files.items.size());
    state.counters["bytes_per_path"] = static_cast<double>(total) / paths;
    state.counters["beyond_text"] = static_cast<double>(total - text) / paths;
    state.counters["beyond_path_text"] = static_cast<double>(total - pathText) / paths;
}
BENCHMARK(BM_QuickOpenIndexMemory)->Iterations(1);

void BM_SmartSort(benchmark::State& state) {
    std::vector<vx::SmartSortEntry> entries;
    for (const auto& path : generatedPaths(static_cast<size_t>(state.range(0)))) entries.push_back({path.substr(path.rfind('/') + 1), {}});
    for (auto _ : state) benchmark::DoNotOptimize(vx::smartSortOrder("parse", entries));
}
BENCHMARK(BM_SmartSort)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace
