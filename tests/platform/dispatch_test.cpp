#include "platform/dispatch.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/run_loop.hpp"

namespace vx {
namespace {

using namespace std::chrono_literals;

TEST(SerialQueue, BlocksRunOneAtATimeInOrder) {
    SerialQueue queue("test");
    std::vector<int> order;
    std::atomic<int> inside{0};
    bool overlapped = false;
    for (int i = 0; i < 500; ++i)
        queue.async([&, i] {
            if (inside.fetch_add(1) != 0) overlapped = true;
            EXPECT_TRUE(queue.isCurrent());
            order.push_back(i);
            inside.fetch_sub(1);
        });
    int seen = 0;
    queue.sync([&] { seen = static_cast<int>(order.size()); });
    EXPECT_EQ(seen, 500);
    EXPECT_FALSE(overlapped);
    for (int i = 0; i < 500; ++i) ASSERT_EQ(order[i], i);
    EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialQueue, SyncFromManyThreadsKeepsBlocksExclusive) {
    SerialQueue queue;
    int counter = 0;  // unguarded on purpose: the queue is the guard
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                if (i % 2)
                    queue.sync([&] { ++counter; });
                else
                    queue.async([&] { ++counter; });
            }
        });
    for (auto& thread : threads) thread.join();
    queue.sync([] {});
    EXPECT_EQ(counter, 1600);
}

TEST(SerialQueue, BlocksThatWaitOnOtherQueuesDoNotStarveThePool) {
    // More waiting blocks than cores: the pool must grow rather than deadlock.
    constexpr int kQueues = 12;
    std::vector<std::unique_ptr<SerialQueue>> queues;
    for (int i = 0; i < kQueues; ++i) queues.push_back(std::make_unique<SerialQueue>());
    DispatchGroup released, finished;
    released.enter();
    for (auto& queue : queues) finished.async(*queue, [&] { released.wait(); });
    SerialQueue last;
    last.async([&] { released.leave(); });
    EXPECT_TRUE(finished.waitFor(5s));
}

TEST(SerialQueue, DestructionWaitsForQueuedWork) {
    std::atomic<int> ran{0};
    {
        SerialQueue queue;
        for (int i = 0; i < 50; ++i)
            queue.async([&] {
                std::this_thread::sleep_for(100us);
                ++ran;
            });
    }
    EXPECT_EQ(ran.load(), 50);
}

TEST(DispatchGroup, WaitNotifyAndTakingTurns) {
    SerialQueue a, b;
    DispatchGroup group;
    std::atomic<int> done{0};
    for (int i = 0; i < 20; ++i) group.async(i % 2 ? a : b, [&] { ++done; });
    group.wait();
    EXPECT_EQ(done.load(), 20);
    EXPECT_TRUE(group.isEmpty());

    group.enter();
    EXPECT_FALSE(group.waitFor(10ms));
    bool notified = false;
    group.notify(RunLoop::main(), [&] { notified = true; });
    RunLoop::main().runOnce(0ms);
    EXPECT_FALSE(notified);
    group.leave();
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return notified; }, 2s));

    // waitAndEnter makes readers take turns: never two inside at once.
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    std::vector<std::thread> readers;
    for (int t = 0; t < 4; ++t)
        readers.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                group.waitAndEnter();
                if (inside.fetch_add(1) != 0) overlapped = true;
                inside.fetch_sub(1);
                group.leave();
            }
        });
    for (auto& reader : readers) reader.join();
    EXPECT_FALSE(overlapped.load());
    EXPECT_TRUE(group.isEmpty());
}

TEST(ConcurrentApply, EveryIndexRunsExactlyOnce) {
    std::vector<std::atomic<int>> hits(1000);
    concurrentApply(hits.size(), [&](size_t i) { hits[i].fetch_add(1); });
    for (auto& hit : hits) ASSERT_EQ(hit.load(), 1);
    concurrentApply(0, [](size_t) { FAIL(); });
}

}  // namespace
}  // namespace vx
