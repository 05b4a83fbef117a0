#include "process/child_launch.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace vx {
namespace {

void closeDescriptorsAbove2(int descriptorTableSize) {
#ifdef SYS_close_range
    if (::syscall(SYS_close_range, 3U, ~0U, 0U) == 0) return;
#endif
    for (int fd = descriptorTableSize - 1; fd > 2; --fd) ::close(fd);
}

// Lowers the priority to `priority` when that is a valid niceness and nicer than the current
// one; an unprivileged process could not raise it anyway, so nothing else is attempted.
void lowerPriority(int64_t priority) {
    if (priority < -19 || priority > 19) return;
    errno = 0;
    const int current = ::getpriority(PRIO_PROCESS, 0);
    if (current == -1 && errno != 0) return;
    if (priority > current) ::setpriority(PRIO_PROCESS, 0, static_cast<int>(priority));
}

}  // namespace

void runChild(const ChildSetup& setup) noexcept {
    // The forking thread's blocked signals and an ignored SIGPIPE would otherwise carry over
    // into the program, which expects the defaults (a shell pipeline relies on SIGPIPE).
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);

    // A source already sitting on 0, 1 or 2 (the program was started with those closed) is
    // moved up first, so one dup2 cannot overwrite a source that a later one still needs.
    int sources[3] = {setup.input, setup.output, setup.error};
    for (int& fd : sources)
        if (fd >= 0 && fd <= 2) fd = ::fcntl(fd, F_DUPFD, 3);
    for (int target = 0; target < 3; ++target) ::dup2(sources[target], target);

    if (::chdir(setup.workingDirectory) != 0) {
        // A missing working directory is not fatal: the program runs where the editor runs.
    }
    lowerPriority(setup.priority);
    // Also closes the pipe ends dup2 copied from and the input pipe's writing end.
    closeDescriptorsAbove2(setup.descriptorTableSize);

    ::execve(setup.path, setup.arguments, setup.environment);
    // Exit status 0 on purpose: callers treat a program that could not start like one that
    // ran and printed nothing.
    ::_exit(0);
}

void CStringVector::reserve(size_t count) {
    m_strings.reserve(count);
}

char* const* CStringVector::data() {
    m_pointers.clear();
    m_pointers.reserve(m_strings.size() + 1);
    for (std::string& text : m_strings) m_pointers.push_back(text.data());
    m_pointers.push_back(nullptr);
    return m_pointers.data();
}

}  // namespace vx
