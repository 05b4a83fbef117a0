// Runs the command of a shell constant and returns what it printed.
#pragma once

#include <optional>
#include <string>

#include "snippets/snippet_environment.hpp"

namespace vx {

// Runs `script` with /bin/sh, or, when `prefix` names an interpreter (the "#!" line of the
// command, without the "#!"), runs that interpreter with the script on its standard input.
// The child sees the editor's environment plus the snippet variables that have a value, and
// runs in the document's folder when there is one (else the editor's current folder). Gives
// standard output without one trailing line break, or nothing when the command cannot start,
// exits with a non-zero status or outlives `environment.shellTimeout` (it is killed then).
std::optional<std::u16string> runShellConstant(std::u16string_view prefix, std::u16string_view script,
                                               const SnippetEnvironment& environment);

}  // namespace vx
