#include "platform/atomic_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "platform/unique_handle.hpp"

namespace vx {
namespace {

uint64_t nextSuffix() {
    static std::atomic<uint64_t> counter{static_cast<uint64_t>(::time(nullptr))};
    return counter.fetch_add(1);
}

// Copies the extended attributes of `source` (POSIX ACLs live there too) onto an open file.
// Attributes the file system or our rights do not allow are skipped: they are extras.
void copyExtendedAttributes(const std::string& source, int fd) {
    const ssize_t size = ::listxattr(source.c_str(), nullptr, 0);
    if (size <= 0) return;
    std::vector<char> names(static_cast<size_t>(size));
    const ssize_t listed = ::listxattr(source.c_str(), names.data(), names.size());
    if (listed <= 0) return;
    std::vector<char> value;
    for (ssize_t at = 0; at < listed;) {
        const char* name = names.data() + at;
        at += static_cast<ssize_t>(std::char_traits<char>::length(name)) + 1;
        const ssize_t length = ::getxattr(source.c_str(), name, nullptr, 0);
        if (length < 0) continue;
        value.resize(static_cast<size_t>(length));
        const ssize_t got = ::getxattr(source.c_str(), name, value.data(), value.size());
        if (got < 0) continue;
        ::fsetxattr(fd, name, value.data(), static_cast<size_t>(got), 0);
    }
}

AtomicWriteResult writeThroughTemporary(const std::string& givenPath, std::string_view bytes,
                                        std::optional<mode_t> mode, const KeptAttributes* keep) {
    FileSystemCalls& calls = fileSystemCalls();
    // Saving through a symbolic link replaces the file it points to and keeps the link.
    const std::string path = resolvedPath(givenPath);
    // The temporary name starts with a dot so that folder watchers and listings pass over it.
    const std::string folder = parentFolder(path);
    const auto slash = path.rfind('/');
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    // A file that keeps another's attributes is private until it has them; otherwise it is created
    // with 0666 so that the kernel applies the umask, as for any new file.
    const mode_t createMode = keep ? 0600 : 0666;
    std::string temporary;
    UniqueFd fd;
    for (int attempt = 0; attempt < 100 && !fd; ++attempt) {
        temporary = folder + "/." + base + ".vx-save-" + std::to_string(::getpid()) + "-" +
                    std::to_string(nextSuffix());
        fd = UniqueFd(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, createMode));
        if (!fd && errno != EEXIST) return AtomicWriteResult::failed(errno, FileStep::Create);
    }
    if (!fd) return AtomicWriteResult::failed(EEXIST, FileStep::Create);

    auto fail = [&](int error, FileStep step) {
        ::unlink(temporary.c_str());
        return AtomicWriteResult::failed(error, step);
    };
    if (!writeAllBytes(fd.get(), bytes)) return fail(errno, FileStep::Write);
    // Owner and mode come after the bytes: writing or changing the owner of a file clears its
    // setuid and setgid bits.
    if (keep) {
        if (calls.fchown(fd.get(), keep->owner, keep->group) != 0) return fail(errno, FileStep::Chown);
        if (!keep->xattrSource.empty()) copyExtendedAttributes(keep->xattrSource, fd.get());
        mode = keep->mode & 07777;
    }
    if (mode && calls.fchmod(fd.get(), *mode) != 0) return fail(errno, FileStep::Chmod);
    if (calls.fsync(fd.get()) != 0) return fail(errno, FileStep::Sync);
    if (::close(fd.release()) != 0) return fail(errno, FileStep::Sync);
    if (calls.rename(temporary.c_str(), path.c_str()) != 0) return fail(errno, FileStep::Rename);
    // The rename itself is durable once the folder's entry is on disk.
    UniqueFd dir(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir) ::fsync(dir.get());
    return AtomicWriteResult::succeeded();
}

}  // namespace

FileSystemCalls& fileSystemCalls() {
    static FileSystemCalls calls;
    return calls;
}

std::string parentFolder(const std::string& path) {
    auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

std::string resolvedPath(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (!resolved) return path;
    std::string result = resolved;
    std::free(resolved);
    return result;
}

bool writeAllBytes(int fd, std::string_view bytes) {
    auto write = fileSystemCalls().write;
    while (!bytes.empty()) {
        ssize_t n = write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

AtomicWriteResult writeFileAtomically(const std::string& path, std::string_view bytes, std::optional<mode_t> mode) {
    return writeThroughTemporary(path, bytes, mode, nullptr);
}

AtomicWriteResult writeFileAtomically(const std::string& path, std::string_view bytes, const KeptAttributes& keep) {
    return writeThroughTemporary(path, bytes, std::nullopt, &keep);
}

}  // namespace vx
