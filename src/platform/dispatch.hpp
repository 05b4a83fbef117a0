// Serial queues and dispatch groups: background work without a thread per task.
//
// A SerialQueue runs the blocks given to it one at a time, in the order they were given, on the
// threads of one shared pool; queues are cheap (a lock and a list), so there can be one per line
// marker or per database. `sync` runs its block on the calling thread once every block given
// before it has finished, so a pool thread is never held waiting for another.
//
// A DispatchGroup counts work in flight: `enter`/`leave` by hand or `async(queue, block)`; `wait`
// blocks until the count is back to zero and `notify` runs a block then.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace vx {

using Block = std::function<void()>;

class RunLoop;

class SerialQueue {
public:
    explicit SerialQueue(std::string label = {});
    // Waits for the blocks already given to finish (the blocks often use their owner's members).
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void async(Block block);
    // Runs the block on this thread after everything queued before it; never call it from a block
    // running on the same queue (it would wait for itself).
    void sync(const Block& block);
    // True on a thread that is running one of this queue's blocks.
    bool isCurrent() const;
    const std::string& label() const;

    struct State;

private:
    std::shared_ptr<State> m_state;
};

// Work handed to `async` keeps the group's state alive, so a group may be destroyed while its work
// is still running.
class DispatchGroup {
public:
    DispatchGroup();
    DispatchGroup(const DispatchGroup&) = delete;
    DispatchGroup& operator=(const DispatchGroup&) = delete;

    void enter();
    void leave();
    // Waits until every enter has been matched by a leave.
    void wait();
    // The same with a limit; false when the time ran out first.
    bool waitFor(std::chrono::milliseconds limit);
    // Waits until the group is empty, then enters it, in one step: no other waitAndEnter can slip in
    // between, so the callers take turns.
    void waitAndEnter();
    bool isEmpty() const;

    // Runs the block on the queue inside the group.
    void async(SerialQueue& queue, Block block);
    // Runs the block on the queue (or posts it to the run loop) once the group is empty; at once
    // when it already is.
    void notify(SerialQueue& queue, Block block);
    void notify(RunLoop& loop, Block block);

    struct State;

private:
    std::shared_ptr<State> m_state;
};

// Runs body(i) for i in [0, count) spread over the pool and the calling thread; returns when all are done.
void concurrentApply(size_t count, const std::function<void(size_t)>& body);

}  // namespace vx
