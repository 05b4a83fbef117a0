#include "platform/run_loop.hpp"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace vx {
namespace {

using namespace std::chrono_literals;

TEST(RunLoop, PostedBlocksRunInOrderOnTheLoopThread) {
    RunLoop& loop = RunLoop::main();  // tests run on the main thread
    EXPECT_TRUE(loop.isCurrent());
    std::vector<int> order;
    std::thread poster([&] {
        EXPECT_FALSE(RunLoop::main().isCurrent());
        for (int i = 0; i < 100; ++i) loop.performBlock([&order, i] { order.push_back(i); });
    });
    poster.join();
    loop.performBlock([&] { order.push_back(100); });
    ASSERT_TRUE(loop.runUntil([&] { return order.size() == 101; }, 2s));
    for (int i = 0; i <= 100; ++i) EXPECT_EQ(order[i], i);
}

TEST(RunLoop, DelayedCallsFireByDeadlineAndCanBeCancelled) {
    RunLoop loop;
    std::string fired;
    loop.performAfterDelay(30ms, [&] { fired += "b"; });
    loop.performAfterDelay(0ms, [&] { fired += "a"; });
    auto cancelled = loop.performAfterDelay(10ms, [&] { fired += "x"; });
    loop.cancelTimer(cancelled);
    ASSERT_TRUE(loop.runUntil([&] { return fired.size() == 2; }, 2s));
    EXPECT_EQ(fired, "ab");
    loop.runOnce(40ms);
    EXPECT_EQ(fired, "ab");
}

TEST(RunLoop, RepeatingTimerFiresUntilCancelledFromItsOwnBlock) {
    RunLoop loop;
    int count = 0;
    RunLoop::TimerId timer = 0;
    timer = loop.scheduleRepeatingTimer(5ms, [&] {
        if (++count == 3) loop.cancelTimer(timer);
    });
    loop.runUntil([&] { return count >= 3; }, 2s);
    loop.runOnce(30ms);
    EXPECT_EQ(count, 3);
}

TEST(RunLoop, WatchedDescriptorsAndWakeUpsEndTheWait) {
    RunLoop& loop = RunLoop::main();
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    std::string received;
    auto watch = loop.watchDescriptor(fds[0], POLLIN, [&](short) {
        char buffer[16];
        ssize_t n = ::read(fds[0], buffer, sizeof buffer);
        if (n > 0) received.append(buffer, static_cast<size_t>(n));
    });
    std::thread writer([&] {
        std::this_thread::sleep_for(20ms);
        ASSERT_EQ(::write(fds[1], "key", 3), 3);
    });
    // One long wait returns as soon as the descriptor is readable.
    const auto started = RunLoop::Clock::now();
    while (received.empty() && RunLoop::Clock::now() - started < 5s) loop.runOnce(10s);
    writer.join();
    EXPECT_EQ(received, "key");
    loop.unwatchDescriptor(watch);

    std::thread stopper([&] {
        std::this_thread::sleep_for(20ms);
        loop.stop();
    });
    loop.run();  // returns because stop() woke it
    stopper.join();
    ::close(fds[0]);
    ::close(fds[1]);
}

TEST(RunLoop, PerformBlockAndWaitRunsOnTheLoopThread) {
    RunLoop& loop = RunLoop::main();
    std::atomic<bool> done{false};
    bool ranOnMain = false;
    std::thread worker([&] {
        loop.performBlockAndWait([&] { ranOnMain = RunLoop::main().isCurrent(); });
        done = true;
    });
    loop.runUntil([&] { return done.load(); }, 2s);
    worker.join();
    EXPECT_TRUE(ranOnMain);
    int inline_ = 0;
    loop.performBlockAndWait([&] { inline_ = 1; });
    EXPECT_EQ(inline_, 1);
}

}  // namespace
}  // namespace vx
