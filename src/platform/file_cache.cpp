#include "platform/file_cache.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/unique_handle.hpp"

namespace vx {

std::optional<std::string> readWholeFile(const std::string& path) {
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) return std::nullopt;
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0 || S_ISDIR(info.st_mode)) return std::nullopt;
    std::string text;
    if (info.st_size > 0) text.reserve(static_cast<size_t>(info.st_size));
    char buffer[1 << 16];
    for (;;) {
        ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (n == 0) break;
        text.append(buffer, static_cast<size_t>(n));
    }
    return text;
}

VXFileCache& VXFileCache::sharedFileCache() {
    static VXFileCache cache;
    return cache;
}

std::shared_ptr<const std::string> VXFileCache::contentsOfFile(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return nullptr;
    const long long mtime = static_cast<long long>(info.st_mtim.tv_sec) * 1'000'000'000LL + info.st_mtim.tv_nsec;
    {
        std::lock_guard lock(m_mutex);
        auto found = m_entries.find(path);
        if (found != m_entries.end() && found->second.size == info.st_size && found->second.mtimeNanoseconds == mtime)
            return found->second.text;
    }
    auto text = readWholeFile(path);
    if (!text) return nullptr;
    auto shared = std::make_shared<const std::string>(std::move(*text));
    std::lock_guard lock(m_mutex);
    m_entries[path] = Entry{shared, static_cast<long long>(info.st_size), mtime};
    return shared;
}

void VXFileCache::invalidate(const std::string& path) {
    std::lock_guard lock(m_mutex);
    m_entries.erase(path);
}

void VXFileCache::clear() {
    std::lock_guard lock(m_mutex);
    m_entries.clear();
}

}  // namespace vx
