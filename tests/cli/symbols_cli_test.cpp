#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/run_command.hpp"
#include "support/temp_dir.hpp"

namespace vx::test {
namespace {

TEST(SymbolsCli, IndexThenQueryEachWay) {
    TempDir home, project;
    ::setenv("VX_HOME", home.path().c_str(), 1);
    const std::string root = std::filesystem::canonical(project.path()).string();
    project.write("a.c", "int alpha(void) { return 1; }\nint alphabet;\n");
    project.write("b.py", "def beta():\n    return alpha()\n");

    auto indexed = runCommand({VX_BINARY, "index", root});
    ASSERT_EQ(indexed.status, 0) << indexed.err;
    const auto summary = nlohmann::json::parse(indexed.out);
    EXPECT_EQ(summary["files"], 2);
    EXPECT_EQ(summary["symbols"], 3);
    const std::string database = summary["database"];
    EXPECT_EQ(database.rfind(home.path() + "/ProjectIndexes/", 0), 0u) << database;

    EXPECT_EQ(runCommand({VX_BINARY, "symbols", "--root", root, "--name", "alpha"}).out,
              root + "/a.c\t1\t4\tfunction\talpha\n");
    EXPECT_EQ(runCommand({VX_BINARY, "symbols", "--db", database, "--file", root + "/b.py"}).out,
              root + "/b.py\t1\t4\tfunction\tbeta\n");
    auto prefix = runCommand({VX_BINARY, "symbols", "--root", root, "--prefix", "ALPH"});
    EXPECT_EQ(prefix.out, root + "/a.c\t1\t4\tfunction\talpha\n" + root + "/a.c\t2\t4\tvariable\talphabet\n");

    // A second index of the same place goes to the same file and finds the same.
    auto again = runCommand({VX_BINARY, "index", root, "--db", root + "/own.vxindex"});
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(nlohmann::json::parse(again.out)["database"], root + "/own.vxindex");
    ::unsetenv("VX_HOME");
}

TEST(SymbolsCli, BadInvocationsSayWhy) {
    TempDir home;
    ::setenv("VX_HOME", home.path().c_str(), 1);
    const std::vector<std::vector<std::string>> cases = {
        {VX_BINARY, "index", home.path() + "/missing"},
        {VX_BINARY, "symbols", "--root", home.path(), "--name", "x"},  // never indexed
        {VX_BINARY, "symbols", "--root", home.path()},                  // no question
        {VX_BINARY, "symbols", "--name", "x", "--prefix", "y"},
    };
    for (const auto& argv : cases) {
        auto result = runCommand(argv);
        EXPECT_NE(result.status, 0) << argv[1];
        EXPECT_TRUE(result.out.empty()) << argv[1];
        EXPECT_EQ(result.err.rfind("vx: ", 0), 0u) << result.err;
    }
    ::unsetenv("VX_HOME");
}

}  // namespace
}  // namespace vx::test
