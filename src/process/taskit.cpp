// Launch, liveness, status, signals and waiting. Output collection is in taskit_output.cpp.
#include "process/taskit.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <string_view>

#include "platform/log.hpp"
#include "process/background_reader.hpp"
#include "process/child_launch.hpp"
#include "process/child_process.hpp"
#include "process/exit_watch.hpp"
#include "process/standardized_path.hpp"

extern char** environ;

namespace vx {
namespace {

// How long `kill` waits for a child it sent SIGKILL to before leaving the reaping to a later poll
// (a process stuck in an uninterruptible wait dies only when that wait ends).
constexpr double kKillReapLimit = 1.0;

Pipe makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        VX_LOG_DEBUG("process", "pipe failed: errno %d", errno);
        return {};
    }
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

std::string currentDirectory() {
    std::string path(256, '\0');
    while (::getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE) return {};
        path.resize(path.size() * 2);
    }
    path.resize(path.find('\0'));
    return path;
}

bool isExecutableFile(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// Writes all of `bytes` to a pipe whose reader may be gone already. SIGPIPE is blocked on this
// thread meanwhile, and one raised by the write is consumed, so a child that exits without
// reading its input cannot take the editor down with it.
void writeAll(int fd, std::string_view bytes) {
    sigset_t pipeSignal, previous, pending;
    ::sigemptyset(&pipeSignal);
    ::sigaddset(&pipeSignal, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);
    ::sigpending(&pending);
    const bool alreadyPending = ::sigismember(&pending, SIGPIPE);

    bool broken = false;
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<size_t>(written));
        } else if (written == -1 && errno == EINTR) {
            continue;
        } else {
            broken = errno == EPIPE;
            VX_LOG_DEBUG("process", "input not fully written: errno %d", errno);
            break;
        }
    }
    if (broken && !alreadyPending) {
        const timespec immediately{};
        ::sigtimedwait(&pipeSignal, nullptr, &immediately);
    }
    ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

}  // namespace

Taskit::Taskit()
    : m_workingDirectory(currentDirectory()),
      m_inPipe(makePipe()),
      m_outPipe(makePipe()),
      m_errPipe(makePipe()),
      m_child(std::make_shared<ChildProcess>()) {}

Taskit::~Taskit() {
    end();
    // Nobody can wait for the child any more; reaping it when it exits keeps it from lingering
    // as a zombie, without cutting short what it is doing.
    if (isRunning()) reapOnExit();
}

void Taskit::populateWithCurrentEnvironment() {
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view variable(*entry);
        const size_t equals = variable.find('=');
        if (equals == std::string_view::npos) continue;
        m_environment[std::string(variable.substr(0, equals))] = std::string(variable.substr(equals + 1));
    }
}

bool Taskit::launch() {
    if (m_launched || m_launchPath.empty()) return false;
    m_launchPath = standardizedPath(m_launchPath);
    if (!isExecutableFile(m_launchPath)) return false;

    m_arguments.insert(m_arguments.begin(), m_launchPath);
    if (m_arguments.size() + m_environment.size() + 2 > kArgumentLimit) return false;
    // The pipes are missing after `end`, or when the system ran out of descriptors.
    if (!m_inPipe.readEnd || !m_inPipe.writeEnd || !m_outPipe.writeEnd || !m_errPipe.writeEnd) return false;

    CStringVector arguments, environment;
    arguments.reserve(m_arguments.size());
    for (const std::string& argument : m_arguments) arguments.add(argument);
    environment.reserve(m_environment.size());
    for (const auto& [name, value] : m_environment)
        if (!name.empty() && value) environment.add(name + "=" + *value);

    UniqueFd inputFile;
    int input = m_inPipe.readEnd.get();
    if (!m_inputPath.empty()) {
        inputFile = UniqueFd(::open(m_inputPath.c_str(), O_RDONLY | O_CLOEXEC));
        if (!inputFile) return false;
        input = inputFile.get();
    }

    ChildSetup setup;
    setup.path = m_launchPath.c_str();
    setup.arguments = arguments.data();
    setup.environment = environment.data();
    setup.workingDirectory = m_workingDirectory.c_str();
    setup.input = input;
    setup.output = m_outPipe.writeEnd.get();
    setup.error = m_errPipe.writeEnd.get();
    setup.priority = m_priority;
    setup.descriptorTableSize = ::getdtablesize();

    const pid_t pid = ::fork();
    if (pid == -1) {
        std::printf("A forking error occurred\n");
        std::fflush(stdout);
        return false;
    }
    if (pid == 0) runChild(setup);

    m_launched = true;
    m_child->started(pid);
    m_inPipe.readEnd.reset();
    m_outPipe.writeEnd.reset();
    m_errPipe.writeEnd.reset();
    feedInput();
    return true;
}

void Taskit::feedInput() {
    if (m_input)
        writeAll(m_inPipe.writeEnd.get(), *m_input);
    else if (m_inputString)
        writeAll(m_inPipe.writeEnd.get(), *m_inputString);
    // Always closed, so the child sees the end of its input.
    m_inPipe.writeEnd.reset();
}

bool Taskit::isRunning() {
    return m_child->poll();
}

pid_t Taskit::pid() const {
    return m_child->pid();
}

int Taskit::waitpid() const {
    return m_child->status();
}

int Taskit::terminationStatus() const {
    const int status = m_child->status();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

int Taskit::terminationReason() const {
    const int low = m_child->status() & 0x7f;
    if (low == 0) return 1;
    return low < 0x7f ? 2 : 0;
}

int Taskit::terminationSignal() const {
    const int low = m_child->status() & 0x7f;
    return low >= 1 && low <= 126 ? low : 0;
}

void Taskit::interrupt() {
    if (isRunning()) m_child->signal(SIGINT);
}

void Taskit::terminate() {
    if (!isRunning()) return;
    m_child->signal(SIGTERM);
    isRunning();
}

void Taskit::kill() {
    if (!isRunning()) return;
    terminate();
    if (!isRunning()) return;
    m_child->signal(SIGKILL);
    // SIGKILL cannot be caught, so the child is gone within moments: waiting for that here
    // reaps it now rather than leaving a zombie until somebody polls again.
    const UniqueFd exitDescriptor = m_child->exitDescriptor();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(kKillReapLimit);
    while (isRunning() && std::chrono::steady_clock::now() < deadline)
        waitForExit(exitDescriptor, exitDescriptor ? kKillReapLimit : 0.005);
}

bool Taskit::suspend() {
    if (!isRunning()) return false;
    m_child->signal(SIGSTOP);
    return isRunning();
}

bool Taskit::resume() {
    if (!isRunning()) return false;
    m_child->signal(SIGCONT);
    return isRunning();
}

void Taskit::reapOnExit() {
    if (m_reapingOnExit || m_child->pid() <= 0 || !isRunning()) return;
    m_reapingOnExit = true;
    reapWhenExited(m_child);
}

void Taskit::waitUntilExit() {
    waitUntilExitWithTimeout(0);
}

bool Taskit::waitUntilExitWithTimeout(double seconds) {
    const auto start = std::chrono::steady_clock::now();
    // The interval starts short, for the many children that finish at once, and grows so that a
    // long wait costs few wake-ups. The exit descriptor ends an interval early when the child exits.
    const UniqueFd exitDescriptor = m_child->exitDescriptor();
    double interval = 0.01;
    while (isRunning()) {
        waitForExit(exitDescriptor, interval);
        interval = std::min(interval * 1.5, 1.0);
        const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;
        if (seconds > 0 && waited.count() > seconds && isRunning()) {
            kill();
            return true;
        }
    }
    return false;
}

}  // namespace vx
