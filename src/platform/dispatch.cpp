#include "platform/dispatch.hpp"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/log.hpp"
#include "platform/run_loop.hpp"

namespace vx {
namespace {

// The threads that run every queue's blocks. It grows when work arrives and no thread is free
// (a block may wait on another queue's work, so a fixed small pool could starve itself), up to a cap.
class ThreadPool {
public:
    static ThreadPool& shared() {
        static ThreadPool pool;
        return pool;
    }

    void submit(Block task) {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
        if (m_tasks.size() > m_idle && m_threads.size() < kMaxThreads)
            m_threads.emplace_back([this] { work(); });
        else
            m_wake.notify_one();
    }

    ~ThreadPool() {
        {
            std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_wake.notify_all();
        for (auto& thread : m_threads) thread.join();
    }

private:
    static constexpr size_t kMaxThreads = 64;

    void work() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            ++m_idle;
            m_wake.wait(lock, [this] { return m_stopping || !m_tasks.empty(); });
            --m_idle;
            if (m_tasks.empty()) return;  // stopping
            Block task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Block> m_tasks;
    std::vector<std::thread> m_threads;
    size_t m_idle = 0;
    bool m_stopping = false;
};

}  // namespace

// A queued block, or a place held for a `sync` caller: when the drain reaches it, the caller is
// told to run its block and the right to run this queue passes to that caller's thread.
struct SyncTicket {
    bool granted = false;
};

struct SerialQueue::State : std::enable_shared_from_this<SerialQueue::State> {
    struct Item {
        Block block;
        std::shared_ptr<SyncTicket> ticket;
    };

    std::string label;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Item> items;
    bool running = false;  // some thread holds the right to run this queue's blocks

    // Hands the right to run on to the pool when work is left, else gives it up. Locked by caller.
    void releaseLocked() {
        if (!items.empty())
            ThreadPool::shared().submit([self = shared_from_this()] { self->drain(); });
        else
            running = false;
        changed.notify_all();
    }

    void drain();
};

namespace {
thread_local const SerialQueue::State* t_currentQueue = nullptr;

void runAs(const SerialQueue::State* queue, const Block& block) {
    const auto* previous = std::exchange(t_currentQueue, queue);
    block();
    t_currentQueue = previous;
}
}  // namespace

void SerialQueue::State::drain() {
    // A bounded batch, then back to the pool, so that a busy queue does not keep a thread from others.
    for (int batch = 0; batch < 64; ++batch) {
        std::unique_lock lock(mutex);
        if (items.empty()) {
            running = false;
            changed.notify_all();
            return;
        }
        Item item = std::move(items.front());
        items.pop_front();
        if (item.ticket) {
            item.ticket->granted = true;
            changed.notify_all();
            return;
        }
        lock.unlock();
        runAs(this, item.block);
    }
    std::lock_guard lock(mutex);
    releaseLocked();
}

SerialQueue::SerialQueue(std::string label) : m_state(std::make_shared<State>()) {
    m_state->label = std::move(label);
}

SerialQueue::~SerialQueue() {
    if (isCurrent()) return;
    std::unique_lock lock(m_state->mutex);
    m_state->changed.wait(lock, [this] { return !m_state->running && m_state->items.empty(); });
}

void SerialQueue::async(Block block) {
    std::lock_guard lock(m_state->mutex);
    m_state->items.push_back({std::move(block), nullptr});
    if (!m_state->running) {
        m_state->running = true;
        ThreadPool::shared().submit([state = m_state] { state->drain(); });
    }
}

void SerialQueue::sync(const Block& block) {
    std::unique_lock lock(m_state->mutex);
    if (m_state->running || !m_state->items.empty()) {
        auto ticket = std::make_shared<SyncTicket>();
        m_state->items.push_back({nullptr, ticket});
        m_state->changed.wait(lock, [&] { return ticket->granted; });
    } else {
        m_state->running = true;
    }
    lock.unlock();
    runAs(m_state.get(), block);
    lock.lock();
    m_state->releaseLocked();
}

bool SerialQueue::isCurrent() const { return t_currentQueue == m_state.get(); }

const std::string& SerialQueue::label() const { return m_state->label; }

struct DispatchGroup::State {
    std::mutex mutex;
    std::condition_variable emptied;
    size_t count = 0;
    std::vector<std::pair<std::function<void(Block)>, Block>> waiting;

    void whenEmpty(std::function<void(Block)> deliver, Block block) {
        std::unique_lock lock(mutex);
        if (count == 0) {
            lock.unlock();
            deliver(std::move(block));
            return;
        }
        waiting.emplace_back(std::move(deliver), std::move(block));
    }

    void leave() {
        std::vector<std::pair<std::function<void(Block)>, Block>> due;
        {
            std::lock_guard lock(mutex);
            VX_ASSERT(count > 0);
            if (--count > 0) return;
            due.swap(waiting);
            emptied.notify_all();
        }
        for (auto& [deliver, block] : due) deliver(std::move(block));
    }
};

DispatchGroup::DispatchGroup() : m_state(std::make_shared<State>()) {}

void DispatchGroup::enter() {
    std::lock_guard lock(m_state->mutex);
    ++m_state->count;
}

void DispatchGroup::leave() { m_state->leave(); }

void DispatchGroup::wait() {
    std::unique_lock lock(m_state->mutex);
    m_state->emptied.wait(lock, [this] { return m_state->count == 0; });
}

bool DispatchGroup::waitFor(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_state->mutex);
    return m_state->emptied.wait_for(lock, limit, [this] { return m_state->count == 0; });
}

void DispatchGroup::waitAndEnter() {
    std::unique_lock lock(m_state->mutex);
    m_state->emptied.wait(lock, [this] { return m_state->count == 0; });
    ++m_state->count;
}

bool DispatchGroup::isEmpty() const {
    std::lock_guard lock(m_state->mutex);
    return m_state->count == 0;
}

void DispatchGroup::async(SerialQueue& queue, Block block) {
    enter();
    queue.async([state = m_state, block = std::move(block)] {
        block();
        state->leave();
    });
}

void DispatchGroup::notify(SerialQueue& queue, Block block) {
    m_state->whenEmpty([&queue](Block b) { queue.async(std::move(b)); }, std::move(block));
}

void DispatchGroup::notify(RunLoop& loop, Block block) {
    m_state->whenEmpty([&loop](Block b) { loop.performBlock(std::move(b)); }, std::move(block));
}

void concurrentApply(size_t count, const std::function<void(size_t)>& body) {
    if (count == 0) return;
    struct Shared {
        std::atomic<size_t> next{0};
        std::mutex mutex;
        std::condition_variable finished;
        size_t helpersLeft = 0;
    };
    auto shared = std::make_shared<Shared>();
    auto run = [shared, count, &body] {
        for (size_t i; (i = shared->next.fetch_add(1)) < count;) body(i);
    };
    const size_t helpers = std::min<size_t>(count, std::max(1u, std::thread::hardware_concurrency())) - 1;
    shared->helpersLeft = helpers;
    for (size_t h = 0; h < helpers; ++h)
        ThreadPool::shared().submit([shared, run] {
            run();
            std::lock_guard lock(shared->mutex);
            if (--shared->helpersLeft == 0) shared->finished.notify_all();
        });
    run();
    std::unique_lock lock(shared->mutex);
    shared->finished.wait(lock, [&] { return shared->helpersLeft == 0; });
}

}  // namespace vx
