#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "platform/property_list.hpp"
#include "projects/project.hpp"
#include "projects/project_database.hpp"
#include "projects/project_root.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

TEST(ProjectStore, SchemaAndKeyValueStatements) {
    test::TempDir dir;
    const std::string path = dir.path() + "/projects.db";
    {
        VXXProjectDatabase store(path);
        ASSERT_TRUE(store.isOpen());
        EXPECT_TRUE(store.setValue("name-1", "indexName", "/p/one"));
        EXPECT_TRUE(store.setValue("1", "scanDirs", "/p/one"));
        EXPECT_TRUE(store.setValue("name-2", "indexName", "/p/one"));  // replaces, never duplicates
        EXPECT_TRUE(store.setValue("0", "scanDirs", "/p/two"));
        EXPECT_EQ(store.valueForKey("indexName", "/p/one"), "name-2");
        EXPECT_EQ(store.valueForKey("indexName", "/p/two"), std::nullopt);
        EXPECT_EQ(store.valueForKey("indexName", "/p/none"), std::nullopt);
        EXPECT_TRUE(store.setValue(std::nullopt, "scanDirs", "/p/one"));
        EXPECT_TRUE(store.setValue(std::nullopt, "scanDirs", "/p/never-stored"));
        const auto all = store.allProjects();
        ASSERT_EQ(all.size(), 2u);
        EXPECT_EQ(all[0], (std::map<std::string, std::string>{{"path", "/p/one"}, {"indexName", "name-2"}}));
        EXPECT_EQ(all[1], (std::map<std::string, std::string>{{"path", "/p/two"}, {"scanDirs", "0"}}));
    }
    // The file holds exactly the schema and the rows written, readable by any SQLite client.
    auto db = SqliteConnection::openReadOnly(path);
    ASSERT_TRUE(db);
    std::vector<std::string> schema;
    for (auto rows = db->query("SELECT sql FROM sqlite_master WHERE name IN ('projects', 'projects_index', 'pairs') ORDER BY name");
         rows.next();)
        schema.push_back(rows.text(0));
    EXPECT_EQ(schema, (std::vector<std::string>{
                          "CREATE TABLE pairs (id INTEGER PRIMARY KEY AUTOINCREMENT,  project INTEGER REFERENCES "
                          "projects(id) ON DELETE CASCADE, key TEXT, val TEXT, UNIQUE (project, key))",
                          "CREATE TABLE projects (id INTEGER PRIMARY KEY AUTOINCREMENT,  path TEXT, bookmark BLOB )",
                          "CREATE INDEX projects_index ON projects (path COLLATE NOCASE)"}));
    EXPECT_EQ(db->integerForQuery("SELECT COUNT(*) FROM projects"), 2);
    EXPECT_EQ(db->integerForQuery("SELECT COUNT(*) FROM pairs"), 2);
    EXPECT_EQ(db->integerForQuery("PRAGMA auto_vacuum"), 2);  // incremental
}

TEST(ProjectRoot, MarkersDecideTheRoot) {
    test::TempDir dir;
    const std::string base = std::filesystem::canonical(dir.path()).string();
    dir.write("repo/.git/HEAD", "ref");
    dir.write("repo/CMakeLists.txt", "");
    dir.write("repo/lib/CMakeLists.txt", "");
    dir.write("repo/lib/deep/x.c", "");
    dir.write("cm/CMakeLists.txt", "");
    dir.write("cm/src/CMakeLists.txt", "");
    dir.write("cm/src/a/b.c", "");
    dir.write("node/package.json", "{}");
    dir.write("node/src/index.js", "");
    dir.write("worktree/.git", "gitdir: elsewhere");  // a worktree's .git is a file
    dir.write("worktree/Cargo.toml", "");
    dir.write("loose/notes/a.txt", "");
    struct Case {
        std::string path, root;
        bool strong;
    };
    const Case cases[] = {
        {"repo/lib/deep/x.c", "repo", true},     {"repo/lib", "repo", true},
        {"cm/src/a/b.c", "cm", true},            {"cm/src", "cm", true},
        {"node/src/index.js", "node", true},     {"worktree/Cargo.toml", "worktree", true},
        {"loose/notes/a.txt", "loose/notes", false}, {"loose/notes", "loose/notes", false},
        {"loose/notes/new-file.txt", "loose/notes", false},
    };
    for (const auto& c : cases) {
        bool strong = !c.strong;
        EXPECT_EQ(detectProjectURLForURL(base + "/" + c.path, strong), base + "/" + c.root) << c.path;
        EXPECT_EQ(strong, c.strong) << c.path;
    }
}

TEST(ProjectManager, ProjectsAreFoundCreatedStoredAndReloaded) {
    test::TempDir dir;
    const std::string base = std::filesystem::canonical(dir.path()).string();
    dir.write("repo/.git/HEAD", "");
    dir.write("repo/src/main.c", "");
    {
        VXXProjectDatabase store(base + "/support/projects.db");
        VXProjectManager manager(store, base + "/support");
        auto project = manager.getOrCreateProjectForURL(base + "/repo/src/main.c");
        ASSERT_TRUE(project);
        EXPECT_EQ(project->directoryURL, base + "/repo");
        EXPECT_TRUE(project->wasStrong);
        EXPECT_EQ(project->indexName, VXProjectIndexNameForDirectory(base + "/repo"));
        EXPECT_EQ(manager.getOrCreateProjectForURL(base + "/repo/src"), project);
        EXPECT_TRUE(project->isParentOrEqualTo(base + "/repo/src/main.c"));
        EXPECT_FALSE(project->isParentOrEqualTo(base + "/repository"));
        EXPECT_TRUE(project->isParentOrChildOrEqualTo(base));
        EXPECT_TRUE(project->isPathEqual(base + "/repo/src/.."));
        EXPECT_EQ(project->allApplicableIndexDatabases(),
                  std::vector<std::string>{base + "/support/ProjectIndexes/" + project->indexName + ".vxindex"});

        // A project the user made inside the repository keeps its own files.
        auto inner = manager.getOrCreateProjectAtExactURL(base + "/repo/src");
        EXPECT_NE(inner, project);
        EXPECT_EQ(manager.getOrCreateProjectForURL(base + "/repo/src/main.c"), inner);
        std::string found;
        EXPECT_EQ(manager.projectForURL(base + "/repo/README", &found), project);
        EXPECT_EQ(found, base + "/repo");
        // Without markers, a folder the user opened as a project keeps the files below it.
        dir.write("loose/a/b.txt", "");
        auto loose = manager.getOrCreateProjectAtExactURL(base + "/loose");
        EXPECT_EQ(manager.getOrCreateProjectForURL(base + "/loose/a/b.txt"), loose);
        EXPECT_FALSE(loose->wasStrong);
        inner->shouldScanDirectories = false;
        EXPECT_TRUE(inner->saveToDisk());

        project->documentDidOpenInProject(base + "/repo/src/main.c");
        EXPECT_EQ(project->activeFilePaths.count(base + "/repo/src/main.c"), 1u);
        project->documentDidCloseInProject(base + "/repo/src/main.c");
        EXPECT_TRUE(project->activeFilePaths.empty());
    }
    VXXProjectDatabase store(base + "/support/projects.db");
    VXProjectManager again(store, base + "/support");
    again.loadProjects();
    ASSERT_EQ(again.projects().size(), 3u);
    auto inner = again.projectAtURL(base + "/repo/src");
    ASSERT_TRUE(inner);
    EXPECT_FALSE(inner->shouldScanDirectories);
    EXPECT_EQ(again.projectAtURL(base + "/repo")->indexName, VXProjectIndexNameForDirectory(base + "/repo"));
}

TEST(ProjectManager, OlderProjectFilesMoveIntoTheStore) {
    test::TempDir dir;
    PropertyValue::Dictionary older{{"directoryURL", PropertyValue(std::string("/old/place"))},
                                    {"indexName", PropertyValue(std::string("place-1"))},
                                    {"shouldScanDirectories", PropertyValue(false)}};
    std::filesystem::create_directories(dir.path() + "/Projects");
    ASSERT_TRUE(writePropertyListFile(dir.path() + "/Projects/place.plist", PropertyValue(older)));
    VXXProjectDatabase store(dir.path() + "/projects.db");
    VXProjectManager manager(store, dir.path());
    manager.loadProjects();
    ASSERT_EQ(manager.projects().size(), 1u);
    EXPECT_EQ(manager.projects()[0]->indexName, "place-1");
    EXPECT_FALSE(manager.projects()[0]->shouldScanDirectories);
    EXPECT_EQ(store.valueForKey("scanDirs", "/old/place"), "0");
    EXPECT_TRUE(std::filesystem::exists(dir.path() + "/Projects/old/place.plist"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() + "/Projects/place.plist"));
}

}  // namespace
}  // namespace vx
