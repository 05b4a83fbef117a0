// Taskit: runs one program as a child process, with its own pipes for standard input, output and
// error, an explicit environment, a working directory and optionally a lower scheduling priority.
// The caller feeds input, collects output, waits (with or without a time limit) and signals it.
//
//     auto task = Taskit::task();
//     task->setLaunchPath("/bin/sh");
//     task->arguments() = {"-c", "sort"};        // becomes {"/bin/sh", "-c", "sort"} at launch
//     task->setInputString("b\na\n");            // written, and the pipe closed, before launch returns
//     if (task->launch()) {
//         std::string output, error;
//         task->waitForOutputString(&output, &error);   // "a\nb\n"
//         task->waitUntilExit();
//     }
//
// Built directly on fork, dup2, chdir, getpriority/setpriority, execve, waitpid and kill. The
// child gets only the environment put into `environment()` and no descriptor above 2. A runner is
// launched at most once and used from one thread at a time; reaping is delivered on the main
// run loop.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <limits>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/unique_handle.hpp"

namespace vx {

class ChildProcess;
class BackgroundReader;

struct Pipe {
    UniqueFd readEnd;
    UniqueFd writeEnd;
};

enum class TaskitStream { Output, Error };

class Taskit {
public:
    // A variable with an empty name or without a value is left out of the child's environment.
    using Environment = std::map<std::string, std::optional<std::string>>;

    static constexpr int64_t kNoPriority = std::numeric_limits<int64_t>::max();
    // Launch refuses when arguments + environment entries + 2 exceed this.
    static constexpr size_t kArgumentLimit = 0x40000;

    static std::unique_ptr<Taskit> task() { return std::make_unique<Taskit>(); }
    Taskit();
    // Closes the pipes; a child still running is left to run and is reaped when it exits.
    ~Taskit();
    Taskit(const Taskit&) = delete;
    Taskit& operator=(const Taskit&) = delete;

    // Adds every variable of the editor's own environment.
    void populateWithCurrentEnvironment();

    // --- Configuration ---------------------------------------------------------------------
    const std::string& launchPath() const { return m_launchPath; }
    void setLaunchPath(std::string path) { m_launchPath = std::move(path); }
    std::vector<std::string>& arguments() { return m_arguments; }
    const std::vector<std::string>& arguments() const { return m_arguments; }
    void setArguments(std::vector<std::string> arguments) { m_arguments = std::move(arguments); }
    Environment& environment() { return m_environment; }
    const Environment& environment() const { return m_environment; }
    void setEnvironment(Environment environment) { m_environment = std::move(environment); }
    const std::string& workingDirectory() const { return m_workingDirectory; }
    void setWorkingDirectory(std::string directory) { m_workingDirectory = std::move(directory); }
    // Bytes for standard input; take precedence over inputString.
    const std::optional<std::string>& input() const { return m_input; }
    void setInput(std::optional<std::string> bytes) { m_input = std::move(bytes); }
    // UTF-8 text for standard input, used when input() is not set.
    const std::optional<std::string>& inputString() const { return m_inputString; }
    void setInputString(std::optional<std::string> text) { m_inputString = std::move(text); }
    // When not empty, standard input is this file rather than the input pipe.
    const std::string& inputPath() const { return m_inputPath; }
    void setInputPath(std::string path) { m_inputPath = std::move(path); }
    // A niceness to lower the child to; applied only within -19...19 and only when nicer.
    int64_t priority() const { return m_priority; }
    void setPriority(int64_t priority) { m_priority = priority; }
    // Stored for callers that run their own time limits; the waits here do not consult them.
    double timeoutIfNothing() const { return m_timeoutIfNothing; }
    void setTimeoutIfNothing(double seconds) { m_timeoutIfNothing = seconds; }
    double timeoutSinceOutput() const { return m_timeoutSinceOutput; }
    void setTimeoutSinceOutput(double seconds) { m_timeoutSinceOutput = seconds; }
    double timeoutSinceError() const { return m_timeoutSinceError; }
    void setTimeoutSinceError(double seconds) { m_timeoutSinceError = seconds; }
    // Whether collecting output first puts the reading ends into non-blocking mode.
    bool shouldSetUpFileHandlesAutomatically() const { return m_shouldSetUpFileHandlesAutomatically; }
    void setShouldSetUpFileHandlesAutomatically(bool value) { m_shouldSetUpFileHandlesAutomatically = value; }

    const Pipe& inPipe() const { return m_inPipe; }
    const Pipe& outPipe() const { return m_outPipe; }
    const Pipe& errPipe() const { return m_errPipe; }

    // --- Launch and state ------------------------------------------------------------------
    // Starts the child; false (and no process) when the path is empty or not executable, the
    // argument limit is exceeded, the input file cannot be opened or fork fails.
    bool launch();
    // Reaps the child without blocking when it has exited.
    bool isRunning();
    pid_t pid() const;
    pid_t processIdentifier() const { return pid(); }
    // The raw status waitpid last reported.
    int waitpid() const;
    // The exit code after a normal exit, else 1.
    int terminationStatus() const;
    // 1 exited, 2 killed by an uncaught signal, 0 otherwise.
    int terminationReason() const;
    // The signal that ended the child, else 0.
    int terminationSignal() const;

    // --- Signals: each does nothing when the child is not running ----------------------------
    void interrupt();   // SIGINT
    void terminate();   // SIGTERM, then polls
    void kill();        // terminate, then SIGKILL if still running, then reaps
    bool suspend();     // SIGSTOP; answers isRunning() afterwards
    bool resume();      // SIGCONT; answers isRunning() afterwards

    // Has the child reaped on the main run loop as soon as it exits.
    void reapOnExit();

    // --- Waiting ---------------------------------------------------------------------------
    void waitUntilExit();
    // Waits at most `seconds` (no limit when 0 or less); true when the limit ran out and the
    // child was killed, false when it ended by itself.
    bool waitUntilExitWithTimeout(double seconds);

    // --- Collecting output -----------------------------------------------------------------
    // Reads both streams until both are closed, appending to the buffers; false when a read
    // failed (the bytes read so far are kept).
    bool waitForIntoOutputData(std::string& output, std::string& error);
    // The same into fresh buffers; either may be null.
    bool waitForOutputData(std::string* output, std::string* error);
    // The same decoded as UTF-8 text (malformed bytes become U+FFFD).
    bool waitForOutputString(std::string* output, std::string* error);
    std::string waitForOutput();
    std::string waitForError();
    std::string waitForOutputString();
    std::string waitForErrorString();
    // Puts both reading ends into non-blocking mode.
    void setUpFileHandles();

    // Reads both streams to their ends on a background thread. The flags and buffers below
    // report the results; each stream's reading end is closed when it is done.
    void readToEndInBackground();
    // Waits until both streams have been read to their ends, at most `seconds`; answers whether
    // they were.
    bool waitForBackgroundReading(double seconds);
    bool hasFinishedReadingOutput() const;
    bool hasFinishedReadingError() const;
    std::string outputBuffer() const;
    std::string errorBuffer() const;

    // Closes both reading ends (stopping background reading) and drops the pipes.
    void end();

private:
    // Stores a stream's background result (only the first one counts) and marks it finished.
    void syncFileHandleReadCompletion(TaskitStream stream, std::string data);
    void feedInput();

    std::string m_launchPath;
    std::vector<std::string> m_arguments;
    Environment m_environment;
    std::string m_workingDirectory;
    std::optional<std::string> m_input;
    std::optional<std::string> m_inputString;
    std::string m_inputPath;
    Pipe m_inPipe, m_outPipe, m_errPipe;
    std::shared_ptr<ChildProcess> m_child;  // pid, running flag and raw waitpid status
    int64_t m_priority = kNoPriority;
    double m_timeoutIfNothing = 0, m_timeoutSinceOutput = 0, m_timeoutSinceError = 0;
    bool m_shouldSetUpFileHandlesAutomatically = true;

    // Written by the background reader's thread.
    mutable std::mutex m_backgroundMutex;
    std::condition_variable m_backgroundFinished;
    bool m_hasFinishedReadingOutput = false, m_hasFinishedReadingError = false;
    std::string m_outputBuffer, m_errorBuffer;
    std::unique_ptr<BackgroundReader> m_backgroundReader;

    bool m_launched = false;
    bool m_reapingOnExit = false;
};

}  // namespace vx
