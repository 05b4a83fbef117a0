// Saving over a file without changing what the file is.
//
// The usual way is the atomic one (a temporary sibling renamed over the file) with the old file's
// owner, group, mode bits and extended attributes given to the new one. Where that way would
// change what the path is, or cannot be taken, the file is rewritten where it stands instead:
//   - the file has other hard links (a new file would split them);
//   - its folder cannot be written (no temporary file can be made beside it);
//   - its owner or group cannot be given to a new file by this user.
// Rewriting in place first keeps a copy of the old contents in "Backups" in the user data folder,
// synced to disk, and removes it only once the new contents are written and synced; a write that
// fails puts the old contents back.
//
// A symbolic link is followed: the file it points to is saved and the link stays a link. A path
// that is not a regular file (a folder, a pipe, a device) is refused.
#pragma once

#include <cerrno>
#include <string>
#include <string_view>

#include "platform/atomic_file.hpp"

namespace vx {

// Replaces (or creates) the file at `path` with `bytes`. On failure the file is as it was, unless
// `keptCopy` in the result names the copy of its old contents that could not be put back.
AtomicWriteResult replaceFileContents(const std::string& path, std::string_view bytes);

// The errno-style code replaceFileContents answers for a path that is not a regular file.
inline constexpr int kNotRegularFile = EINVAL;

}  // namespace vx
