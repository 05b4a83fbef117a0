// Documents: opening a large ASCII file (read, decode, line-ending detection, line index), typing
// at random places in it, and reading lines back. The file is 100 MB unless VX_DOCUMENT_BENCH_MB
// says otherwise; it is written once to the temporary folder and removed at exit.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>

#include "document/single_file_document.hpp"

namespace {

struct BenchFile {
    std::string path;
    uint64_t size = 0;

    BenchFile() {
        const char* megabytes = std::getenv("VX_DOCUMENT_BENCH_MB");
        const uint64_t wanted = (megabytes ? std::strtoull(megabytes, nullptr, 10) : 100) << 20;
        const char* folder = std::getenv("TMPDIR");
        path = std::string(folder && *folder ? folder : "/tmp") + "/vx-document-bench-" + std::to_string(::getpid()) + ".txt";
        // Lines of 20 to 99 characters, like source code.
        std::string block;
        std::mt19937 random(7);
        while (block.size() < (1 << 20)) {
            const size_t length = 20 + random() % 80;
            for (size_t i = 0; i < length; ++i) block += static_cast<char>('a' + random() % 26);
            block += '\n';
        }
        std::ofstream out(path, std::ios::binary);
        for (uint64_t written = 0; written < wanted; written += block.size()) out.write(block.data(), static_cast<std::streamsize>(block.size()));
        out.close();
        size = wanted + block.size() - 1 - (wanted + block.size() - 1) % block.size();
    }
    ~BenchFile() { std::remove(path.c_str()); }
};

const BenchFile& benchFile() {
    static BenchFile file;
    return file;
}

// The process's peak resident memory in bytes since the last reset.
uint64_t peakResident() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::strtoull(line.c_str() + 6, nullptr, 10) * 1024;
    return 0;
}

void resetPeakResident() { std::ofstream("/proc/self/clear_refs") << "5"; }

void BM_OpenLargeASCIIFile(benchmark::State& state) {
    const auto& file = benchFile();
    double worstPeak = 0;
    for (auto _ : state) {
        resetPeakResident();
        {
            vx::VXSingleFileDocument document;
            std::string error;
            if (!document.readFromURL(file.path, "txt", &error)) state.SkipWithError(error.c_str());
            benchmark::DoNotOptimize(document.contents().lineCount());
            state.PauseTiming();
            worstPeak = std::max(worstPeak, static_cast<double>(peakResident()));
        }
        state.ResumeTiming();
    }
    state.counters["fileMB"] = static_cast<double>(file.size) / (1 << 20);
    state.counters["peakMB"] = worstPeak / (1 << 20);
    state.counters["peakPerFileSize"] = worstPeak / static_cast<double>(file.size);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size));
}
BENCHMARK(BM_OpenLargeASCIIFile)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_TenThousandRandomInserts(benchmark::State& state) {
    vx::VXSingleFileDocument document;
    std::string error;
    if (!document.readFromURL(benchFile().path, "txt", &error)) state.SkipWithError(error.c_str());
    std::mt19937_64 random(42);
    for (auto _ : state) {
        for (int i = 0; i < 10'000; ++i) {
            const uint64_t at = random() % (document.contents().length() + 1);
            document.contents().replaceCharactersInRange({at, 0}, u"x");
        }
    }
    state.counters["insertsPerIteration"] = 10'000;
}
BENCHMARK(BM_TenThousandRandomInserts)->Unit(benchmark::kMillisecond);

void BM_RandomLineReads(benchmark::State& state) {
    vx::VXSingleFileDocument document;
    std::string error;
    if (!document.readFromURL(benchFile().path, "txt", &error)) state.SkipWithError(error.c_str());
    const auto& text = document.contents();
    std::mt19937_64 random(3);
    for (auto _ : state) {
        const vx::Range line = text.lineContentsRange(random() % text.lineCount());
        benchmark::DoNotOptimize(text.substring(line));
    }
}
BENCHMARK(BM_RandomLineReads);

}  // namespace
