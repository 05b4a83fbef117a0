// Where symbol indexes live: a project's index is "<indexName>.vxindex" in the folder
// "ProjectIndexes" of the user data folder; an index without a place of its own is a temporary
// file in "VXIndexTemps" under the temporary folder.
#pragma once

#include <string>

namespace vx {

// <user data>/ProjectIndexes, created (with its parents) on demand.
std::string VXProjectIndexesDirectory();
// <user data>/ProjectIndexes/<indexName>.vxindex
std::string VXProjectIndexPath(const std::string& indexName);
// A fresh, unused path <temporary folder>/VXIndexTemps/<random>.vxindex.
std::string VXTemporaryIndexPath();

// The index name of a project folder for callers that have no project record to ask: the
// folder's name and a hash of its absolute path ("app-3f09c2d1a4b5e6f7"), stable across runs.
std::string VXDefaultIndexNameForDirectory(const std::string& directory);

// The default index of a project folder: VXProjectIndexPath(VXDefaultIndexNameForDirectory(directory)).
std::string VXDefaultIndexPathForDirectory(const std::string& directory);

// An absolute path with "." and ".." resolved and no trailing "/" (not following links).
std::string VXStandardizedPath(const std::string& path);

}  // namespace vx
