// VXXProjectDatabase: the project store "projects.db" in the user data folder. One row per project
// folder and a small key/value table per project ("indexName", "scanDirs", ...). A value is set by
// inserting the (project, key) row when it is missing and then updating its value, so setting a
// key twice never duplicates it.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "storage/database.hpp"

namespace vx {

class VXXProjectDatabase final : public VXXDatabase {
public:
    // The shared store in the user data folder, opened on first use.
    static VXXProjectDatabase& sharedDatabase();
    // A store in a file of its own (tests, tools); its folder is created when missing.
    explicit VXXProjectDatabase(std::string path);

    std::vector<Migration> migrations() override;
    void willLoad(SqliteConnection& db) override;

    // Runs the block inside one transaction on the store's queue and waits for it.
    bool transaction(const std::function<void(SqliteConnection&)>& block) { return syncTransaction(block); }

    // One dictionary per stored project folder: "path" and every key/value pair of the project.
    std::vector<std::map<std::string, std::string>> allProjects();
    // Sets (or, with no value, removes) one key of the project at `projectPath`, creating the
    // project's row when it has none.
    bool setValue(const std::optional<std::string>& value, const std::string& key, const std::string& projectPath);
    std::optional<std::string> valueForKey(const std::string& key, const std::string& projectPath);

    // The same on a connection the caller already holds (inside transaction()).
    static std::vector<std::map<std::string, std::string>> allProjects(SqliteConnection& db);
    static bool setValue(SqliteConnection& db, const std::optional<std::string>& value, const std::string& key,
                         const std::string& projectPath);

private:
    static void baseMigration(SqliteConnection& db);
    static std::optional<int64_t> projectID(SqliteConnection& db, const std::string& projectPath, bool create);
};

}  // namespace vx
