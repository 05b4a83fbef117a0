#include "support/run_command.hpp"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace vx::test {

CommandResult runCommand(const std::vector<std::string>& argv, const std::string& input) {
    int in[2], out[2], err[2];
    if (pipe(in) || pipe(out) || pipe(err)) return {};
    std::signal(SIGPIPE, SIG_IGN);
    pid_t pid = fork();
    if (pid == 0) {
        dup2(in[0], 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]}) close(fd);
        std::vector<char*> args;
        for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    size_t written = 0;
    if (input.empty()) close(in[1]);
    CommandResult result;
    pollfd fds[3] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}, {input.empty() ? -1 : in[1], POLLOUT, 0}};
    int open = 2;
    while (open > 0) {
        if (poll(fds, 3, -1) < 0) break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            char buffer[4096];
            ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
            if (n <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            } else {
                (i == 0 ? result.out : result.err).append(buffer, static_cast<size_t>(n));
            }
        }
        if (fds[2].fd >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP))) {
            ssize_t n = write(fds[2].fd, input.data() + written, input.size() - written);
            if (n > 0) written += static_cast<size_t>(n);
            if (n <= 0 || written == input.size()) {
                close(fds[2].fd);
                fds[2].fd = -1;
            }
        }
    }
    if (fds[2].fd >= 0) close(fds[2].fd);
    int status = 0;
    waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace vx::test
