#include "process/exit_watch.hpp"

#include <poll.h>

#include <chrono>

#include "platform/run_loop.hpp"
#include "process/child_process.hpp"

namespace vx {
namespace {

// Without pidfds (kernels before 5.3) the child is polled at this interval instead.
constexpr std::chrono::milliseconds kPollInterval(100);

void watchOnMainLoop(const std::shared_ptr<ChildProcess>& child) {
    RunLoop& loop = RunLoop::main();
    auto exitDescriptor = std::make_shared<UniqueFd>(child->exitDescriptor());
    if (!*exitDescriptor) {
        if (!child->poll()) return;
        auto timer = std::make_shared<RunLoop::TimerId>();
        *timer = loop.scheduleRepeatingTimer(kPollInterval, [child, timer, &loop] {
            if (!child->poll()) loop.cancelTimer(*timer);
        });
        return;
    }
    // Registered on the loop's own thread, so the handler cannot run before `watch` is set.
    auto watch = std::make_shared<RunLoop::WatchId>();
    *watch = loop.watchDescriptor(exitDescriptor->get(), POLLIN, [child, exitDescriptor, watch, &loop](short) {
        child->poll();
        loop.unwatchDescriptor(*watch);
    });
}

}  // namespace

void reapWhenExited(std::shared_ptr<ChildProcess> child) {
    RunLoop::main().performBlock([child = std::move(child)] { watchOnMainLoop(child); });
}

}  // namespace vx
