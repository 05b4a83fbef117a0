#include "platform/run_loop.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>

#include "platform/log.hpp"

namespace vx {
namespace {

bool onMainThread() { return ::syscall(SYS_gettid) == ::getpid(); }

}  // namespace

RunLoop& RunLoop::main() {
    static RunLoop* loop = [] {
        static RunLoop instance;
        instance.m_isMain = true;
        return &instance;
    }();
    return *loop;
}

RunLoop& RunLoop::current() {
    if (onMainThread()) return main();
    thread_local RunLoop loop;
    return loop;
}

RunLoop::RunLoop() : m_wakeFd(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), m_owner(std::this_thread::get_id()) {
    VX_ASSERT(m_wakeFd);
}

bool RunLoop::isCurrent() const { return m_isMain ? onMainThread() : std::this_thread::get_id() == m_owner; }

void RunLoop::wakeUp() {
    uint64_t one = 1;
    while (::write(m_wakeFd.get(), &one, sizeof one) < 0 && errno == EINTR) {
    }
}

void RunLoop::performBlock(Block block) {
    {
        std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(block));
    }
    wakeUp();
}

void RunLoop::performBlockAndWait(const Block& block) {
    if (isCurrent()) {
        block();
        return;
    }
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
    performBlock([&] {
        block();
        std::lock_guard lock(mutex);
        finished = true;
        done.notify_all();
    });
    std::unique_lock lock(mutex);
    done.wait(lock, [&] { return finished; });
}

RunLoop::TimerId RunLoop::addTimer(std::chrono::milliseconds delay, std::chrono::milliseconds interval, Block block) {
    TimerId id;
    {
        std::lock_guard lock(m_mutex);
        id = m_nextId++;
        m_timers.emplace(id, Timer{Clock::now() + delay, interval, std::make_shared<Block>(std::move(block))});
    }
    wakeUp();
    return id;
}

RunLoop::TimerId RunLoop::performAfterDelay(std::chrono::milliseconds delay, Block block) {
    return addTimer(delay, std::chrono::milliseconds(0), std::move(block));
}

RunLoop::TimerId RunLoop::scheduleRepeatingTimer(std::chrono::milliseconds interval, Block block) {
    VX_ASSERT(interval.count() > 0);
    return addTimer(interval, interval, std::move(block));
}

void RunLoop::cancelTimer(TimerId timer) {
    std::lock_guard lock(m_mutex);
    m_timers.erase(timer);
}

RunLoop::WatchId RunLoop::watchDescriptor(int fd, short events, std::function<void(short)> ready) {
    WatchId id;
    {
        std::lock_guard lock(m_mutex);
        id = m_nextId++;
        m_watches.emplace(id, Watch{fd, events, std::make_shared<std::function<void(short)>>(std::move(ready))});
    }
    wakeUp();
    return id;
}

void RunLoop::unwatchDescriptor(WatchId watch) {
    {
        std::lock_guard lock(m_mutex);
        m_watches.erase(watch);
    }
    wakeUp();
}

bool RunLoop::runDueTimers() {
    // Timers are taken one at a time and looked up again, because a timer's block may cancel others.
    const auto now = Clock::now();
    std::vector<TimerId> due;
    {
        std::lock_guard lock(m_mutex);
        for (auto& [id, timer] : m_timers)
            if (timer.deadline <= now) due.push_back(id);
    }
    bool ran = false;
    for (TimerId id : due) {
        std::shared_ptr<Block> block;
        {
            std::lock_guard lock(m_mutex);
            auto found = m_timers.find(id);
            if (found == m_timers.end()) continue;
            block = found->second.block;
            if (found->second.interval.count() == 0) {
                m_timers.erase(found);
            } else {
                auto& timer = found->second;
                timer.deadline += timer.interval;
                if (timer.deadline <= now) timer.deadline = now + timer.interval;
            }
        }
        (*block)();
        ran = true;
    }
    return ran;
}

bool RunLoop::runOnce(std::chrono::milliseconds limit) {
    bool ran = false;
    std::vector<Block> posted;
    {
        std::lock_guard lock(m_mutex);
        posted.swap(m_posted);
    }
    for (auto& block : posted) block();
    ran |= !posted.empty();
    ran |= runDueTimers();

    std::vector<pollfd> fds{{m_wakeFd.get(), POLLIN, 0}};
    std::vector<WatchId> ids{0};
    auto wait = limit;
    {
        std::lock_guard lock(m_mutex);
        if (!m_posted.empty() || m_stopRequested || ran) wait = std::chrono::milliseconds(0);
        const auto now = Clock::now();
        for (auto& [id, timer] : m_timers) {
            auto until = std::chrono::ceil<std::chrono::milliseconds>(timer.deadline - now);
            if (until < wait) wait = std::max(until, std::chrono::milliseconds(0));
        }
        for (auto& [id, watch] : m_watches) {
            fds.push_back({watch.fd, watch.events, 0});
            ids.push_back(id);
        }
    }
    int count = ::poll(fds.data(), fds.size(), static_cast<int>(std::min<int64_t>(wait.count(), INT32_MAX)));
    if (count <= 0) return ran;
    if (fds[0].revents) {
        uint64_t value;
        while (::read(m_wakeFd.get(), &value, sizeof value) < 0 && errno == EINTR) {
        }
    }
    for (size_t i = 1; i < fds.size(); ++i) {
        if (!fds[i].revents) continue;
        std::shared_ptr<std::function<void(short)>> ready;
        {
            std::lock_guard lock(m_mutex);
            auto found = m_watches.find(ids[i]);
            if (found == m_watches.end()) continue;
            ready = found->second.ready;
        }
        (*ready)(fds[i].revents);
        ran = true;
    }
    return ran;
}

void RunLoop::run() {
    for (;;) {
        {
            std::lock_guard lock(m_mutex);
            if (m_stopRequested) {
                m_stopRequested = false;
                return;
            }
        }
        runOnce(std::chrono::hours(1));
    }
}

bool RunLoop::runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (!done()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return done();
        runOnce(std::min(left, std::chrono::milliseconds(50)));
    }
    return true;
}

void RunLoop::stop() {
    {
        std::lock_guard lock(m_mutex);
        m_stopRequested = true;
    }
    wakeUp();
}

}  // namespace vx
