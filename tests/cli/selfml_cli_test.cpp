// vx selfml dump / fmt: the output formats scripts rely on, and the one-line errors.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/run_command.hpp"
#include "support/temp_dir.hpp"

using vx::test::runCommand;

namespace {

TEST(SelfmlCommand, DumpPrintsTheTreeAsJson) {
    auto result = runCommand({VX_BINARY, "selfml", "dump", "-"}, "(zone (name string) [a b]) top");
    ASSERT_EQ(result.status, 0) << result.err;
    ASSERT_EQ(result.out.back(), '\n');
    auto tree = nlohmann::json::parse(result.out);
    const auto want = nlohmann::json::parse(R"({"head": "", "children": [
        {"head": "zone", "children": [{"head": "name", "children": ["string"]}, "a b"]}, "top"]})");
    EXPECT_EQ(tree, want);
}

TEST(SelfmlCommand, FmtWritesTheWritersTextAndOneNewline) {
    vx::test::TempDir dir;
    const auto path = dir.write("in.selfml", "(k (x) (y z)) # comment\n(s [a b] `a ] b`)");
    auto result = runCommand({VX_BINARY, "selfml", "fmt", path});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "(k (x)\n    (y z))\n\n(s [a b] `a ] b`)\n");
    EXPECT_EQ(runCommand({VX_BINARY, "selfml", "fmt", "-"}, "").out, "\n");
}

TEST(SelfmlCommand, UnreadableFilesFailWithOneLine) {
    vx::test::TempDir dir;
    for (const auto& path : {dir.path() + "/missing.selfml", dir.path()}) {
        for (const char* verb : {"dump", "fmt"}) {
            auto result = runCommand({VX_BINARY, "selfml", verb, path});
            EXPECT_NE(result.status, 0);
            EXPECT_TRUE(result.out.empty());
            EXPECT_EQ(result.err.rfind("vx: ", 0), 0u) << result.err;
            EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
        }
    }
}

TEST(SelfmlCommand, BinaryGarbageStillGivesATree) {
    std::string garbage;
    for (int i = 1; i < 256; ++i) garbage += static_cast<char>((i * 37) % 255 + 1);
    auto result = runCommand({VX_BINARY, "selfml", "dump", "-"}, garbage);
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(nlohmann::json::parse(result.out)["head"], "");
}

}  // namespace
