#include "app/main_job.hpp"

#include <cstdio>
#include <stdexcept>

#include "app/commands/command.hpp"
#include "platform/paths.hpp"
#include "syntax/selfml/sfonode.hpp"

namespace vx::app {

// Until the terminal editor exists, the main job shows each given self-ml file (the bundled
// sample when none is given) as the formatter writes it.
int runMainJob(const std::vector<std::string>& paths) {
    std::vector<std::string> files = paths;
    if (files.empty()) files.push_back(bundledTrufflesDirectory() + "/../samples/welcome.selfml");
    std::string out;
    for (const auto& path : files) {
        auto root = SFONode::nodeFromString(cli::readInputFile(path));
        if (!root) throw std::runtime_error(path + ": cannot parse");
        out += root->selfmlRepresentation() + "\n";
    }
    cli::writeOutput(out);
    return 0;
}

}  // namespace vx::app
