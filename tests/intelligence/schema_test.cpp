#include <gtest/gtest.h>

#include "intelligence/main_database.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

std::vector<std::string> strings(VXXDatabase& db, const std::string& sql) {
    std::vector<std::string> out;
    db.syncWithConnection([&](SqliteConnection& c) {
        for (auto rows = c.query(sql); rows.next();) out.push_back(rows.text(0));
    });
    return out;
}

int64_t integer(VXXDatabase& db, const std::string& sql) {
    int64_t n = -1;
    db.syncWithConnection([&](SqliteConnection& c) { n = c.integerForQuery(sql).value_or(-1); });
    return n;
}

// A resource with one pass; answers the pass.
int64_t addPass(SqliteConnection& c, const std::string& path) {
    c.execute("INSERT INTO resources (name, path, language, is_ignored) VALUES ('f', ?, 'C', 0)", {path});
    const int64_t resource = c.lastInsertRowId();
    c.execute("INSERT INTO passes (resource, timestamp, generator_type, generator_name) VALUES (?, 1, 'ctags', 'ctags')", {resource});
    return c.lastInsertRowId();
}

void addSymbol(SqliteConnection& c, int64_t pass, const std::string& name, int64_t line, const std::string& type = "function") {
    c.execute("INSERT INTO symbols (pass, name, type_code, range_line) VALUES (?, ?, ?, ?)", {pass, name, type, line});
}

TEST(VXXMainDatabase, FreshIndexHasTheStatedSchema) {
    test::TempDir dir;
    VXXMainDatabase db(dir.path() + "/p.vxindex");
    EXPECT_EQ(strings(db, "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%' ORDER BY name"),
              (std::vector<std::string>{"fvxmetadata", "passes", "resources", "symbols"}));
    // The second "symbols_index" statement failed: the name index is the only one of that name.
    EXPECT_EQ(strings(db, "SELECT name FROM pragma_index_info('symbols_index') ORDER BY seqno"),
              (std::vector<std::string>{"name", "type_code"}));
    EXPECT_EQ(strings(db, "SELECT name FROM pragma_index_info('resources_index')"), (std::vector<std::string>{"path"}));
    EXPECT_EQ(strings(db, "SELECT name FROM pragma_index_info('passes_index')"), (std::vector<std::string>{"resource"}));
    EXPECT_EQ(integer(db, "SELECT COUNT(*) FROM sqlite_master WHERE type = 'index' AND sql LIKE '%range_line, pass%'"), 0);
    EXPECT_EQ(db.version(), 1);  // the base migration, then the exact-case lookup indexes
    EXPECT_EQ(integer(db, "PRAGMA auto_vacuum"), 2);  // incremental
    EXPECT_EQ(strings(db, "PRAGMA journal_mode"), (std::vector<std::string>{"wal"}));
}

TEST(VXXMainDatabase, OneSymbolPerLinePerPassAndDeletesCascade) {
    VXXMainDatabase db(":memory:");
    db.syncTransaction([](SqliteConnection& c) {
        const int64_t a = addPass(c, "/p/a.c");
        const int64_t b = addPass(c, "/p/b.c");
        addSymbol(c, a, "first", 3);
        addSymbol(c, a, "second", 3);  // same line, same pass: replaces
        addSymbol(c, b, "other", 3);   // same line, another pass: stays
    });
    EXPECT_EQ(strings(db, "SELECT name FROM symbols ORDER BY name"), (std::vector<std::string>{"other", "second"}));
    db.syncTransaction([](SqliteConnection& c) { c.execute("DELETE FROM resources WHERE path = '/p/a.c'"); });
    EXPECT_EQ(integer(db, "SELECT COUNT(*) FROM passes"), 1);
    EXPECT_EQ(strings(db, "SELECT name FROM symbols"), (std::vector<std::string>{"other"}));
}

TEST(VXXMainDatabase, MergeCopiesTheTablesThatDoNotCollide) {
    test::TempDir dir;
    VXXMainDatabase into(dir.path() + "/into.vxindex");
    VXXMainDatabase other(dir.path() + "/other.vxindex");
    into.syncTransaction([](SqliteConnection& c) { addSymbol(c, addPass(c, "/p/a.c"), "mine", 1); });
    other.syncTransaction([](SqliteConnection& c) {
        c.execute("INSERT INTO resources (id, path) VALUES (2, '/p/b.c')");  // no clash on resources
        c.execute("INSERT INTO passes (id, resource) VALUES (1, 2)");         // clashes with into's pass 1
        c.execute("INSERT INTO symbols (id, pass, name, range_line) VALUES (9, 1, 'theirs', 4)");
    });
    into.mergeOutOf(other);
    EXPECT_EQ(strings(into, "SELECT path FROM resources ORDER BY id"), (std::vector<std::string>{"/p/a.c", "/p/b.c"}));
    EXPECT_EQ(integer(into, "SELECT COUNT(*) FROM passes"), 1);
    EXPECT_EQ(strings(into, "SELECT name FROM symbols ORDER BY id"), (std::vector<std::string>{"mine", "theirs"}));
    EXPECT_EQ(integer(into, "SELECT COUNT(*) FROM pragma_database_list"), 1);
}

}  // namespace
}  // namespace vx
