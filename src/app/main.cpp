// vx: the one command users run. With a subcommand it does one job headless; without one it
// runs the main job on the files and folders it is given (a bundled sample when none).
#include <cstdio>
#include <exception>

#include "app/commands/command.hpp"
#include "app/main_job.hpp"

int main(int argc, char** argv) {
    CLI::App app{"Vellumex: a programmer's text editor", "vx"};
    app.set_version_flag("--version", std::string("vx ") + VX_VERSION);
    std::vector<std::string> paths;
    app.add_option("paths", paths, "Files and folders to open");
    app.require_subcommand(0, 1);
    app.fallthrough(false);
    vx::cli::registerAllCommands(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "vx: %s\n", e.what());
        return 2;
    } catch (const vx::cli::CommandFailure& e) {
        std::fprintf(stderr, "vx: %s\n", e.what());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vx: %s\n", e.what());
        return 1;
    }
    if (!app.get_subcommands().empty()) return 0;
    try {
        return vx::app::runMainJob(paths);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vx: %s\n", e.what());
        return 1;
    }
}
