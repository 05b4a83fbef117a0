// Helpers for the runner's tests: shell children and what /proc says about them.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "process/taskit.hpp"

namespace vx::test {

// A runner for `/bin/sh -c script`, not launched yet.
std::unique_ptr<Taskit> shellTask(const std::string& script);

// The state letter /proc reports for a process ('R', 'S', 'T', 'Z', ...), or '\0' when it is gone.
char processState(pid_t pid);

// The command name /proc reports for a process ("" when it is gone).
std::string processName(pid_t pid);

// The pids of this process's children that are zombies.
std::string zombieChildren();

}  // namespace vx::test
