// Where the command line asks to open a file: "vx file.c:500", "vx file.c:500:7" and
// "vx +500 file.c" open file.c at line 500 (column 7), as other editors do. A file whose name
// really ends in ":500" is opened as named when it exists.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vx::editor {

struct FileLocation {
    std::string path;
    std::optional<uint64_t> line;    // 1-based
    std::optional<uint64_t> column;  // 1-based, in characters
    friend bool operator==(const FileLocation&, const FileLocation&) = default;
};

// Reads the paths of a command line; `exists` says whether a path names something on disk.
// A "+N" with no file after it is taken as a file name.
std::vector<FileLocation> fileLocationsFromArguments(const std::vector<std::string>& arguments,
                                                     const std::function<bool(const std::string&)>& exists);

}  // namespace vx::editor
