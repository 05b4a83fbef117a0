#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "projects/project.hpp"
#include "projects/project_database.hpp"
#include "projects/quick_open.hpp"
#include "projects/tree_watcher.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

using namespace std::chrono_literals;

// Polls a condition for up to two seconds.
template <class Condition>
bool eventually(Condition condition) {
    for (auto end = std::chrono::steady_clock::now() + 2s; std::chrono::steady_clock::now() < end;
         std::this_thread::sleep_for(10ms))
        if (condition()) return true;
    return condition();
}

TEST(TreeWatcher, ABurstOfChangesGivesOneCallAndNewFoldersAreWatched) {
    test::TempDir dir;
    dir.write("node_modules/pkg/index.js", "x");
    dir.write("src/a.c", "x");
    std::atomic<int> calls{0};
    TreeWatcher watcher(dir.path(), [&] { ++calls; }, 100ms);
    ASSERT_TRUE(watcher.valid());
    EXPECT_EQ(watcher.watchedFolderCount(), 2u);  // the root and src; node_modules is left alone

    for (int i = 0; i < 40; ++i) dir.write("src/burst" + std::to_string(i) + ".c", "x");
    EXPECT_TRUE(eventually([&] { return calls == 1; }));
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(calls, 1);

    std::filesystem::create_directories(dir.path() + "/new/deeper");
    EXPECT_TRUE(eventually([&] { return calls == 2 && watcher.watchedFolderCount() >= 4u; }));
    dir.write("new/deeper/file.c", "x");  // inside a folder made after the watch began
    EXPECT_TRUE(eventually([&] { return calls == 3; }));
    std::filesystem::rename(dir.path() + "/src/a.c", dir.path() + "/src/b.c");
    EXPECT_TRUE(eventually([&] { return calls == 4; }));
    dir.write("node_modules/pkg/other.js", "x");  // unwatched
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(calls, 4);
}

TEST(TreeWatcher, AScanningProjectsIndexFollowsTheTree) {
    test::TempDir dir;
    const std::string root = std::filesystem::canonical(dir.path()).string();
    dir.write("repo/.git/HEAD", "x");
    dir.write("repo/src/main.c", "x");
    VXXProjectDatabase store(root + "/support/projects.db");
    VXProjectManager manager(store, root + "/support");
    QuickOpenIndex index;
    auto project = manager.getOrCreateProjectForURL(root + "/repo/src/main.c");
    project->startScanning(index);
    EXPECT_EQ(index.root(), root + "/repo");
    EXPECT_EQ(quickOpenRows(index, "main").size(), 1u);

    dir.write("repo/src/added.c", "x");
    EXPECT_TRUE(eventually([&] { return quickOpenRows(index, "added").size() == 1; }));
    std::filesystem::rename(root + "/repo/src/added.c", root + "/repo/src/renamed.c");
    EXPECT_TRUE(eventually([&] { return quickOpenRows(index, "added").empty() && quickOpenRows(index, "renamed").size() == 1; }));
    std::filesystem::remove(root + "/repo/src/renamed.c");
    EXPECT_TRUE(eventually([&] { return quickOpenRows(index, "renamed").empty(); }));
    EXPECT_TRUE(eventually([&] { return quickOpenRows(index, "src/").size() == 1; }));  // the folder's listing
    project->stopScanning();
    EXPECT_EQ(index.root(), "");
}

}  // namespace
}  // namespace vx
