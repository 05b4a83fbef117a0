// What `vx` does when it is given no subcommand.
#pragma once

#include <string>
#include <vector>

namespace vx::app {

int runMainJob(const std::vector<std::string>& paths);

}  // namespace vx::app
