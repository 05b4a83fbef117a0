#include "projects/project_database.hpp"

#include "platform/paths.hpp"

namespace vx {

VXXProjectDatabase::VXXProjectDatabase(std::string path) {
    const size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0) makeDirectories(path.substr(0, slash));
    initWithPath(std::move(path));
}

VXXProjectDatabase& VXXProjectDatabase::sharedDatabase() {
    static VXXProjectDatabase* shared = new VXXProjectDatabase(userDataDirectory() + "/projects.db");  // lives as long as the process
    return *shared;
}

std::vector<VXXDatabase::Migration> VXXProjectDatabase::migrations() {
    return {{0, "baseMigration", [](SqliteConnection& db) { baseMigration(db); }}};
}

void VXXProjectDatabase::willLoad(SqliteConnection& db) {
    db.execute("PRAGMA synchronous = NORMAL");
    db.execute("PRAGMA auto_vacuum = INCREMENTAL");
}

void VXXProjectDatabase::baseMigration(SqliteConnection& db) {
    executeEach(db, {
                        "CREATE TABLE projects (id INTEGER PRIMARY KEY AUTOINCREMENT,  path TEXT, bookmark BLOB )",
                        "CREATE INDEX projects_index ON projects (path COLLATE NOCASE)",
                        "CREATE TABLE pairs (id INTEGER PRIMARY KEY AUTOINCREMENT,  project INTEGER REFERENCES "
                        "projects(id) ON DELETE CASCADE, key TEXT, val TEXT, UNIQUE (project, key))",
                    });
}

std::optional<int64_t> VXXProjectDatabase::projectID(SqliteConnection& db, const std::string& projectPath, bool create) {
    if (auto id = db.integerForQuery("SELECT id FROM projects WHERE path = ?", {projectPath})) return id;
    if (!create || !db.execute("INSERT INTO projects (path) VALUES (?)", {projectPath})) return std::nullopt;
    return db.lastInsertRowId();
}

std::vector<std::map<std::string, std::string>> VXXProjectDatabase::allProjects(SqliteConnection& db) {
    std::vector<std::string> paths;
    for (auto rows = db.query("SELECT DISTINCT path FROM projects"); rows.next();) paths.push_back(rows.text(0));
    std::vector<std::map<std::string, std::string>> projects;
    for (const auto& path : paths) {
        const auto id = projectID(db, path, false);
        if (!id) continue;
        std::map<std::string, std::string> project{{"path", path}};
        for (auto rows = db.query("SELECT key, val FROM pairs WHERE project = ?", {*id}); rows.next();)
            if (!rows.isNull(1)) project[rows.text(0)] = rows.text(1);
        projects.push_back(std::move(project));
    }
    return projects;
}

bool VXXProjectDatabase::setValue(SqliteConnection& db, const std::optional<std::string>& value, const std::string& key,
                                  const std::string& projectPath) {
    const auto id = projectID(db, projectPath, value.has_value());
    if (!id) return !value;  // removing a key of a project never stored: nothing to do
    if (!value) return db.execute("DELETE FROM pairs WHERE project = ? AND key = ?", {*id, key});
    return db.execute("INSERT OR IGNORE INTO pairs (project, key) VALUES (?, ?)", {*id, key}) &&
           db.execute("UPDATE pairs SET val = ? WHERE project = ? AND key = ?", {*value, *id, key});
}

std::vector<std::map<std::string, std::string>> VXXProjectDatabase::allProjects() {
    std::vector<std::map<std::string, std::string>> projects;
    syncWithConnection([&](SqliteConnection& db) { projects = allProjects(db); });
    return projects;
}

bool VXXProjectDatabase::setValue(const std::optional<std::string>& value, const std::string& key,
                                  const std::string& projectPath) {
    bool done = false;
    syncTransaction([&](SqliteConnection& db) { done = setValue(db, value, key, projectPath); });
    return done;
}

std::optional<std::string> VXXProjectDatabase::valueForKey(const std::string& key, const std::string& projectPath) {
    std::optional<std::string> value;
    syncWithConnection([&](SqliteConnection& db) {
        const auto id = projectID(db, projectPath, false);
        if (!id) return;
        auto rows = db.query("SELECT val FROM pairs WHERE project = ? AND key = ?", {*id, key});
        if (rows.next() && !rows.isNull(0)) value = rows.text(0);
    });
    return value;
}

}  // namespace vx
