// Waiting, time limits, signals, status decoding and reaping.
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include <gtest/gtest.h>

#include "child_helpers.hpp"
#include "platform/run_loop.hpp"
#include "process/taskit.hpp"

namespace vx {
namespace {

using Clock = std::chrono::steady_clock;
using test::processState;
using test::shellTask;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool isGone(pid_t pid) {
    return ::kill(pid, 0) == -1 && errno == ESRCH;
}

TEST(TaskitWait, DecodesHowTheChildEnded) {
    auto exited = shellTask("exit 3");
    ASSERT_TRUE(exited->launch());
    exited->waitUntilExit();
    EXPECT_FALSE(exited->isRunning());
    EXPECT_EQ(exited->terminationReason(), 1);
    EXPECT_EQ(exited->terminationStatus(), 3);
    EXPECT_EQ(exited->terminationSignal(), 0);
    EXPECT_EQ(exited->waitpid(), 3 << 8);

    auto killed = shellTask("exec sleep 10");
    ASSERT_TRUE(killed->launch());
    ASSERT_EQ(::kill(killed->processIdentifier(), SIGKILL), 0);
    killed->waitUntilExit();
    EXPECT_EQ(killed->terminationReason(), 2);
    EXPECT_EQ(killed->terminationSignal(), 9);
    EXPECT_EQ(killed->terminationStatus(), 1);

    auto interrupted = shellTask("exec sleep 10");
    ASSERT_TRUE(interrupted->launch());
    interrupted->interrupt();
    interrupted->waitUntilExit();
    EXPECT_EQ(interrupted->terminationReason(), 2);
    EXPECT_EQ(interrupted->terminationSignal(), SIGINT);
}

TEST(TaskitWait, TimeLimitKillsTheChild) {
    auto sleeper = shellTask("exec sleep 10");
    ASSERT_TRUE(sleeper->launch());
    const pid_t pid = sleeper->pid();
    const auto start = Clock::now();
    EXPECT_TRUE(sleeper->waitUntilExitWithTimeout(0.5));
    const double waited = secondsSince(start);
    EXPECT_GE(waited, 0.5);
    EXPECT_LT(waited, 5.0);  // 0.5 s plus at most one polling interval; generous for a loaded machine
    EXPECT_FALSE(sleeper->isRunning());
    EXPECT_TRUE(isGone(pid)) << "still there in state " << processState(pid);
    // `kill` sends SIGTERM first, and SIGKILL only to a child still running after it.
    EXPECT_EQ(sleeper->terminationReason(), 2);
    EXPECT_TRUE(sleeper->terminationSignal() == SIGTERM || sleeper->terminationSignal() == SIGKILL)
        << sleeper->terminationSignal();

    // A child that ends within the limit, or with no limit, is not killed.
    auto quick = shellTask("sleep 0.2; exit 4");
    ASSERT_TRUE(quick->launch());
    EXPECT_FALSE(quick->waitUntilExitWithTimeout(2));
    EXPECT_EQ(quick->terminationStatus(), 4);
    auto unlimited = shellTask("sleep 0.3; exit 5");
    ASSERT_TRUE(unlimited->launch());
    EXPECT_FALSE(unlimited->waitUntilExitWithTimeout(0));
    EXPECT_EQ(unlimited->terminationStatus(), 5);
}

TEST(TaskitWait, SignalsReachARunningChildOnly) {
    auto task = shellTask("trap '' TERM; exec sleep 10");  // ignores SIGTERM, through exec
    ASSERT_TRUE(task->launch());
    // Wait for the shell to have set up the trap and become sleep.
    const auto start = Clock::now();
    while (test::processName(task->pid()) != "sleep" && secondsSince(start) < 2) ::usleep(10'000);

    EXPECT_TRUE(task->suspend());
    const auto stopStart = Clock::now();
    while (processState(task->pid()) != 'T' && secondsSince(stopStart) < 2) ::usleep(5'000);
    EXPECT_EQ(processState(task->pid()), 'T');
    EXPECT_TRUE(task->resume());
    const auto contStart = Clock::now();
    while (processState(task->pid()) == 'T' && secondsSince(contStart) < 2) ::usleep(5'000);
    EXPECT_NE(processState(task->pid()), 'T');

    task->terminate();
    EXPECT_TRUE(task->isRunning());  // SIGTERM is ignored
    task->kill();
    EXPECT_FALSE(task->isRunning());
    EXPECT_EQ(task->terminationSignal(), SIGKILL);

    // Once the child is gone, nothing is sent (its pid could belong to somebody else by now).
    EXPECT_FALSE(task->suspend());
    EXPECT_FALSE(task->resume());
    task->interrupt();
    EXPECT_EQ(task->terminationSignal(), SIGKILL);
}

TEST(TaskitWait, NoZombiesAreLeft) {
    {
        auto waited = shellTask("exit 0");
        ASSERT_TRUE(waited->launch());
        waited->waitUntilExit();
        auto timedOut = shellTask("exec sleep 10");
        ASSERT_TRUE(timedOut->launch());
        timedOut->waitUntilExitWithTimeout(0.2);
        auto collected = shellTask("echo out; echo err >&2");
        ASSERT_TRUE(collected->launch());
        collected->waitForOutputData(nullptr, nullptr);
        collected->waitUntilExit();
    }
    EXPECT_EQ(test::zombieChildren(), "");

    // Children nobody waits for are reaped on the main run loop once they exit.
    auto reaped = shellTask("exit 6");
    ASSERT_TRUE(reaped->launch());
    reaped->reapOnExit();
    pid_t abandonedPid = 0;
    {
        auto abandoned = shellTask("sleep 0.2");
        ASSERT_TRUE(abandoned->launch());
        abandonedPid = abandoned->pid();
    }
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return isGone(reaped->pid()) && isGone(abandonedPid); },
                                         std::chrono::milliseconds(3000)));
    EXPECT_FALSE(reaped->isRunning());
    EXPECT_EQ(reaped->terminationStatus(), 6);  // reaping kept the status
    EXPECT_EQ(test::zombieChildren(), "");
}

}  // namespace
}  // namespace vx
