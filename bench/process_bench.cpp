// Launching a small command and collecting its output: the runner (fork, execve, 200-byte reads,
// an exit wait) beside posix_spawn with a plain read loop as the baseline. Run both in one go
// and compare the times per iteration:
//     build/release/bench/process_bench --benchmark_filter=LaunchAndCollect
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include <benchmark/benchmark.h>

#include "process/taskit.hpp"

namespace {

const char* const kProgram = "/bin/echo";

void BM_TaskitLaunchAndCollect(benchmark::State& state) {
    for (auto _ : state) {
        auto task = vx::Taskit::task();
        task->setLaunchPath(kProgram);
        task->arguments() = {"hello"};
        if (!task->launch()) {
            state.SkipWithError("launch failed");
            break;
        }
        std::string output, error;
        task->waitForOutputData(&output, &error);
        task->waitUntilExit();
        benchmark::DoNotOptimize(output);
    }
}
BENCHMARK(BM_TaskitLaunchAndCollect)->Unit(benchmark::kMicrosecond);

// The same job written directly against posix_spawn: output and error pipes, an empty
// environment, both streams read until they close, then waitpid.
void BM_PosixSpawnLaunchAndCollect(benchmark::State& state) {
    char* const arguments[] = {const_cast<char*>(kProgram), const_cast<char*>("hello"), nullptr};
    char* const environment[] = {nullptr};
    for (auto _ : state) {
        int out[2], err[2];
        if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
            state.SkipWithError("pipe failed");
            break;
        }
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        ::posix_spawn_file_actions_adddup2(&actions, err[1], 2);
        pid_t pid = 0;
        const int failed = ::posix_spawn(&pid, kProgram, &actions, nullptr, arguments, environment);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        ::close(err[1]);
        std::string output, error;
        pollfd streams[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
        std::string* into[2] = {&output, &error};
        int open = 2;
        while (!failed && open > 0) {
            ::poll(streams, 2, -1);
            for (int i = 0; i < 2; ++i) {
                if (streams[i].fd < 0 || streams[i].revents == 0) continue;
                char buffer[4096];
                const ssize_t got = ::read(streams[i].fd, buffer, sizeof buffer);
                if (got > 0) {
                    into[i]->append(buffer, static_cast<size_t>(got));
                } else {
                    streams[i].fd = -1;
                    --open;
                }
            }
        }
        ::close(out[0]);
        ::close(err[0]);
        int status = 0;
        if (failed == 0) ::waitpid(pid, &status, 0);
        benchmark::DoNotOptimize(output);
    }
}
BENCHMARK(BM_PosixSpawnLaunchAndCollect)->Unit(benchmark::kMicrosecond);

}  // namespace
