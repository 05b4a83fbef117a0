// Every shell command of a snippet runs through runShellConstant, and only here, on the
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

std::optional<std::u16string> runShellConstant(std::u16string_view prefix, std::u16string_view script,
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
        return std::nullopt;
    }

    // Output is read in the background, so a command that prints more than a pipe holds can
    // finish; the time limit covers reading and exiting together.
    const auto started = std::chrono::steady_clock::now();
    task->readToEndInBackground();
    const bool read = task->waitForBackgroundReading(environment.shellTimeout);
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - started;
    // At least a moment to exit once the output has closed (a limit of 0 would mean none).
    const bool timedOut =
        !read || task->waitUntilExitWithTimeout(std::max(environment.shellTimeout - spent.count(), 0.05));
    if (timedOut) {
        task->kill();
        VX_LOG_DEBUG("snippets", "shell constant killed after %.1f s", environment.shellTimeout);
        return std::nullopt;
    }
    if (task->terminationReason() != 1 || task->terminationStatus() != 0) {
        VX_LOG_DEBUG("snippets", "shell constant failed with status %d", task->terminationStatus());
        return std::nullopt;
    }
    std::string output = task->outputBuffer();
    if (!output.empty() && output.back() == '\n') output.pop_back();
    return utf16FromUtf8(output);
}

}  // namespace vx
