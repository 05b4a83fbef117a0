// The files of a project that the indexer reads: a walk of the project folder that does not
// descend into version-control folders, build output or dependency caches, and does not follow
// links to folders (they would index files twice or leave the project).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vx {

struct ProjectFile {
    std::string path;       // absolute
    double modified = 0;    // seconds since 2001-01-01
};

// The regular files under `root`, in no particular order; `excluded` names folders (absolute
// paths) that are not walked into either.
std::vector<ProjectFile> VXProjectFilesForIndexing(const std::string& root, const std::vector<std::string>& excluded = {});

// Whether a folder of that name is walked into.
bool VXFolderIsWorthIndexing(std::string_view name);

}  // namespace vx
