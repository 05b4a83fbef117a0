// A first index of a large tree is loaded with the name indexes built afterwards; whatever
// happens during the load, the index ends with both and the lookups find the symbols.
#include <gtest/gtest.h>

#include <filesystem>

#include "intelligence/ctags_runner.hpp"
#include "intelligence/project_indexer.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

std::vector<std::string> nameIndexes(VXXMainDatabase& db) {
    std::vector<std::string> names;
    db.syncWithConnection([&](SqliteConnection& c) {
        for (auto rows = c.query("SELECT name FROM sqlite_master WHERE type = 'index' AND name IN ('symbols_index', "
                                 "'symbols_name_index') ORDER BY name");
             rows.next();)
            names.push_back(rows.text(0));
    });
    return names;
}

TEST(BulkLoad, AFirstLargeIndexEndsWithItsNameIndexesEvenAfterAnInterruptedLoad) {
    if (VXCtagsExecutable().empty()) GTEST_SKIP() << "universal-ctags is not installed";
    test::TempDir project, store;
    for (int i = 0; i < 260; ++i)
        project.write("src/f" + std::to_string(i) + ".c", "int function" + std::to_string(i) + "(void) { return " +
                                                              std::to_string(i) + "; }\n");
    const std::string root = std::filesystem::canonical(project.path()).string();
    const std::vector<std::string> both = {"symbols_index", "symbols_name_index"};

    VXXMainDatabase db(store.path() + "/index.vxindex");
    VXProjectIndexer indexer(db);
    const auto summary = indexer.indexDirectory(root);
    EXPECT_EQ(summary.indexed, 260u);
    EXPECT_EQ(nameIndexes(db), both);
    ASSERT_EQ(db.symbolsNamed("function137").size(), 1u);
    EXPECT_EQ(db.symbolsNamed("function137")[0].path, root + "/src/f137.c");

    // A load cut short leaves the indexes dropped; the next scan, with nothing to read, puts them back.
    db.syncWithConnection([](SqliteConnection& c) {
        c.execute("DROP INDEX symbols_index");
        c.execute("DROP INDEX symbols_name_index");
    });
    EXPECT_EQ(indexer.indexDirectory(root).indexed, 0u);
    EXPECT_EQ(nameIndexes(db), both);
}

}  // namespace
}  // namespace vx
