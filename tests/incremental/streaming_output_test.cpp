// vx highlight streams: the lines of a pipe that stays open come out before it closes, and the
// output is the same as for the whole text at once.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/run_command.hpp"
#include "support/temp_dir.hpp"

extern char** environ;

namespace vx::test {
namespace {

// Reads from `fd` until `wanted` has appeared in `out` or nothing comes for `patienceMs`.
bool readUntil(int fd, std::string& out, const std::string& wanted, int patienceMs) {
    char buffer[4096];
    while (out.find(wanted) == std::string::npos) {
        pollfd ready{fd, POLLIN, 0};
        if (::poll(&ready, 1, patienceMs) <= 0) return false;
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0) return false;
        out.append(buffer, static_cast<size_t>(n));
    }
    return true;
}

TEST(StreamingOutput, LinesComeOutBeforeTheInputEnds) {
    int toChild[2], fromChild[2];
    ASSERT_EQ(::pipe2(toChild, O_CLOEXEC), 0);
    ASSERT_EQ(::pipe2(fromChild, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
    const char* argv[] = {VX_BINARY, "highlight", "-", "--language", "c", "--format", "scopes", nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, VX_BINARY, &actions, nullptr, const_cast<char**>(argv), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(toChild[0]);
    ::close(fromChild[1]);

    const std::string first = "/* a comment\n", second = "still the comment */ int x;\n", last = "int y;";
    std::string out;
    ASSERT_EQ(::write(toChild[1], first.data(), first.size()), static_cast<ssize_t>(first.size()));
    // Generous patience: the program starts and loads the language first.
    EXPECT_TRUE(readUntil(fromChild[0], out, "comment.block.c\n", 30000)) << "no output while the input is open: " << out;
    ASSERT_EQ(::write(toChild[1], second.data(), second.size()), static_cast<ssize_t>(second.size()));
    EXPECT_TRUE(readUntil(fromChild[0], out, "L1:\n", 30000)) << out;
    // The line after it has not been written yet, so it cannot have been highlighted.
    EXPECT_EQ(out.find("L2:"), std::string::npos);
    ASSERT_EQ(::write(toChild[1], last.data(), last.size()), static_cast<ssize_t>(last.size()));
    ::close(toChild[1]);
    readUntil(fromChild[0], out, "\x01 never printed", 30000);  // to the end of the output
    ::close(fromChild[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    const CommandResult whole = runCommand({VX_BINARY, "highlight", "-", "--language", "c", "--format", "scopes"},
                                           first + second + last);
    ASSERT_EQ(whole.status, 0) << whole.err;
    EXPECT_EQ(out, whole.out);
    EXPECT_NE(whole.out.find("L2:\n0-3 source.c storage.type.c"), std::string::npos) << whole.out;
}

TEST(StreamingOutput, ErrorsLeaveStandardOutputEmpty) {
    const CommandResult missing = runCommand({VX_BINARY, "highlight", "/no/such/file.c", "--format", "scopes"});
    EXPECT_NE(missing.status, 0);
    EXPECT_TRUE(missing.out.empty());
    EXPECT_EQ(missing.err.rfind("vx: /no/such/file.c: ", 0), 0u) << missing.err;
    const CommandResult folder = runCommand({VX_BINARY, "highlight", "/", "--format", "scopes"});
    EXPECT_NE(folder.status, 0);
    EXPECT_TRUE(folder.out.empty());
    const CommandResult language = runCommand({VX_BINARY, "highlight", "-", "--language", "nosuch", "--format", "html"}, "x");
    EXPECT_NE(language.status, 0);
    EXPECT_TRUE(language.out.empty()) << language.out;
}

TEST(StreamingOutput, ByteOrderMarkAndCutSequencesReadAsTheWholeText) {
    // A mark at the start is dropped; malformed bytes become U+FFFD, valid ones read as themselves.
    const std::string text = "\xEF\xBB\xBFint \xC3\xA9 = 1; // \xF0\x9F\x98\x80 \xE2\x82 \xFF\nx";
    const CommandResult result = runCommand({VX_BINARY, "highlight", "-", "--language", "c", "--format", "html"}, text);
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("\xC3\xA9"), std::string::npos);
    EXPECT_NE(result.out.find("\xF0\x9F\x98\x80 \xEF\xBF\xBD\xEF\xBF\xBD \xEF\xBF\xBD</span>\n"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("\xEF\xBB\xBF"), std::string::npos);

    // A file is read in blocks of 64 KiB: a character cut by the first block's end stays whole.
    TempDir dir;
    dir.write("long.c", "// " + std::string(65532, 'a') + "\xC3\xA9\xE2\x82\xAC\n");
    const CommandResult cut = runCommand({VX_BINARY, "highlight", dir.path() + "/long.c", "--format", "html"});
    ASSERT_EQ(cut.status, 0) << cut.err;
    EXPECT_NE(cut.out.find("aaa\xC3\xA9\xE2\x82\xAC"), std::string::npos);
    EXPECT_EQ(cut.out.find("\xEF\xBF\xBD"), std::string::npos);
}

}  // namespace
}  // namespace vx::test
