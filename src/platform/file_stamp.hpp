// What identifies one version of a file on disk: its modification time, size, inode and device.
// Another program's save changes at least one of them, even when it puts back an older
// modification time (cp -p, rsync -a, tar x, a checkout of an older version).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vx {

struct FileStamp {
    int64_t modifiedNanoseconds = 0;  // since the Unix epoch
    uint64_t size = 0;
    uint64_t inode = 0;
    uint64_t device = 0;
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// The stamp of the file at `path` (symbolic links followed); nothing when it cannot be read.
std::optional<FileStamp> fileStampForPath(const std::string& path);

}  // namespace vx
