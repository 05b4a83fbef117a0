// What the indexer process does to a project index: scan the project's files, extract the
// symbols of the new and changed ones with ctags and write them as `resources`, `passes` and
// `symbols` rows; forget the files that are gone; index a document's unsaved text.
//
// A file whose modification time is older than its last pass is not read again. Writes go in
// transactions of a few hundred files, so that the editor sees a large project fill in as it is
// indexed; with the index's write-ahead log the editor's reads never wait for them.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "intelligence/ctags_runner.hpp"
#include "intelligence/project_files.hpp"
#include "intelligence/main_database.hpp"

namespace vx {

// Seconds since 2001-01-01 00:00 UTC, the epoch of the index's timestamps.
double VXSecondsSinceReferenceDate();
inline constexpr double kReferenceDateOffset = 978307200.0;  // 2001-01-01 in Unix seconds

// The regular expression that finds a tag's line again, from ctags' pattern ("/^text$/").
std::string VXRegexFromCtagsPattern(std::string_view pattern);

struct IndexSummary {
    size_t scanned = 0;   // files seen in the project
    size_t indexed = 0;   // files (re)read by ctags
    size_t removed = 0;   // files whose rows went because the file is gone
    bool ok = true;       // false when ctags could not be run
};

class VXProjectIndexer {
public:
    explicit VXProjectIndexer(VXXMainDatabase& database) : m_database(database) {}

    // Indexes every file under `directory` that is new or changed since its last pass and removes
    // the rows of files under it that no longer exist. Stops early (leaving what was written) when
    // `cancel` becomes true.
    IndexSummary indexDirectory(const std::string& directory, const std::atomic<bool>* cancel = nullptr);
    // Indexes one text as the contents of `path` ("" for text without a file), replacing what the
    // index held for it. `language` is ctags' name for it, or "" to go by the file name.
    bool indexContents(const std::string& path, const std::string& contents, const std::string& language);

    // Processes of ctags run side by side during a scan (default: one per processor).
    void setJobs(unsigned jobs) { m_jobs = jobs; }
    // Which files of a project a scan reads. By default VXProjectFilesForIndexing; the indexer
    // process gives the project layer's walk, so that the index holds the files quick open lists.
    using FileLister = std::function<std::vector<ProjectFile>(const std::string& root)>;
    void setFileLister(FileLister lister) { m_fileLister = std::move(lister); }

private:
    VXXMainDatabase& m_database;
    unsigned m_jobs = 0;
    FileLister m_fileLister;
};

}  // namespace vx
