// The real program in a real terminal: vx runs inside tmux, keys go in with send-keys, and the
// pane is read back with capture-pane.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>
#include <signal.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "platform/file_cache.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

std::string run(const std::string& command) {
    std::string out;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return out;
    std::array<char, 4096> buffer;
    size_t count;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) out.append(buffer.data(), count);
    ::pclose(pipe);
    return out;
}

class Tmux {
public:
    explicit Tmux(const std::string& home) : m_socket("vx-e2e-" + std::to_string(::getpid())), m_home(home) {}
    ~Tmux() { run(tmux("kill-server") + " 2>/dev/null"); }
    std::string tmux(const std::string& arguments) const { return "tmux -L " + m_socket + " " + arguments; }

    void start(const std::string& program) {
        run(tmux("-f /dev/null new-session -d -x 80 -y 16 \"env VX_HOME=" + m_home + " COLORTERM=truecolor " + program +
                 "; echo EXIT=\\$?; sleep 5\""));
    }
    void keys(const std::string& keys) { run(tmux("send-keys -t 0 " + keys)); }
    std::string pane() { return run(tmux("capture-pane -p -t 0")); }
    // Waits (at most two seconds) until the pane shows `text`.
    bool waitFor(const std::string& text) {
        for (int i = 0; i < 100; ++i) {
            if (pane().find(text) != std::string::npos) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }
    // The editor is the only child of the pane's shell while it runs.
    pid_t programPid() {
        std::string shell = run(tmux("display -p -t 0 '#{pane_pid}'"));
        return static_cast<pid_t>(std::stol(run("pgrep -P " + std::to_string(std::stol(shell)))));
    }

private:
    std::string m_socket, m_home;
};

TEST(EndToEnd, EditSaveQuitAndRecoverAfterTermination) {
    if (run("command -v tmux").empty()) GTEST_SKIP() << "tmux is not installed";
    test::TempDir home, files;
    std::string path = files.write("hello.txt", "one\ntwo\n");
    Tmux tmux(home.path());
    tmux.start(std::string(VX_BINARY) + " " + path);
    ASSERT_TRUE(tmux.waitFor("hello.txt")) << tmux.pane();
    EXPECT_NE(tmux.pane().find("   1 one"), std::string::npos) << tmux.pane();

    tmux.keys("Down End ' and three' C-s");
    ASSERT_TRUE(tmux.waitFor("Saved")) << tmux.pane();
    EXPECT_EQ(readWholeFile(path), "one\ntwo and three\n");
    EXPECT_NE(tmux.pane().find("Ln 2, Col 14"), std::string::npos) << tmux.pane();

    // Unsaved text survives a SIGTERM, and the terminal is given back.
    tmux.keys("'lost?'");
    ASSERT_TRUE(tmux.waitFor("lost?")) << tmux.pane();
    ::kill(tmux.programPid(), SIGTERM);
    ASSERT_TRUE(tmux.waitFor("EXIT=1")) << tmux.pane();
    EXPECT_EQ(tmux.pane().find("   1 one"), std::string::npos) << "still on the editor's screen:\n" << tmux.pane();
    std::string recovered;
    for (const auto& entry : std::filesystem::directory_iterator(home.path() + "/Recovery"))
        if (entry.path().extension() == ".text") recovered = readWholeFile(entry.path().string()).value_or("");
    EXPECT_EQ(recovered, "one\ntwo and threelost?\n");
    EXPECT_EQ(readWholeFile(path), "one\ntwo and three\n");

    // The next start offers it back.
    Tmux again(home.path());
    again.start(std::string(VX_BINARY) + " " + path);
    ASSERT_TRUE(again.waitFor("Unsaved changes were kept")) << again.pane();
    again.keys("o");
    ASSERT_TRUE(again.waitFor("threelost?")) << again.pane();
    again.keys("C-q d");
    EXPECT_TRUE(again.waitFor("EXIT=0")) << again.pane();
}

TEST(EndToEnd, AFileChangedOnDiskIsNoticedAndTheAnswerIsTakenInTheEditor) {
    if (run("command -v tmux").empty()) GTEST_SKIP() << "tmux is not installed";
    test::TempDir home, files;
    std::string path = files.write("shared.txt", "mine\n");
    Tmux tmux(home.path());
    tmux.start(std::string(VX_BINARY) + " " + path);
    ASSERT_TRUE(tmux.waitFor("shared.txt")) << tmux.pane();
    tmux.keys("End ' edited'");
    ASSERT_TRUE(tmux.waitFor("mine edited")) << tmux.pane();
    // Another program writes the file; the periodic check notices within a few seconds.
    run("sleep 1.1; printf 'theirs\\n' > " + path);
    bool asked = false;
    for (int i = 0; i < 3 && !asked; ++i) asked = tmux.waitFor("Warning: This file has been changed by another application");
    ASSERT_TRUE(asked) << tmux.pane();
    EXPECT_NE(tmux.pane().find("Use Version on Disk"), std::string::npos) << tmux.pane();
    tmux.keys("u");
    ASSERT_TRUE(tmux.waitFor("   1 theirs")) << tmux.pane();
    // Typing goes on normally after the question.
    tmux.keys("C-Home x C-s");
    ASSERT_TRUE(tmux.waitFor("Saved")) << tmux.pane();
    EXPECT_EQ(readWholeFile(path), "xtheirs\n");
    tmux.keys("C-q");
    EXPECT_TRUE(tmux.waitFor("EXIT=0")) << tmux.pane();
}

}  // namespace
}  // namespace vx
