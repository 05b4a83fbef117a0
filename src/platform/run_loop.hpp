// RunLoop: the event loop of a thread. The main thread's loop (`RunLoop::main()`) is where the
// documents live; any thread may post blocks to it, and the terminal editor runs it as its event
// loop, with its input descriptors watched by the same loop.
//
// One turn runs the blocks posted so far (in order), then the timers that are due, then waits until
// the next timer, a watched descriptor becomes ready, a block is posted or `wakeUp` is called, and
// handles the descriptors that are ready. Timers and descriptors are handled on the loop's thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/dispatch.hpp"
#include "platform/unique_handle.hpp"

namespace vx {

class RunLoop {
public:
    using TimerId = uint64_t;
    using WatchId = uint64_t;
    using Clock = std::chrono::steady_clock;

    // The loop of the process's main thread (it may be asked for from any thread).
    static RunLoop& main();
    // The calling thread's loop: main() on the main thread, else one made for this thread.
    static RunLoop& current();

    RunLoop();
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

    // From any thread: runs the block on the loop's next turn.
    void performBlock(Block block);
    // Runs the block on the loop's thread and waits for it; at once when called on that thread.
    void performBlockAndWait(const Block& block);
    // From any thread: a one-shot timer after `delay` (0 means the next turn).
    TimerId performAfterDelay(std::chrono::milliseconds delay, Block block);
    // A timer that fires every `interval` until cancelled; a turn that comes late fires it once,
    // not once per missed interval.
    TimerId scheduleRepeatingTimer(std::chrono::milliseconds interval, Block block);
    void cancelTimer(TimerId timer);

    // Calls `ready(revents)` on the loop's thread whenever poll(2) reports `events` on fd.
    WatchId watchDescriptor(int fd, short events, std::function<void(short)> ready);
    void unwatchDescriptor(WatchId watch);

    // Ends the current (or the next) wait early.
    void wakeUp();

    // One turn, waiting at most `limit`. True when a block, timer or descriptor handler ran.
    bool runOnce(std::chrono::milliseconds limit);
    // Turns until stop() is called.
    void run();
    // Turns until done() answers true or the time runs out; answers done().
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);
    void stop();

    // True on the thread that runs this loop.
    bool isCurrent() const;

private:
    struct Timer {
        Clock::time_point deadline;
        std::chrono::milliseconds interval{0};  // 0: fires once
        std::shared_ptr<Block> block;
    };
    struct Watch {
        int fd;
        short events;
        std::shared_ptr<std::function<void(short)>> ready;
    };

    TimerId addTimer(std::chrono::milliseconds delay, std::chrono::milliseconds interval, Block block);
    bool runDueTimers();

    UniqueFd m_wakeFd;
    mutable std::mutex m_mutex;
    std::vector<Block> m_posted;
    std::map<TimerId, Timer> m_timers;
    std::map<WatchId, Watch> m_watches;
    uint64_t m_nextId = 1;
    bool m_stopRequested = false;
    bool m_isMain = false;
    std::thread::id m_owner;
};

}  // namespace vx
