// The editor's reads of a project symbol index: the symbol list of one file (go to symbol) and the
// exact-name lookup (go to definition), each targeted under 5 ms on an index the size of
// /usr/include's. Point VX_BENCH_INDEX at a real index (`vx index /usr/include --db X`) for the
// figures; without it a generated index of 20,000 symbols is used (the suite's smoke run).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "intelligence/main_database.hpp"

namespace {

struct Fixture {
    std::unique_ptr<vx::VXXMainDatabase> db;
    std::string file;  // a file with many symbols
    std::string name;  // a name defined in several files
    std::string temporary;

    Fixture() {
        if (const char* path = std::getenv("VX_BENCH_INDEX"); path && *path) {
            db = std::make_unique<vx::VXXMainDatabase>(path);
        } else {
            temporary = (std::filesystem::temp_directory_path() / "vx-bench-index.vxindex").string();
            std::filesystem::remove(temporary);
            db = std::make_unique<vx::VXXMainDatabase>(temporary);
            generate();
        }
        db->syncWithConnection([&](vx::SqliteConnection& c) {
            auto rows = c.query(
                "SELECT resources.path, COUNT(*) AS n FROM symbols JOIN passes ON symbols.pass = passes.id JOIN resources ON "
                "passes.resource = resources.id GROUP BY resources.path ORDER BY n DESC LIMIT 1");
            if (rows.next()) file = rows.text(0);
            auto names = c.query("SELECT name, COUNT(*) AS n FROM symbols GROUP BY name HAVING n BETWEEN 2 AND 50 ORDER BY n DESC LIMIT 1");
            if (names.next()) name = names.text(0);
        });
    }
    ~Fixture() {
        db.reset();
        if (!temporary.empty())
            for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(temporary + suffix);
    }

    void generate() {
        db->syncTransaction([](vx::SqliteConnection& c) {
            auto symbol = c.prepared("INSERT INTO symbols (pass, name, qualified_name, type_code, range_line, range_column, range_length) "
                                     "VALUES (?, ?, ?, 'function', ?, 4, 8)");
            for (int file = 0; file < 200; ++file) {
                c.execute("INSERT INTO resources (name, path, language, is_ignored) VALUES ('f.c', ?, 'C', 0)",
                          {"/bench/dir" + std::to_string(file % 17) + "/file" + std::to_string(file) + ".c"});
                c.execute("INSERT INTO passes (resource, timestamp) VALUES (?, 0)", {c.lastInsertRowId()});
                const int64_t pass = c.lastInsertRowId();
                for (int line = 0; line < 100; ++line) {
                    const std::string name = "sym" + std::to_string((file * 100 + line) % 9000);
                    symbol.execute({pass, name, name, int64_t{line + 1}});
                }
            }
        });
    }
};

Fixture& fixture() {
    static Fixture instance;
    return instance;
}

void BM_SymbolListOfOneFile(benchmark::State& state) {
    auto& f = fixture();
    size_t rows = 0;
    for (auto _ : state) {
        auto symbols = f.db->symbolsOfFile(f.file);
        rows = symbols.size();
        benchmark::DoNotOptimize(symbols.data());
    }
    state.counters["symbols"] = static_cast<double>(rows);
}
BENCHMARK(BM_SymbolListOfOneFile)->Unit(benchmark::kMillisecond);

void BM_ExactNameLookup(benchmark::State& state) {
    auto& f = fixture();
    size_t rows = 0;
    for (auto _ : state) {
        auto symbols = f.db->symbolsNamed(f.name);
        rows = symbols.size();
        benchmark::DoNotOptimize(symbols.data());
    }
    state.counters["symbols"] = static_cast<double>(rows);
}
BENCHMARK(BM_ExactNameLookup)->Unit(benchmark::kMillisecond);

void BM_PrefixLookup(benchmark::State& state) {
    auto& f = fixture();
    const std::string prefix = f.name.substr(0, 3);
    for (auto _ : state) {
        auto symbols = f.db->symbolsWithPrefix(prefix);
        benchmark::DoNotOptimize(symbols.data());
    }
}
BENCHMARK(BM_PrefixLookup)->Unit(benchmark::kMillisecond);

}  // namespace
