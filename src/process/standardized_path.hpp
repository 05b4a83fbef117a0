// Paths in their standard form: "~" and "~user" expanded, empty and "." components removed,
// ".." folded into its parent in absolute paths, and no trailing slash.
#pragma once

#include <string>
#include <string_view>

namespace vx {

// "~/bin//tool/" becomes "/home/me/bin/tool"; "/usr/./lib/../bin" becomes "/usr/bin".
// A relative path keeps its ".." components, since what they refer to depends on where it is used.
std::string standardizedPath(std::string_view path);

}  // namespace vx
