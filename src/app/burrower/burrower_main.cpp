// burrower: the indexer process the editor starts. It fills the symbol indexes of the editor's
// projects as the editor's messages ask, and ends when the editor does.
//
//   burrower --socket PATH --object burrower-<pid> [--parent PID]
#include <CLI/CLI.hpp>

#include "app/burrower/burrower.hpp"

int main(int argc, char** argv) {
    vx::BurrowerOptions options;
    CLI::App app{"The Vellumex indexer: fills project symbol indexes for the editor that started it"};
    app.add_option("--socket", options.socketPath, "The editor's socket")->required();
    app.add_option("--object", options.object, "The editor's object string (burrower-<pid>)")->required();
    app.add_option("--parent", options.parent, "The editor's process id");
    CLI11_PARSE(app, argc, argv);
    return vx::VXRunBurrower(options);
}
