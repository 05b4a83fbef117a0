// The editor reads the index while the indexer writes it: a read never waits for the writer.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "intelligence/main_database.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

TEST(IndexConcurrency, ReadsNeverWaitForTheWriter) {
    test::TempDir dir;
    const std::string path = dir.path() + "/p.vxindex";
    VXXMainDatabase writer(path);
    VXXMainDatabase reader(path);
    // With no patience at all, any lock the writer held would fail a read at once.
    reader.syncWithConnection([](SqliteConnection& c) { c.setBusyTimeout(0); });

    std::atomic<bool> stop = false;
    std::atomic<int> batches = 0;
    std::thread writing([&] {
        for (int batch = 0; !stop && batch < 2000; ++batch) {
            writer.syncTransaction([&](SqliteConnection& c) {
                c.execute("INSERT INTO resources (path) VALUES (?)", {"/p/f" + std::to_string(batch)});
                c.execute("INSERT INTO passes (resource, timestamp) VALUES (?, 0)", {c.lastInsertRowId()});
                const int64_t pass = c.lastInsertRowId();
                for (int line = 0; line < 50; ++line)
                    c.execute("INSERT INTO symbols (pass, name, type_code, range_line) VALUES (?, 'name', 'function', ?)",
                              {pass, int64_t{line}});
            });
            ++batches;
        }
    });
    // A transaction held open by the writer in the middle of the reads.
    int64_t last = 0, failures = 0, reads = 0;
    while (batches < 20) std::this_thread::yield();
    for (; reads < 400; ++reads) {
        reader.syncWithConnection([&](SqliteConnection& c) {
            auto count = c.integerForQuery("SELECT COUNT(*) FROM symbols");
            if (!count) {
                ++failures;
                return;
            }
            EXPECT_GE(*count, last);  // whole transactions appear, never part of one
            EXPECT_EQ(*count % 50, 0);
            last = *count;
        });
        if (reads == 200)
            writer.syncWithConnection([&](SqliteConnection& c) {
                c.execute("BEGIN IMMEDIATE");
                c.execute("INSERT INTO resources (path) VALUES ('/p/held')");
                reader.syncWithConnection([&](SqliteConnection& r) {
                    if (!r.integerForQuery("SELECT COUNT(*) FROM resources")) ++failures;
                });
                c.execute("COMMIT");
            });
    }
    stop = true;
    writing.join();
    EXPECT_EQ(failures, 0);
    EXPECT_GT(last, 0);
}

}  // namespace
}  // namespace vx
