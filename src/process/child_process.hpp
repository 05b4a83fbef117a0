// The liveness of one launched child: its pid, whether it still runs, and the raw status that
// waitpid last reported. The runner and the exit watch that reaps the child share one of these,
// so every step that reaps or signals happens under its lock: a pid is never signalled after it
// was reaped (and possibly reused), and a status is never lost to a second waitpid.
#pragma once

#include <sys/types.h>

#include <mutex>

#include "platform/unique_handle.hpp"

namespace vx {

class ChildProcess {
public:
    void started(pid_t pid);

    pid_t pid() const;
    int status() const;

    // While the child is marked running, asks waitpid without blocking: 0 means it still runs;
    // anything else clears the mark (and an error, -1, also clears the stored status).
    bool poll();
    // Sends a signal when the child is still running; answers whether it was sent.
    bool signal(int signalNumber);
    // A descriptor that becomes readable when the child exits (Linux pidfd); empty when the
    // child is no longer running or the kernel has no pidfds. It does not reap the child.
    UniqueFd exitDescriptor() const;

private:
    mutable std::mutex m_mutex;
    pid_t m_pid = 0;
    bool m_running = false;
    int m_status = 0;
};

// Sleeps until the process behind `exitDescriptor` has exited or `seconds` have passed; without
// a descriptor it sleeps the whole time.
void waitForExit(const UniqueFd& exitDescriptor, double seconds);

}  // namespace vx
