#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "intelligence/main_database.hpp"

namespace vx {
namespace {

// An index with the awkward cases: a text without a file (NULL path), locals, names differing in
// case, LIKE's wildcards inside names, several files defining one name.
void fill(VXXMainDatabase& db) {
    db.syncTransaction([](SqliteConnection& c) {
        auto pass = [&](const SqlValue& path) {
            c.execute("INSERT INTO resources (name, path, language, is_ignored) VALUES ('x', ?, 'C', 0)", {path});
            c.execute("INSERT INTO passes (resource, timestamp) VALUES (?, 0)", {c.lastInsertRowId()});
            return c.lastInsertRowId();
        };
        const int64_t a = pass(std::string("/p/a.c")), b = pass(std::string("/p/b.c")), unnamed = pass(nullptr);
        const int64_t upper = pass(std::string("/P/A.C"));
        auto symbol = [&](int64_t p, const char* name, int64_t line, const char* type) {
            c.execute("INSERT INTO symbols (pass, name, qualified_name, type_code, range_line, range_column, range_length) "
                      "VALUES (?, ?, ?, ?, ?, 0, 1)",
                      {p, std::string(name), std::string(name), std::string(type), line});
        };
        symbol(a, "main", 1, "function");
        symbol(a, "counter", 2, "local");
        symbol(a, "Mainly", 3, "variable");
        symbol(a, "my_var", 4, "variable");
        symbol(a, "myXvar", 5, "variable");
        symbol(b, "main", 1, "function");
        symbol(b, "helper", 9, "function");
        symbol(unnamed, "draft", 7, "function");
        symbol(upper, "shout", 11, "function");
        for (int i = 0; i < 80; ++i) symbol(b, ("many" + std::to_string(i)).c_str(), 100 + i, "constant");
    });
}

std::vector<VXSymbol> run(VXXMainDatabase& db, const char* sql, const std::string& argument) {
    std::vector<VXSymbol> out;
    db.syncWithConnection([&](SqliteConnection& c) {
        for (auto rows = c.query(sql, {argument}); rows.next();) out.push_back(VXSymbolFromRow(rows));
    });
    return out;
}

std::vector<std::string> names(std::vector<VXSymbol> symbols) {
    std::vector<std::string> out;
    for (auto& s : symbols) out.push_back(s.path + ":" + s.name);
    std::sort(out.begin(), out.end());
    return out;
}

TEST(SymbolQueries, TheStatementsRunGiveTheRowsOfTheStatedTexts) {
    VXXMainDatabase db(":memory:");
    fill(db);
    for (const std::string path : {"/p/a.c", "/p/b.c", "/P/A.C", "/nowhere"})
        EXPECT_EQ(names(db.symbolsOfFile(path)), names(run(db, symbol_query_text::kSymbolsOfFile, path))) << path;
    for (const std::string name : {"main", "Main", "helper", "zzz"})
        EXPECT_EQ(names(db.symbolsNamed(name)), names(run(db, symbol_query_text::kExactName, name))) << name;
    for (const std::string prefix : {"ma", "MA", "my_", "m", "many1", ""}) {
        const auto mine = db.symbolsWithPrefix(prefix);
        const auto stated = run(db, symbol_query_text::kNamePrefix, prefix);
        EXPECT_EQ(mine.size(), stated.size()) << prefix;
        if (stated.size() < 50) {  // under the limit the rows are fixed
            EXPECT_EQ(names(mine), names(stated)) << prefix;
        }
    }
}

TEST(SymbolQueries, FileListHidesLocalsAndIncludesTextWithoutAFile) {
    VXXMainDatabase db(":memory:");
    fill(db);
    EXPECT_EQ(names(db.symbolsOfFile("/p/a.c")),
              (std::vector<std::string>{"/p/a.c:Mainly", "/p/a.c:main", "/p/a.c:myXvar", "/p/a.c:my_var", ":draft"}));
    EXPECT_EQ(names(db.symbolsNamed("main")), (std::vector<std::string>{"/p/a.c:main", "/p/b.c:main"}));
    // LIKE ignores ASCII case and reads "_" as any one character, as the stated text does.
    EXPECT_EQ(names(db.symbolsWithPrefix("MY_")), (std::vector<std::string>{"/p/a.c:myXvar", "/p/a.c:my_var"}));
    EXPECT_EQ(db.symbolsWithPrefix("many").size(), 50u);
}

TEST(SymbolQueries, AFileListHasOneSymbolPerLineInLineOrder) {
    VXXMainDatabase db(":memory:");
    db.syncTransaction([](SqliteConnection& c) {
        c.execute("INSERT INTO resources (name, path, language, is_ignored) VALUES ('x', NULL, 'C', 0)");
        c.execute("INSERT INTO passes (resource, timestamp) VALUES (?, 0)", {c.lastInsertRowId()});
        const int64_t unnamed = c.lastInsertRowId();
        c.execute("INSERT INTO resources (name, path, language, is_ignored) VALUES ('x', '/p/a.c', 'C', 0)");
        c.execute("INSERT INTO passes (resource, timestamp) VALUES (?, 0)", {c.lastInsertRowId()});
        const int64_t file = c.lastInsertRowId();
        for (const auto& [pass, name, line] : {std::tuple{file, "late", 30}, {file, "early", 2}, {unnamed, "draft", 30},
                                               {unnamed, "between", 9}, {file, "first", 1}})
            c.execute("INSERT INTO symbols (pass, name, type_code, range_line) VALUES (?, ?, 'function', ?)",
                      {pass, std::string(name), int64_t{line}});
    });
    std::vector<std::string> listed;
    for (const auto& s : db.symbolsOfFile("/p/a.c")) listed.push_back(std::to_string(s.rangeLine) + " " + s.name);
    // Line 30 is claimed by the file and by text without a file: the file's symbol is listed.
    EXPECT_EQ(listed, (std::vector<std::string>{"1 first", "2 early", "9 between", "30 late"}));
}

TEST(SymbolQueries, LookupsUseIndexes) {
    VXXMainDatabase db(":memory:");
    fill(db);
    auto plan = [&](const std::string& sql) {
        std::string text;
        db.syncWithConnection([&](SqliteConnection& c) {
            for (auto rows = c.query("EXPLAIN QUERY PLAN " + sql, {std::string("x")}); rows.next();) text += rows.text(3) + "\n";
        });
        return text;
    };
    // No full pass over the symbols table for any of the three.
    const std::string prefixSql = "SELECT symbols.*, resources.path FROM symbols JOIN passes ON symbols.pass = passes.id JOIN resources ON "
                                  "passes.resource = resources.id WHERE symbols.name LIKE ? GROUP BY symbols.range_line, resources.path LIMIT 50";
    EXPECT_EQ(plan(symbol_query_text::kExactName).find("SCAN symbols"), std::string::npos) << plan(symbol_query_text::kExactName);
    EXPECT_EQ(plan(prefixSql).find("SCAN symbols"), std::string::npos) << plan(prefixSql);
}

}  // namespace
}  // namespace vx
