// Every shell command of a snippet runs through runShellConstant, and only here.
//
// This is a minimal fork/exec/pipe launch: it is the place the program's child-process runner
// (Taskit, in src/process/) replaces once it is available, so that snippets use the same
// launching, environment and time-out handling as every other child process.
#include "snippets/shell_constant_runner.hpp"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <vector>

#include "platform/log.hpp"
#include "platform/unique_handle.hpp"
#include "snippets/utf16.hpp"

extern char** environ;

namespace vx {
namespace {

struct Pipe {
    UniqueFd read, write;
    static std::optional<Pipe> make() {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0) return std::nullopt;
        return Pipe{UniqueFd(fds[0]), UniqueFd(fds[1])};
    }
};

// The argument vector: "/bin/sh -c SCRIPT", or the interpreter named by the prefix split as a
// "#!" line is (the program, then the rest as one argument).
std::vector<std::string> commandLine(const std::string& prefix, const std::string& script) {
    if (prefix.empty()) return {"/bin/sh", "-c", script};
    size_t begin = prefix.find_first_not_of(" \t");
    size_t programEnd = prefix.find_first_of(" \t", begin);
    std::vector<std::string> arguments{prefix.substr(begin, programEnd - begin)};
    if (programEnd != std::string::npos) {
        size_t rest = prefix.find_first_not_of(" \t", programEnd);
        size_t last = prefix.find_last_not_of(" \t");
        if (rest != std::string::npos) arguments.push_back(prefix.substr(rest, last + 1 - rest));
    }
    return arguments;
}

std::vector<std::string> childEnvironment(const SnippetEnvironment& environment) {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; entry && *entry; ++entry) {
        std::string_view text(*entry);
        size_t equals = text.find('=');
        if (equals != std::string_view::npos) variables[std::string(text.substr(0, equals))] = text.substr(equals + 1);
    }
    for (auto& [name, value] : environment.exportedVariables()) variables[name] = value;
    std::vector<std::string> result;
    for (auto& [name, value] : variables) result.push_back(name + "=" + value);
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& strings) {
    std::vector<char*> result;
    for (auto& s : strings) result.push_back(s.data());
    result.push_back(nullptr);
    return result;
}

// Blocks SIGPIPE on this thread while writing to a child that may have exited, then consumes
// a SIGPIPE raised meanwhile, leaving the process's signal handling as it was.
class SigpipeBlocked {
public:
    SigpipeBlocked() {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_previous);
    }
    ~SigpipeBlocked() {
        sigset_t pending;
        sigpending(&pending);
        if (sigismember(&pending, SIGPIPE) && !sigismember(&m_previous, SIGPIPE)) {
            timespec zero{};
            sigtimedwait(&m_pipe, nullptr, &zero);
        }
        pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
    }
    SigpipeBlocked(const SigpipeBlocked&) = delete;
    SigpipeBlocked& operator=(const SigpipeBlocked&) = delete;

private:
    sigset_t m_pipe, m_previous;
};

// Feeds `input` to the child and collects its standard output until it closes, or until the
// deadline passes. Returns false on a time-out.
bool exchange(int inputFd, int outputFd, const std::string& input, std::string& output,
              std::chrono::steady_clock::time_point deadline) {
    size_t written = 0;
    if (input.empty()) ::close(std::exchange(inputFd, -1));
    while (outputFd >= 0) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd fds[2] = {{outputFd, POLLIN, 0}, {inputFd, POLLOUT, 0}};
        int ready = ::poll(fds, inputFd >= 0 ? 2 : 1, static_cast<int>(left.count()));
        if (ready < 0 && errno != EINTR) return false;
        if (ready <= 0) continue;
        if (fds[0].revents) {
            char buffer[4096];
            ssize_t n = ::read(outputFd, buffer, sizeof buffer);
            if (n > 0) output.append(buffer, static_cast<size_t>(n));
            else if (n == 0 || errno != EINTR) outputFd = -1;
        }
        if (inputFd >= 0 && fds[1].revents) {
            ssize_t n = ::write(inputFd, input.data() + written, input.size() - written);
            if (n > 0) written += static_cast<size_t>(n);
            if ((n < 0 && errno != EINTR && errno != EAGAIN) || written == input.size()) ::close(std::exchange(inputFd, -1));
        }
    }
    if (inputFd >= 0) ::close(inputFd);
    return true;
}

}  // namespace

std::optional<std::u16string> runShellConstant(std::u16string_view prefix, std::u16string_view script,
                                               const SnippetEnvironment& environment) {
    std::string prefixText = utf16ToUtf8(prefix), scriptText = utf16ToUtf8(script);
    if (!prefixText.empty() && prefixText.find_first_not_of(" \t") == std::string::npos) prefixText.clear();
    std::vector<std::string> arguments = commandLine(prefixText, scriptText);
    std::vector<std::string> variables = childEnvironment(environment);
    std::vector<char*> argv = pointers(arguments), envp = pointers(variables);
    std::string input = prefixText.empty() ? std::string() : scriptText;

    auto toChild = Pipe::make(), fromChild = Pipe::make();
    if (!toChild || !fromChild) return std::nullopt;
    int devNull = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    UniqueFd devNullHandle(devNull);
    pid_t pid = ::fork();
    if (pid < 0) {
        VX_LOG_DEBUG("snippets", "cannot fork for a shell constant: %s", std::strerror(errno));
        return std::nullopt;
    }
    if (pid == 0) {
        ::dup2(toChild->read.get(), 0);
        ::dup2(fromChild->write.get(), 1);
        if (devNull >= 0) ::dup2(devNull, 2);
        ::closefrom(3);
        ::execvpe(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    toChild->read.reset();
    fromChild->write.reset();
    std::string output;
    auto deadline = std::chrono::steady_clock::now() +
                    std::chrono::milliseconds(static_cast<int64_t>(environment.shellTimeout * 1000));
    bool finished;
    {
        SigpipeBlocked blocked;  // a child that exits without reading its input must not kill us
        finished = exchange(toChild->write.release(), fromChild->read.get(), input, output, deadline);
    }
    if (!finished) ::kill(pid, SIGKILL);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
    if (!finished || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        VX_LOG_DEBUG("snippets", "shell constant failed (%s)", finished ? "exit status" : "timed out");
        return std::nullopt;
    }
    if (!output.empty() && output.back() == '\n') output.pop_back();
    return utf8ToUtf16(output);
}

}  // namespace vx
