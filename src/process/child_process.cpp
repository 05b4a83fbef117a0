#include "process/child_process.hpp"

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>

namespace vx {

void ChildProcess::started(pid_t pid) {
    std::lock_guard lock(m_mutex);
    m_pid = pid;
    m_running = true;
    m_status = 0;
}

pid_t ChildProcess::pid() const {
    std::lock_guard lock(m_mutex);
    return m_pid;
}

int ChildProcess::status() const {
    std::lock_guard lock(m_mutex);
    return m_status;
}

bool ChildProcess::poll() {
    std::lock_guard lock(m_mutex);
    if (!m_running) return false;
    int status = 0;
    const pid_t result = ::waitpid(m_pid, &status, WNOHANG);
    if (result == 0) return true;
    m_running = false;
    m_status = result == -1 ? 0 : status;
    return false;
}

bool ChildProcess::signal(int signalNumber) {
    std::lock_guard lock(m_mutex);
    return m_running && ::kill(m_pid, signalNumber) == 0;
}

UniqueFd ChildProcess::exitDescriptor() const {
    std::lock_guard lock(m_mutex);
    if (!m_running) return UniqueFd();
#ifdef SYS_pidfd_open
    return UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0)));
#else
    return UniqueFd();
#endif
}

void waitForExit(const UniqueFd& exitDescriptor, double seconds) {
    if (seconds <= 0) return;
    if (exitDescriptor) {
        pollfd watch{exitDescriptor.get(), POLLIN, 0};
        ::poll(&watch, 1, static_cast<int>(std::ceil(seconds * 1000)));
        return;
    }
    timespec interval{static_cast<time_t>(seconds), static_cast<long>(std::fmod(seconds, 1.0) * 1e9)};
    while (::nanosleep(&interval, &interval) == -1 && errno == EINTR) {
    }
}

}  // namespace vx
