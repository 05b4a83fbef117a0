// How a `vx` subcommand plugs into the program.
//
// A command file defines a registration function and a static CommandRegistration that
// names it; main() calls every registered function on the CLI11 application before parsing.
// A command that fails throws CommandFailure: main() prints "vx: <message>" on standard
// error and exits with status 1. Commands write their output only once they have succeeded
// (build it in a string first), so that standard output holds nothing after an error.
#pragma once

#include <CLI/CLI.hpp>

#include <memory>
#include <stdexcept>
#include <string>

namespace vx::cli {

struct CommandFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using RegisterFunction = void (*)(CLI::App& app);

struct CommandRegistration {
    CommandRegistration(const char* name, RegisterFunction function);
};

void registerAllCommands(CLI::App& app);

// Reads FILE, or standard input when FILE is "-"; throws CommandFailure naming the file.
std::string readInputFile(const std::string& path);

}  // namespace vx::cli

namespace vx {
class VXTheme;
}

namespace vx::cli {

// A bundled theme's name or a theme file's path, loaded; throws CommandFailure when there is no
// such theme, or when the file gives no colour at all (a grammar, some other file).
std::shared_ptr<VXTheme> loadThemeOrFail(const std::string& nameOrPath);

// Writes the whole output to standard output.
void writeOutput(const std::string& text);

}  // namespace vx::cli
