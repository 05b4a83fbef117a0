#include "intelligence/main_database.hpp"

#include <algorithm>

namespace vx {
namespace {

void baseMigration(SqliteConnection& db) {
    // The last statement reuses the name of the one before it and fails; the index file keeps the
    // name index only. That is how every existing index looks, so it stays.
    VXXDatabase::executeEach(db, {
        "CREATE TABLE resources (id INTEGER PRIMARY KEY AUTOINCREMENT,  name TEXT, path TEXT, language TEXT, is_ignored INTEGER)",
        "CREATE INDEX resources_index ON resources (path COLLATE NOCASE)",
        "CREATE TABLE passes (id INTEGER PRIMARY KEY AUTOINCREMENT,  resource INTEGER REFERENCES resources(id) ON DELETE CASCADE, timestamp REAL, generator_type TEXT, generator_name TEXT)",
        "CREATE INDEX passes_index ON passes (resource)",
        "CREATE TABLE symbols (id INTEGER PRIMARY KEY AUTOINCREMENT, pass INTEGER REFERENCES passes(id) ON DELETE CASCADE, name TEXT, qualified_name TEXT, regex TEXT, type_code TEXT, parent_id INTEGER, parent_name TEXT, parent_type_code TEXT, range_line INTEGER, range_column INTEGER, range_length INTEGER, UNIQUE (pass, range_line) ON CONFLICT REPLACE)",
        "CREATE INDEX symbols_index ON symbols (name COLLATE NOCASE, type_code)",
        "CREATE INDEX symbols_index ON symbols (range_line, pass)",
    });
}

// The two base indexes compare without case, so the exact comparisons of the lookups
// (`resources.path = ?`, `symbols.name = ?`) cannot use them: on an index of /usr/include's size
// they scanned every row (about 100 ms a lookup). These give them exact-case indexes.
void lookupIndexesMigration(SqliteConnection& db) {
    VXXDatabase::executeEach(db, {
        "CREATE INDEX resources_path_index ON resources (path)",
        "CREATE INDEX symbols_name_index ON symbols (name)",
    });
}

// `resources.path = ? OR resources.path IS NULL` is answered as two index lookups joined (the
// file list's grouping by line is done after the query, see symbolsOfFile), and
// the prefix is bound whole (`LIKE ?` with the "%" appended) so that SQLite's LIKE optimisation
// can range over the case-blind name index; the rows are those of the original texts.
constexpr const char* kSymbolsOfFile =
    "SELECT symbols.*, resources.path FROM resources JOIN passes ON passes.resource = resources.id "
    "JOIN symbols ON symbols.pass = passes.id "
    "WHERE resources.id IN (SELECT id FROM resources WHERE path = ?1 UNION ALL SELECT id FROM resources WHERE path IS NULL) "
    "AND type_code != 'local'";
constexpr const char* kNamePrefix =
    "SELECT symbols.*, resources.path FROM symbols JOIN passes ON symbols.pass = passes.id JOIN resources ON "
    "passes.resource = resources.id WHERE symbols.name LIKE ? GROUP BY symbols.range_line, resources.path LIMIT 50";

}  // namespace

VXSymbol VXSymbolFromRow(const SqliteRows& rows) {
    VXSymbol symbol;
    symbol.id = rows.integer(0);
    symbol.pass = rows.integer(1);
    symbol.name = rows.text(2);
    symbol.qualifiedName = rows.text(3);
    symbol.regex = rows.text(4);
    symbol.typeCode = rows.text(5);
    symbol.parentId = rows.integer(6);
    symbol.parentName = rows.text(7);
    symbol.parentTypeCode = rows.text(8);
    symbol.rangeLine = rows.integer(9);
    symbol.rangeColumn = rows.integer(10);
    symbol.rangeLength = rows.integer(11);
    symbol.path = rows.text(12);
    return symbol;
}

VXXMainDatabase::VXXMainDatabase(std::string path, std::string projectName, std::string dirPath)
    : m_projectName(std::move(projectName)), m_dirPath(std::move(dirPath)) {
    initWithPath(std::move(path));
}

VXXMainDatabase::~VXXMainDatabase() = default;

std::vector<VXXDatabase::Migration> VXXMainDatabase::migrations() {
    return {{0, "baseMigration", baseMigration}, {1, "lookupIndexesMigration", lookupIndexesMigration}};
}

void VXXMainDatabase::willLoad(SqliteConnection& db) {
    db.execute("PRAGMA synchronous = OFF");
    db.execute("PRAGMA auto_vacuum = INCREMENTAL");
    // The indexer writes while the editor reads: with a write-ahead log a reader never waits for
    // the writer (nor the writer for readers). Deleting a resource takes its passes and symbols
    // with it only when foreign keys are enforced, which SQLite does per connection.
    db.execute("PRAGMA journal_mode = WAL");
    db.execute("PRAGMA foreign_keys = ON");
    // Temporary data stays in memory. The indexer's inserts may each replace a row (one symbol per
    // line per pass) and cascade, so SQLite keeps a statement journal for every one; in a file
    // that was most of the indexer's time (hundreds of thousands of small writes). The symbol
    // list's grouping of a large file spilled its sorter to a file the same way.
    db.execute("PRAGMA temp_store = MEMORY");
}

std::vector<VXSymbol> VXXMainDatabase::select(const char* sql, const SqlArguments& arguments) {
    std::vector<VXSymbol> symbols;
    syncWithConnection([&](SqliteConnection& db) {
        for (auto rows = db.query(sql, arguments); rows.next();) symbols.push_back(VXSymbolFromRow(rows));
    });
    return symbols;
}

std::vector<VXSymbol> VXXMainDatabase::symbolsOfFile(const std::string& path) {
    // The stated text groups by line, for which SQLite sorts every row of the file: most of the
    // time of a large file's list. The rows come from the (pass, line) index in line order for
    // each pass, so the grouping is done here: ordered by line, one row per line. Where the file
    // and text without a file both have a symbol on one line, the file's own is kept.
    // A file indexed once, with no text without a file, arrives in order already.
    auto symbols = select(kSymbolsOfFile, {path});
    const auto byLine = [](const VXSymbol& a, const VXSymbol& b) {
        return a.rangeLine != b.rangeLine ? a.rangeLine < b.rangeLine : !a.path.empty() && b.path.empty();
    };
    if (!std::is_sorted(symbols.begin(), symbols.end(), byLine)) std::stable_sort(symbols.begin(), symbols.end(), byLine);
    symbols.erase(std::unique(symbols.begin(), symbols.end(),
                              [](const VXSymbol& a, const VXSymbol& b) { return a.rangeLine == b.rangeLine; }),
                  symbols.end());
    return symbols;
}

std::vector<VXSymbol> VXXMainDatabase::symbolsNamed(const std::string& name) {
    return select(symbol_query_text::kExactName, {name});
}

std::vector<VXSymbol> VXXMainDatabase::symbolsWithPrefix(const std::string& prefix) {
    return select(kNamePrefix, {prefix + "%"});
}

int64_t VXXMainDatabase::fileCount() {
    int64_t count = 0;
    syncWithConnection([&](SqliteConnection& db) {
        count = db.integerForQuery("SELECT COUNT(*) FROM resources WHERE is_ignored = 0").value_or(0);
    });
    return count;
}

int64_t VXXMainDatabase::symbolCount() {
    int64_t count = 0;
    syncWithConnection([&](SqliteConnection& db) { count = db.integerForQuery("SELECT COUNT(*) FROM symbols").value_or(0); });
    return count;
}

}  // namespace vx
