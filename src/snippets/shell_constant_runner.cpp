// Every shell command of a snippet runs through ShellConstantRun, and only here, on the
// program's child-process runner.
#include "snippets/shell_constant_runner.hpp"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <vector>

#include "platform/log.hpp"
#include "process/taskit.hpp"
#include "platform/unicode.hpp"

namespace vx {
namespace {

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

// An interpreter named without a slash ("#!python3") is looked up in PATH, as a shell would.
std::string programPath(const std::string& program) {
    if (program.empty() || program.find('/') != std::string::npos) return program;
    const char* path = std::getenv("PATH");
    std::string_view directories = path && *path ? path : "/usr/bin:/bin";
    while (!directories.empty()) {
        const size_t colon = directories.find(':');
        const std::string candidate = std::string(directories.substr(0, colon)) + "/" + program;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
        directories = colon == std::string_view::npos ? std::string_view() : directories.substr(colon + 1);
    }
    return program;
}

}  // namespace

std::unique_ptr<ShellConstantRun> ShellConstantRun::start(std::u16string_view prefix, std::u16string_view script,
                                                          const SnippetEnvironment& environment) {
    std::string prefixText = utf8FromUtf16(prefix), scriptText = utf8FromUtf16(script);
    if (!prefixText.empty() && prefixText.find_first_not_of(" \t") == std::string::npos) prefixText.clear();
    const std::vector<std::string> command = commandLine(prefixText, scriptText);

    auto task = Taskit::task();
    task->setLaunchPath(programPath(command.front()));
    task->setArguments({command.begin() + 1, command.end()});
    task->populateWithCurrentEnvironment();
    for (const auto& [name, value] : environment.exportedVariables()) task->environment()[name] = value;
    // Commands run in the document's folder, so that relative paths mean what the user sees.
    if (auto directory = environment.variable(u"VX_DIRECTORY")) task->setWorkingDirectory(utf8FromUtf16(*directory));
    // An interpreter reads the script from its standard input; /bin/sh gets it as an argument.
    if (!prefixText.empty()) task->setInputString(scriptText);
    if (!task->launch()) {
        VX_LOG_DEBUG("snippets", "shell constant cannot start: %s", task->launchPath().c_str());
        return nullptr;
    }
    // Output is read in the background, so a command that prints more than a pipe holds can
    // finish; the time limit covers reading and exiting together.
    task->readToEndInBackground();
    const auto limit = std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(environment.shellTimeout));
    return std::unique_ptr<ShellConstantRun>(new ShellConstantRun(std::move(task), std::chrono::steady_clock::now() + limit));
}

ShellConstantRun::ShellConstantRun(std::unique_ptr<Taskit> task, std::chrono::steady_clock::time_point deadline)
    : m_task(std::move(task)), m_deadline(deadline) {}

ShellConstantRun::~ShellConstantRun() {
    if (!m_result && m_task->isRunning()) m_task->kill();
}

std::optional<std::optional<std::u16string>> ShellConstantRun::poll(std::chrono::microseconds wait) {
    if (m_result) return m_result;
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> left = m_deadline - now;
    const double waited = std::max(0.0, std::min(std::chrono::duration<double>(wait).count(), left.count()));
    if (m_task->waitForBackgroundReading(waited)) {
        // At least a moment to exit once the output has closed.
        const std::chrono::duration<double> exitLeft = m_deadline - std::chrono::steady_clock::now();
        m_result = finish(m_task->waitUntilExitWithTimeout(std::max(exitLeft.count(), 0.05)));
    } else if (std::chrono::steady_clock::now() >= m_deadline) {
        m_task->kill();
        m_result = finish(true);
    }
    return m_result;
}

std::optional<std::u16string> ShellConstantRun::finish(bool killed) {
    if (killed) {
        VX_LOG_DEBUG("snippets", "shell constant killed at its time limit");
        return std::nullopt;
    }
    if (m_task->terminationReason() != 1 || m_task->terminationStatus() != 0) {
        VX_LOG_DEBUG("snippets", "shell constant failed with status %d", m_task->terminationStatus());
        return std::nullopt;
    }
    std::string output = m_task->outputBuffer();
    if (!output.empty() && output.back() == '\n') output.pop_back();
    return utf16FromUtf8(output);
}

std::optional<std::u16string> runShellConstant(std::u16string_view prefix, std::u16string_view script,
                                               const SnippetEnvironment& environment) {
    auto run = ShellConstantRun::start(prefix, script, environment);
    if (!run) return std::nullopt;
    for (;;)
        if (auto value = run->poll(std::chrono::seconds(1))) return *value;
}

}  // namespace vx
