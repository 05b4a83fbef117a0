// Runs the command of a shell constant and returns what it printed.
//
// The command runs with /bin/sh, or, when `prefix` names an interpreter (the "#!" line of the
// command, without the "#!"), with that interpreter reading the script on its standard input.
// The child sees the editor's environment plus the snippet variables that have a value, and
// runs in the document's folder when there is one (else the editor's current folder). Its value
// is standard output without one trailing line break, or nothing when the command cannot start,
// exits with a non-zero status or outlives `environment.shellTimeout` (it is killed then).
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "snippets/snippet_environment.hpp"

namespace vx {

class Taskit;

// A command started and left running, so that the editor goes on while it works.
class ShellConstantRun {
public:
    // Nothing when the command cannot start.
    static std::unique_ptr<ShellConstantRun> start(std::u16string_view prefix, std::u16string_view script,
                                                   const SnippetEnvironment& environment);
    // A command still running is killed.
    ~ShellConstantRun();
    ShellConstantRun(const ShellConstantRun&) = delete;
    ShellConstantRun& operator=(const ShellConstantRun&) = delete;

    // Waits at most `wait` (and never past the time limit) for the command to end. Nothing
    // while it runs on; once it has ended, its value (itself nothing when it failed or was
    // killed at the limit).
    std::optional<std::optional<std::u16string>> poll(std::chrono::microseconds wait);

private:
    ShellConstantRun(std::unique_ptr<Taskit> task, std::chrono::steady_clock::time_point deadline);
    std::optional<std::u16string> finish(bool killed);

    std::unique_ptr<Taskit> m_task;
    std::chrono::steady_clock::time_point m_deadline;
    std::optional<std::optional<std::u16string>> m_result;
};

// Starts the command and waits for its value.
std::optional<std::u16string> runShellConstant(std::u16string_view prefix, std::u16string_view script,
                                               const SnippetEnvironment& environment);

}  // namespace vx
