#include "intelligence/project_indexer.hpp"

#include <stdlib.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "intelligence/kind_map.hpp"
#include "intelligence/project_files.hpp"
#include "platform/log.hpp"

namespace vx {
namespace {

constexpr const char* kGeneratorType = "ctags";
constexpr const char* kGeneratorName = "universal-ctags";
// Files written per transaction during a scan.
constexpr size_t kFilesPerTransaction = 400;
// A first index of at least this many files is loaded with the name indexes built afterwards.
constexpr size_t kBulkLoadFiles = 200;
// The symbols' name indexes as the schema and its first migration define them.
constexpr const char* kSymbolNameIndexes[] = {
    "CREATE INDEX IF NOT EXISTS symbols_index ON symbols (name COLLATE NOCASE, type_code)",
    "CREATE INDEX IF NOT EXISTS symbols_name_index ON symbols (name)",
};

// UTF-16 units in a UTF-8 text: every byte that starts a character counts one, four-byte
// characters (outside the BMP) count two.
int64_t utf16Length(std::string_view text) {
    int64_t units = 0;
    for (unsigned char c : text) {
        if ((c & 0xC0) != 0x80) ++units;
        if (c >= 0xF0) ++units;
    }
    return units;
}

bool isWordByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || (c & 0x80); }

// Where the name stands in its line: the first occurrence that is a whole word ("f" in
// "def f():" is not the one inside "def"), else the first occurrence at all.
size_t findName(std::string_view line, std::string_view name) {
    if (name.empty()) return std::string_view::npos;
    const size_t first = line.find(name);
    for (size_t at = first; at != std::string_view::npos; at = line.find(name, at + 1)) {
        const bool startsWord = at == 0 || !isWordByte(line[at - 1]) || !isWordByte(name.front());
        const bool endsWord = at + name.size() == line.size() || !isWordByte(line[at + name.size()]) || !isWordByte(name.back());
        if (startsWord && endsWord) return at;
    }
    return first;
}

std::string separatorFor(std::string_view language) {
    return language == "C++" || language == "C" || language == "CUDA" ? "::" : ".";
}

std::string lastScopeComponent(const std::string& scope, const std::string& separator) {
    const size_t at = scope.rfind(separator);
    return at == std::string::npos ? scope : scope.substr(at + separator.size());
}

// Writes one file's resource, pass and symbols, replacing whatever the index held for the path.
class FileWriter {
public:
    explicit FileWriter(SqliteConnection& db)
        : m_deleteResource(db.prepared("DELETE FROM resources WHERE path = ?")),
          m_deleteUnnamed(db.prepared("DELETE FROM resources WHERE path IS NULL")),
          m_insertResource(db.prepared("INSERT INTO resources (name, path, language, is_ignored) VALUES (?, ?, ?, ?)")),
          m_insertPass(db.prepared(
              "INSERT INTO passes (resource, timestamp, generator_type, generator_name) VALUES (?, ?, ?, ?)")),
          m_insertSymbol(db.prepared(
              "INSERT INTO symbols (pass, name, qualified_name, regex, type_code, parent_id, parent_name, "
              "parent_type_code, range_line, range_column, range_length) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")),
          m_db(db) {}

    void remove(const std::string& path) {
        if (path.empty())
            m_deleteUnnamed.execute({});
        else
            m_deleteResource.execute({path});
    }

    void write(const std::string& path, const std::vector<CtagsTag>& tags, double timestamp) {
        remove(path);
        const std::string language = tags.empty() ? std::string() : tags.front().language;
        const SqlValue pathValue = path.empty() ? SqlValue(nullptr) : SqlValue(path);
        const std::string name = path.empty() ? std::string() : std::filesystem::path(path).filename().string();
        // A file ctags found nothing in stays known (so it is not read again until it changes)
        // but is marked as not part of the index.
        m_insertResource.execute({name, pathValue, language, int64_t{tags.empty() ? 1 : 0}});
        const int64_t resource = m_db.lastInsertRowId();
        m_insertPass.execute({resource, timestamp, std::string(kGeneratorType), std::string(kGeneratorName)});
        const int64_t pass = m_db.lastInsertRowId();
        m_symbolIds.clear();
        for (const auto& tag : tags) writeSymbol(pass, tag);
    }

private:
    void writeSymbol(int64_t pass, const CtagsTag& tag) {
        const std::string separator = separatorFor(tag.language);
        const std::string qualified = tag.scope.empty() ? tag.name : tag.scope + separator + tag.name;
        const std::string line = VXLineOfCtagsPattern(tag.pattern);
        const size_t at = findName(line, tag.name);
        const int64_t column = at == std::string::npos ? 0 : utf16Length(std::string_view(line).substr(0, at));
        SqlValue parentId = nullptr, parentName = nullptr, parentType = nullptr;
        if (!tag.scope.empty()) {
            // ctags reports an enclosing symbol before what it encloses, so it is known here.
            if (auto it = m_symbolIds.find(tag.scope); it != m_symbolIds.end()) parentId = it->second;
            parentName = lastScopeComponent(tag.scope, separator);
            parentType = VXTypeCodeForCtagsKind(tag.language, tag.scopeKind);
        }
        m_insertSymbol.execute({pass, tag.name, qualified, VXRegexFromCtagsPattern(tag.pattern),
                                VXTypeCodeForCtagsKind(tag.language, tag.kind, tag.scopeKind, !tag.signature.empty()),
                                parentId, parentName, parentType, tag.line, column, utf16Length(tag.name)});
        m_symbolIds[qualified] = m_db.lastInsertRowId();
    }

    SqlitePrepared m_deleteResource, m_deleteUnnamed, m_insertResource, m_insertPass, m_insertSymbol;
    SqliteConnection& m_db;
    std::unordered_map<std::string, int64_t> m_symbolIds;  // qualified name → row, within one pass
};

// A folder of its own in the temporary directory, removed with its contents.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "burrower-XXXXXX").string();
        if (::mkdtemp(pattern.data())) m_path = pattern;
    }
    ~ScratchFolder() {
        std::error_code error;
        if (!m_path.empty()) std::filesystem::remove_all(m_path, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

bool isInside(const std::string& path, const std::string& directory) {
    return path.size() > directory.size() && path.compare(0, directory.size(), directory) == 0 &&
           path[directory.size()] == '/';
}

}  // namespace

double VXSecondsSinceReferenceDate() {
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count() - kReferenceDateOffset;
}

std::string VXRegexFromCtagsPattern(std::string_view pattern) {
    bool anchoredAtEnd = false;
    const std::string line = VXLineOfCtagsPattern(pattern, &anchoredAtEnd);
    if (line.empty()) return {};
    std::string regex = "^";
    for (char c : line) {
        if (std::string_view("\\^$.|?*+()[]{}").find(c) != std::string_view::npos) regex += '\\';
        regex += c;
    }
    if (anchoredAtEnd) regex += '$';
    return regex;
}

IndexSummary VXProjectIndexer::indexDirectory(const std::string& directory, const std::atomic<bool>* cancel) {
    IndexSummary summary;
    std::string root = std::filesystem::path(directory).lexically_normal().string();
    while (root.size() > 1 && root.back() == '/') root.pop_back();
    // Taken before any file is read: a file changed while it is being read is read again next time.
    const double passTime = VXSecondsSinceReferenceDate();

    const auto files = m_fileLister ? m_fileLister(root) : VXProjectFilesForIndexing(root);
    summary.scanned = files.size();
    std::unordered_map<std::string, double> lastPass;  // path → newest pass
    m_database.syncWithConnection([&](SqliteConnection& db) {
        // The symbols' three indexes take inserts in no useful order; with SQLite's default page
        // cache (2 MB) a first index of a large tree spends most of its time re-reading index
        // pages. The cache belongs to this connection only.
        db.execute("PRAGMA cache_size = -131072");
        for (auto rows = db.query("SELECT resources.path, MAX(passes.timestamp) FROM resources LEFT JOIN passes ON "
                                  "passes.resource = resources.id WHERE resources.path IS NOT NULL GROUP BY resources.path");
             rows.next();)
            lastPass[rows.text(0)] = rows.isNull(1) ? -1e300 : rows.real(1);
    });

    std::vector<std::string> changed;
    std::unordered_set<std::string> present;
    for (const auto& file : files) {
        present.insert(file.path);
        auto it = lastPass.find(file.path);
        if (it == lastPass.end() || file.modified >= it->second) changed.push_back(file.path);
    }
    std::vector<std::string> gone;
    for (const auto& [path, when] : lastPass)
        if (isInside(path, root) && !present.count(path)) gone.push_back(path);

    if (!gone.empty())
        m_database.syncTransaction([&](SqliteConnection& db) {
            FileWriter writer(db);
            for (const auto& path : gone) writer.remove(path);
        });
    summary.removed = gone.size();

    // A first index of a large tree loads every symbol at once. The two name indexes take those
    // inserts in no useful order, so they are dropped for the load and built afterwards from the
    // finished table, which is several times cheaper. Every scan makes sure they exist first, so
    // a load that was interrupted cannot leave the index without them.
    const bool bulkLoad = lastPass.empty() && changed.size() >= kBulkLoadFiles;
    m_database.syncWithConnection([&](SqliteConnection& db) {
        for (const char* statement : kSymbolNameIndexes) db.execute(statement);
        if (bulkLoad)
            for (const char* statement : {"DROP INDEX symbols_index", "DROP INDEX symbols_name_index"}) db.execute(statement);
    });
    struct Rebuild {
        VXXMainDatabase& database;
        bool active;
        ~Rebuild() {
            if (!active) return;
            database.syncWithConnection([](SqliteConnection& db) {
                for (const char* statement : kSymbolNameIndexes) db.execute(statement);
            });
        }
    } rebuild{m_database, bulkLoad};

    // Results arrive per file; they are written in transactions of a few hundred files.
    std::unordered_set<std::string> withTags;
    std::vector<CtagsFileTags> batch;
    auto flush = [&] {
        if (batch.empty()) return;
        m_database.syncTransaction([&](SqliteConnection& db) {
            FileWriter writer(db);
            for (const auto& file : batch) writer.write(file.path, file.tags, passTime);
        });
        batch.clear();
    };
    CtagsRun run;
    run.jobs = m_jobs ? m_jobs : std::max(1u, std::thread::hardware_concurrency());
    summary.ok = VXRunCtags(changed, run, [&](CtagsFileTags&& file) {
        if (cancel && cancel->load()) return;
        withTags.insert(file.path);
        batch.push_back(std::move(file));
        if (batch.size() >= kFilesPerTransaction) flush();
    });
    flush();
    if (cancel && cancel->load()) return summary;
    // Files ctags had nothing to say about are remembered with their pass all the same.
    for (const auto& path : changed)
        if (!withTags.count(path)) {
            batch.push_back({path, {}});
            if (batch.size() >= kFilesPerTransaction) flush();
        }
    flush();
    summary.indexed = changed.size();
    return summary;
}

bool VXProjectIndexer::indexContents(const std::string& path, const std::string& contents, const std::string& language) {
    ScratchFolder scratch;
    if (scratch.path().empty()) return false;
    // ctags reads a copy named like the file, so that the name still chooses the language.
    const std::string name = path.empty() ? std::string("untitled") : std::filesystem::path(path).filename().string();
    const std::string copy = scratch.path() + "/" + name;
    {
        std::ofstream out(copy, std::ios::binary);
        out << contents;
        if (!out) return false;
    }
    CtagsRun run;
    run.forcedLanguage = VXCtagsLanguageNamed(language);
    std::vector<CtagsTag> tags;
    const bool ok = VXRunCtags({copy}, run, [&](CtagsFileTags&& file) {
        tags.insert(tags.end(), std::make_move_iterator(file.tags.begin()), std::make_move_iterator(file.tags.end()));
    });
    if (!ok) return false;
    // The pass is dated at the epoch: the text on disk is older than what was indexed here only in
    // appearance, so the next scan reads the file again and the unsaved text does not outlive the
    // editor's buffer.
    m_database.syncTransaction([&](SqliteConnection& db) { FileWriter(db).write(path, tags, 0); });
    return true;
}

}  // namespace vx
