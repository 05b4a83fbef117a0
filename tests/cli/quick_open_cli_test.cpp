#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "support/run_command.hpp"
#include "support/temp_dir.hpp"

namespace vx::test {
namespace {

TEST(QuickOpenCli, QueriesListsAndJson) {
    TempDir home, project;
    ::setenv("VX_HOME", home.path().c_str(), 1);
    const std::string root = std::filesystem::canonical(project.path()).string();
    project.write("src/view.c", "x");
    project.write("src/main.c", "x");
    project.write("src/ui/keep.h", "x");
    project.write("build/view.c", "x");
    project.write(".gitignore", "*.h\n");

    auto result = runCommand({VX_BINARY, "quick-open", root, "vie", "zzz", "ui/"});
    ASSERT_EQ(result.status, 0) << result.err;
    // The folder query lists the folder as it is on disk, ignored files included.
    const std::regex withFolder("Q: vie\n[0-9]+\\.[0-9]{6}\tsrc/view\\.c\nQ: zzz\nQ: ui/\n0\\.000000\tsrc/ui/keep\\.h\n");
    EXPECT_TRUE(std::regex_match(result.out, withFolder)) << result.out;

    auto files = runCommand({VX_BINARY, "quick-open", root, "--list", "files"});
    std::vector<std::string> lines;
    for (size_t start = 0, end; (end = files.out.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(files.out.substr(start, end - start));
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (std::vector<std::string>{".gitignore", "src/main.c", "src/view.c"}));
    auto all = runCommand({VX_BINARY, "quick-open", root, "--list", "files", "--no-ignore-files"});
    EXPECT_NE(all.out.find("src/ui/keep.h\n"), std::string::npos);
    EXPECT_EQ(runCommand({VX_BINARY, "quick-open", root, "--list", "dirs"}).out.size(), std::string("src\nsrc/ui\n").size());

    auto json = runCommand({VX_BINARY, "quick-open", root, "--json", "main", "nothing"});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto first = nlohmann::json::parse(json.out.substr(0, json.out.find('\n')));
    ASSERT_EQ(first.size(), 1u);
    EXPECT_EQ(first[0]["name"], "main.c");
    EXPECT_EQ(first[0]["displayPath"], "src/main.c");
    EXPECT_EQ(first[0]["performPath"], root + "/src/main.c");
    EXPECT_GT(first[0]["score"].get<double>(), 1.0);
    EXPECT_EQ(json.out.substr(json.out.find('\n') + 1), "[]\n");

    // --timing reports on standard error only; the rows stay as they were.
    auto timed = runCommand({VX_BINARY, "quick-open", root, "--timing", "vie"});
    ASSERT_EQ(timed.status, 0) << timed.err;
    // (The score itself moves with the files' age between the two runs.)
    EXPECT_TRUE(std::regex_match(timed.out, std::regex("Q: vie\n[0-9]+\\.[0-9]{6}\tsrc/view\\.c\n"))) << timed.out;
    EXPECT_TRUE(std::regex_search(timed.err, std::regex("^index\t3\t2\t[0-9.]+\t[0-9.]+\nsearch\tvie\t[0-9.]+\t[0-9.]+\n"
                                                        "memory\t[1-9][0-9]*\n$")))
        << timed.err;

    auto missing = runCommand({VX_BINARY, "quick-open", root + "/absent", "x"});
    EXPECT_NE(missing.status, 0);
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err.rfind("vx: ", 0), 0u) << missing.err;
    ::unsetenv("VX_HOME");
}

TEST(QuickOpenCli, SmartSort) {
    auto result = runCommand({VX_BINARY, "smart-sort", "foo", "barfoo", "Foo", "foobar", "foo"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "2.750000\tfoo\n2.375000\tFoo\n1.500000\tfoobar\n1.000000\tbarfoo\n");
    EXPECT_EQ(runCommand({VX_BINARY, "smart-sort", "x"}).out, "");
}

}  // namespace
}  // namespace vx::test
