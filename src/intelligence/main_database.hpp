// VXXMainDatabase: one project's symbol index (a "vxindex" file). The indexer process writes
// its `resources`, `passes` and `symbols`; the editor opens it, migrates it and reads it.
//
//   resources  one file: absolute path, its indexer language, whether it is ignored
//   passes     one indexing run over a resource (seconds since 2001-01-01, the extractor's name)
//   symbols    what a pass found, at most one per line (a later symbol on a line replaces the
//              earlier), with the enclosing symbol's id, name and kind
//
// Deleting a resource deletes its passes and their symbols (foreign keys with ON DELETE CASCADE).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "storage/database.hpp"

namespace vx {

// One row of the symbol queries: the `symbols` columns and the resource's path.
struct VXSymbol {
    int64_t id = 0;
    int64_t pass = 0;
    std::string name;
    std::string qualifiedName;
    std::string regex;
    std::string typeCode;
    int64_t parentId = 0;
    std::string parentName;
    std::string parentTypeCode;
    int64_t rangeLine = 0;
    int64_t rangeColumn = 0;
    int64_t rangeLength = 0;
    std::string path;  // "" for text that has no file
    friend bool operator==(const VXSymbol&, const VXSymbol&) = default;
};

class VXXMainDatabase final : public VXXDatabase {
public:
    // Opens (creating and migrating when needed) the index at `path`; ":memory:" for a private one.
    VXXMainDatabase(std::string path, std::string projectName = {}, std::string dirPath = {});
    ~VXXMainDatabase() override;

    std::vector<std::string> tables() const override { return {"resources", "passes", "symbols"}; }
    std::vector<Migration> migrations() override;
    void willLoad(SqliteConnection& db) override;

    const std::string& projectName() const { return m_projectName; }
    const std::string& dirPath() const { return m_dirPath; }

    // --- The queries the editor asks -------------------------------------------------------
    // Every symbol of one file except locals, one per line.
    std::vector<VXSymbol> symbolsOfFile(const std::string& path);
    // Symbols named exactly `name` (jump to definition), at most 50.
    std::vector<VXSymbol> symbolsNamed(const std::string& name);
    // Symbols whose names begin with `prefix`, ignoring ASCII case, at most 50.
    std::vector<VXSymbol> symbolsWithPrefix(const std::string& prefix);

    // Counts for reports: resources indexed (not ignored) and symbols.
    int64_t fileCount();
    int64_t symbolCount();

private:
    std::vector<VXSymbol> select(const char* sql, const SqlArguments& arguments);

    std::string m_projectName;
    std::string m_dirPath;
};

// The query texts as they were first written. The statements run by VXXMainDatabase give the
// same rows through forms that SQLite can answer from an index (the tests compare the two).
namespace symbol_query_text {
inline constexpr const char* kSymbolsOfFile =
    "SELECT symbols.* , resources.path FROM symbols JOIN passes ON symbols.pass = passes.id JOIN resources ON "
    "passes.resource = resources.id WHERE type_code != 'local' AND (resources.path = ? OR resources.path IS NULL) "
    "GROUP BY symbols.range_line";
inline constexpr const char* kExactName =
    "SELECT symbols.*, resources.path FROM symbols JOIN passes ON symbols.pass = passes.id JOIN resources ON "
    "passes.resource = resources.id WHERE symbols.name = ? GROUP BY symbols.range_line, resources.path LIMIT 50";
inline constexpr const char* kNamePrefix =
    "SELECT symbols.*, resources.path FROM symbols JOIN passes ON symbols.pass = passes.id JOIN resources ON "
    "passes.resource = resources.id WHERE symbols.name LIKE ? || '%' GROUP BY symbols.range_line, resources.path "
    "LIMIT 50";
}  // namespace symbol_query_text

// Reads a row of any of the symbol queries (the `symbols` columns, then the path).
VXSymbol VXSymbolFromRow(const SqliteRows& rows);

}  // namespace vx
