#include "platform/atomic_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <atomic>
#include <cstdlib>
#include <ctime>

#include "platform/unique_handle.hpp"

namespace vx {
namespace {

std::string parentFolder(const std::string& path) {
    auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

uint64_t nextSuffix() {
    static std::atomic<uint64_t> counter{static_cast<uint64_t>(::time(nullptr))};
    return counter.fetch_add(1);
}

}  // namespace

AtomicWriteResult writeFileAtomically(const std::string& givenPath, std::string_view bytes, std::optional<mode_t> mode) {
    // Saving through a symbolic link replaces the file it points to and keeps the link.
    std::string path = givenPath;
    if (char* resolved = ::realpath(givenPath.c_str(), nullptr)) {
        path = resolved;
        std::free(resolved);
    }
    // The temporary name starts with a dot so that folder watchers and listings pass over it.
    const std::string folder = parentFolder(path);
    const auto slash = path.rfind('/');
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    // Created with O_EXCL and mode 0666 so that the kernel applies the umask, as for any new file.
    std::string temporary;
    UniqueFd fd;
    for (int attempt = 0; attempt < 100 && !fd; ++attempt) {
        temporary = folder + "/." + base + ".vx-save-" + std::to_string(::getpid()) + "-" +
                    std::to_string(nextSuffix());
        fd = UniqueFd(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!fd && errno != EEXIST) return {false, errno};
    }
    if (!fd) return {false, EEXIST};

    auto fail = [&](int error) {
        ::unlink(temporary.c_str());
        return AtomicWriteResult{false, error};
    };
    if (mode && ::fchmod(fd.get(), *mode) != 0) return fail(errno);
    if (!writeAll(fd.get(), bytes)) return fail(errno);
    if (::fsync(fd.get()) != 0) return fail(errno);
    if (::close(fd.release()) != 0) return fail(errno);
    if (::rename(temporary.c_str(), path.c_str()) != 0) return fail(errno);
    // The rename itself is durable once the folder's entry is on disk.
    UniqueFd dir(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (dir) ::fsync(dir.get());
    return {true, 0};
}

}  // namespace vx
