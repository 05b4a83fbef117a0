// Runs a program to completion for a test: its exit status and what it wrote on each stream.
#pragma once

#include <string>
#include <vector>

namespace vx::test {

struct CommandResult {
    int status = -1;  // the exit status, or -1 when it did not exit normally
    std::string out;
    std::string err;
};

CommandResult runCommand(const std::vector<std::string>& argv, const std::string& input = "");

}  // namespace vx::test
