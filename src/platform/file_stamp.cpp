#include "platform/file_stamp.hpp"

#include <sys/stat.h>

namespace vx {

std::optional<FileStamp> fileStampForPath(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return std::nullopt;
    FileStamp stamp;
    stamp.modifiedNanoseconds = static_cast<int64_t>(info.st_mtim.tv_sec) * 1'000'000'000 + info.st_mtim.tv_nsec;
    stamp.size = static_cast<uint64_t>(info.st_size);
    stamp.inode = static_cast<uint64_t>(info.st_ino);
    stamp.device = static_cast<uint64_t>(info.st_dev);
    return stamp;
}

}  // namespace vx
