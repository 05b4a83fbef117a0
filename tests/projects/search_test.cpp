#include <gtest/gtest.h>
#include <sys/time.h>

#include <cmath>
#include <filesystem>
#include <latch>

#include "projects/quick_open.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

std::vector<std::string> displayPaths(const std::vector<ActionPanelGenericItem>& rows) {
    std::vector<std::string> out;
    for (const auto& row : rows) out.push_back(row.displayPath);
    return out;
}

// An index filled by hand (no root: every path's recency is the default).
void fill(QuickOpenIndex& index, const std::vector<std::string>& files) {
    index.searchIndexFiles.queue.sync([&] {
        for (const auto& file : files) {
            const std::string lower = lowercasePath(file);
            index.searchIndexFiles.add(file, lower, static_cast<uint32_t>(std::count(file.begin(), file.end(), '/') + 1));
        }
    });
}

void setAge(const std::string& path, long secondsAgo) {
    timeval times[2];
    ::gettimeofday(&times[0], nullptr);
    times[0].tv_sec -= secondsAgo;
    times[1] = times[0];
    ::utimes(path.c_str(), times);
}

TEST(QuickOpenSearch, ShortQueriesStopAtTheCutOffs) {
    for (size_t count : {500u, 501u, 5000u, 5001u}) {
        QuickOpenIndex index;
        std::vector<std::string> files;
        for (size_t i = 0; i < count; ++i) files.push_back("d/ab" + std::to_string(i) + ".c");
        fill(index, files);
        EXPECT_EQ(quickOpenRows(index, "a").empty(), count >= 501) << count;
        EXPECT_EQ(quickOpenRows(index, "ab").empty(), count >= 5001) << count;
        EXPECT_EQ(quickOpenRows(index, "ab1").size(), 101u) << count;  // rows stop once they exceed 100
    }
    // Thousands of candidates are sorted in runs side by side and merged: the rows still come in
    // score order, equal scores in path order, and the best one, last in the index, comes first.
    QuickOpenIndex index;
    std::vector<std::string> files;
    for (size_t i = 0; i < 12000; ++i) files.push_back("d" + std::to_string(i % 7) + "/abc" + std::to_string(i) + ".c");
    files.push_back("abc");
    fill(index, files);
    const auto rows = quickOpenRows(index, "abc");
    ASSERT_EQ(rows.size(), 101u);
    EXPECT_EQ(rows[0].displayPath, "abc");
    for (size_t i = 1; i < rows.size(); ++i)
        EXPECT_TRUE(rows[i - 1].score > rows[i].score ||
                    (rows[i - 1].score == rows[i].score && rows[i - 1].displayPath < rows[i].displayPath))
            << i;
}

TEST(QuickOpenSearch, MatchingRules) {
    QuickOpenIndex index;
    fill(index, {"src/view.c", "src/overview.c", "lib/viewer/x.c", "src/ui/view.h", "a/b/c/d/view.c", "docs/review.md",
                 ".clang-format", "main.c", "short"});
    struct Case {
        std::string query;
        std::vector<std::string> want;  // in ranked order
    };
    const Case cases[] = {
        // The name that starts with the query and the shallow path first; the deep exact name
        // loses to shallow names that merely contain the query.
        {"vie", {"src/view.c", "src/ui/view.h", "docs/review.md", "src/overview.c", "a/b/c/d/view.c"}},
        {"src/vie", {"src/view.c", "src/overview.c", "src/ui/view.h"}},
        {"SRC/VIE", {"src/view.c", "src/overview.c", "src/ui/view.h"}},  // case does not matter
        {"src//vie", {"src/view.c", "src/overview.c", "src/ui/view.h"}},
        {"zzz/view", {}},
        {"viewer", {}},    // the last thing typed must match the name itself
        {"logo", {}},      // admitted by the one-byte allowance, kept out of the rows
        {"mian", {}},
        {"short/x/y/zz", {}},  // longer than the path by more than two bytes
        {"", {}},
    };
    for (const auto& c : cases) EXPECT_EQ(displayPaths(quickOpenRows(index, c.query)), c.want) << c.query;
    ActionPanelFileModule module(index);
    module.query = "/";
    EXPECT_FALSE(module.startSearch());
}

TEST(QuickOpenSearch, RowsCarryNamesPathsAndRecencyFromTheTree) {
    test::TempDir dir;
    const std::string root = std::filesystem::canonical(dir.path()).string();
    dir.write("old/notes.txt", "x");
    dir.write("new/notes.txt", "x");
    setAge(root + "/old/notes.txt", 10L * 365 * 24 * 3600);
    setAge(root + "/new/notes.txt", 60);
    QuickOpenIndex index;
    index.rootChanged(root);
    const auto rows = quickOpenRows(index, "notes");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].displayPath, "new/notes.txt");
    EXPECT_EQ(rows[0].name, "notes.txt");
    EXPECT_EQ(rows[0].performPath, root + "/new/notes.txt");
    EXPECT_NEAR(rows[0].score - rows[1].score, std::sqrt(1 / (std::log10(60.0) + 1)) - std::sqrt(1 / (std::log10(3.15e8) + 1)), 1e-3);

    // A rebuild follows the tree; an unchanged root is not rebuilt unless forced.
    dir.write("new/notes2.txt", "x");
    index.rootChanged(root);
    EXPECT_EQ(quickOpenRows(index, "notes").size(), 2u);
    index.rootChanged(root, true);
    EXPECT_EQ(quickOpenRows(index, "notes").size(), 3u);
}

TEST(QuickOpenSearch, ATrailingSlashListsTheBestFolder) {
    test::TempDir dir;
    const std::string root = std::filesystem::canonical(dir.path()).string();
    for (int i = 0; i < 150; ++i) dir.write("src/view/f" + std::to_string(i) + ".c", "x");
    dir.write("src/viewer/keep.c", "x");
    QuickOpenIndex index;
    index.rootChanged(root);
    const auto rows = quickOpenRows(index, "view/");
    ASSERT_EQ(rows.size(), 101u);
    EXPECT_EQ(rows[0].displayPath, "src/view/f0.c");
    EXPECT_EQ(rows[1].displayPath, "src/view/f1.c");
    EXPECT_EQ(rows[2].displayPath, "src/view/f2.c");  // digits by value: f2 before f10
    EXPECT_EQ(rows[10].displayPath, "src/view/f10.c");
    EXPECT_EQ(rows[0].performPath, root + "/src/view/f0.c");
    EXPECT_TRUE(quickOpenRows(index, "nothing/").empty());
    EXPECT_TRUE(localizedStandardLess("a9", "A10"));
    EXPECT_TRUE(localizedStandardLess("abc", "ABD"));
}

// Records calls into storage that outlives the delegate.
struct Calls {
    std::atomic<int> inserted{0}, finished{0}, reloaded{0};
};
class CountingDelegate final : public QuickOpenDelegate {
public:
    explicit CountingDelegate(std::shared_ptr<Calls> calls) : m_calls(std::move(calls)) {}
    void anythread_insertItem(const ActionPanelGenericItem&) override { ++m_calls->inserted; }
    void anythread_finishedPrimary() override { ++m_calls->finished; }
    void anythread_reload() override { ++m_calls->reloaded; }

private:
    std::shared_ptr<Calls> m_calls;
};

TEST(QuickOpenSearch, DelegateCallsAndASearchWhoseDelegateWentAway) {
    QuickOpenIndex index;
    fill(index, {"a/one.c", "a/two.c"});
    auto calls = std::make_shared<Calls>();
    {
        auto delegate = std::make_shared<CountingDelegate>(calls);
        ActionPanelFileModule module(index);
        module.query = "o";
        module.delegate = delegate;
        ASSERT_TRUE(module.startSearch());
        index.waitUntilIdle();
        EXPECT_EQ(calls->inserted, 2);
        EXPECT_EQ(calls->finished, 1);
        EXPECT_EQ(calls->reloaded, 1);
    }
    // The search waits behind other work on the queue; its delegate is gone when it runs.
    auto later = std::make_shared<Calls>();
    std::latch release(1);
    index.searchIndexFiles.queue.async([&release] { release.wait(); });
    {
        auto delegate = std::make_shared<CountingDelegate>(later);
        ActionPanelFileModule module(index);
        module.query = "one";
        module.delegate = delegate;
        ASSERT_TRUE(module.startSearch());
    }
    release.count_down();
    index.waitUntilIdle();
    EXPECT_EQ(later->inserted + later->finished + later->reloaded, 0);
}

}  // namespace
}  // namespace vx
