// Mistakes on the command line end in one line on standard error and a non-zero status, never in
// an answer that looks like a result.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include "support/run_command.hpp"
#include "support/temp_dir.hpp"

using vx::test::runCommand;

namespace {

void expectOneLineError(const vx::test::CommandResult& result, const std::string& mentions) {
    EXPECT_NE(result.status, 0);
    EXPECT_TRUE(result.out.empty()) << result.out;
    EXPECT_EQ(result.err.rfind("vx: ", 0), 0u) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    EXPECT_NE(result.err.find(mentions), std::string::npos) << result.err;
}

TEST(CommandLineMistakes, SelectorBestWithoutSelectors) {
    expectOneLineError(runCommand({VX_BINARY, "selector", "best", "a b"}), "--");
    auto fine = runCommand({VX_BINARY, "selector", "best", "source.c string", "--", "comment", "string"});
    EXPECT_EQ(fine.status, 0) << fine.err;
    EXPECT_EQ(fine.out, "1\n");
}

TEST(CommandLineMistakes, ThemeThatIsNotATheme) {
    vx::test::TempDir dir;
    const std::string source = dir.write("a.c", "int x;\n");
    const std::string notTheme = dir.write("notes.selfml", "(shopping (list eggs milk))\n");
    expectOneLineError(runCommand({VX_BINARY, "highlight", source, "--theme", notTheme, "--format", "ansi"}),
                       "not a theme");
    expectOneLineError(runCommand({VX_BINARY, "theme", "zone", notTheme, "source.c"}), "not a theme");
    auto fine = runCommand({VX_BINARY, "theme", "zone", "Nightfall", "source.c comment.line"});
    EXPECT_EQ(fine.status, 0) << fine.err;
}

TEST(CommandLineMistakes, PathsThatAreNotFiles) {
    vx::test::TempDir dir;
    expectOneLineError(runCommand({VX_BINARY, "info", "/dev/zero"}), "character device");
}

}  // namespace
