// Replacing a file's contents so that a crash at any moment leaves either the old file or the new
// one, whole: the bytes go to a temporary file in the same folder, are flushed to the disk, and the
// temporary file is renamed over the target (rename is atomic within one file system).
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace vx {

struct AtomicWriteResult {
    bool ok = false;
    int error = 0;  // errno of the step that failed
};

// Writes bytes to path through a temporary sibling, fsync, rename and a flush of the folder.
// The new file gets `mode` when given, else what a freshly created file gets (0666 less the umask).
// On failure the target is untouched and the temporary file removed.
AtomicWriteResult writeFileAtomically(const std::string& path, std::string_view bytes,
                                      std::optional<mode_t> mode = std::nullopt);

}  // namespace vx
