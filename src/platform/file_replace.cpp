#include "platform/file_replace.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include "platform/log.hpp"
#include "platform/paths.hpp"
#include "platform/unique_handle.hpp"

namespace vx {
namespace {

bool inOurGroups(gid_t group) {
    if (group == ::getegid()) return true;
    const int count = ::getgroups(0, nullptr);
    if (count <= 0) return false;
    std::vector<gid_t> groups(static_cast<size_t>(count));
    const int got = ::getgroups(count, groups.data());
    for (int i = 0; i < got; ++i)
        if (groups[static_cast<size_t>(i)] == group) return true;
    return false;
}

// Whether a new file made by this process can be given the old file's owner and group.
bool canReproduceOwnership(const struct stat& info) {
    if (::geteuid() == 0) return true;
    return info.st_uid == ::geteuid() && inOurGroups(info.st_gid);
}

std::optional<std::string> readDescriptor(int fd) {
    std::string bytes;
    char block[1 << 16];
    for (;;) {
        const ssize_t n = ::read(fd, block, sizeof block);
        if (n < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (n == 0) return bytes;
        bytes.append(block, static_cast<size_t>(n));
    }
}

// Writes `bytes` over the open file from its start and cuts it to their length, then syncs.
bool overwrite(int fd, std::string_view bytes) {
    if (::lseek(fd, 0, SEEK_SET) < 0) return false;
    if (!writeAllBytes(fd, bytes)) return false;
    if (::ftruncate(fd, static_cast<off_t>(bytes.size())) != 0) return false;
    return fileSystemCalls().fsync(fd) == 0;
}

// Puts the old contents back after a failed overwrite, with the plain system calls: this is the
// way back, not a step of the save.
bool restore(int fd, std::string_view bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t n = ::pwrite(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return ::ftruncate(fd, static_cast<off_t>(bytes.size())) == 0 && ::fsync(fd) == 0;
}

std::string backupPath(const std::string& path) {
    static std::atomic<uint64_t> counter{0};
    const auto slash = path.rfind('/');
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    return userDataDirectory() + "/Backups/" + base + "." + std::to_string(::getpid()) + "-" +
           std::to_string(counter.fetch_add(1));
}

AtomicWriteResult rewriteInPlace(const std::string& path, std::string_view bytes) {
    UniqueFd fd(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!fd) return AtomicWriteResult::failed(errno, FileStep::Open, true);
    auto old = readDescriptor(fd.get());
    if (!old) return AtomicWriteResult::failed(errno, FileStep::Open, true);
    // The copy of the old contents is on disk before the file is touched.
    const std::string backup = backupPath(path);
    if (!makeDirectories(parentFolder(backup))) return AtomicWriteResult::failed(errno ? errno : EACCES, FileStep::Backup, true);
    if (AtomicWriteResult kept = writeFileAtomically(backup, *old, mode_t{0600}); !kept.ok)
        return AtomicWriteResult::failed(kept.error, FileStep::Backup, true);

    AtomicWriteResult result = AtomicWriteResult::succeeded(true);
    if (!overwrite(fd.get(), bytes)) {
        result = AtomicWriteResult::failed(errno, FileStep::Write, true);
        if (!restore(fd.get(), *old)) {
            result.keptCopy = backup;  // the old contents survive only there now
            VXGoodLog("%s could not be restored; its old contents are in %s", path.c_str(), backup.c_str());
            return result;
        }
    }
    ::unlink(backup.c_str());
    return result;
}

}  // namespace

AtomicWriteResult replaceFileContents(const std::string& givenPath, std::string_view bytes) {
    const std::string path = resolvedPath(givenPath);
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        if (errno != ENOENT) return AtomicWriteResult::failed(errno, FileStep::Open);
        return writeFileAtomically(path, bytes);  // a new file: what any new file gets
    }
    if (!S_ISREG(info.st_mode)) return AtomicWriteResult::failed(kNotRegularFile, FileStep::Open);

    KeptAttributes keep{info.st_uid, info.st_gid, info.st_mode, path};
    if (info.st_nlink > 1 || !canReproduceOwnership(info)) return rewriteInPlace(path, bytes);
    AtomicWriteResult written = writeFileAtomically(path, bytes, keep);
    // No temporary file can be made in the folder, but the file itself may be writable.
    if (!written.ok && written.failedStep == FileStep::Create && (written.error == EACCES || written.error == EPERM) &&
        ::access(path.c_str(), W_OK) == 0)
        return rewriteInPlace(path, bytes);
    return written;
}

}  // namespace vx
