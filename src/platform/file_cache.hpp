// VXFileCache: the process-wide cache of file contents that definitions and themes are read through.
//
// A definition file is often asked for by several readers (a language and the languages that
// include it); the cache reads it once and hands out the same bytes until the file changes on
// disk (its size or modification time differ from what was read). Safe from any thread.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace vx {

class VXFileCache {
public:
    static VXFileCache& sharedFileCache();

    // The file's bytes, or nothing when it cannot be read.
    std::shared_ptr<const std::string> contentsOfFile(const std::string& path);

    // Forgets one file, or everything.
    void invalidate(const std::string& path);
    void clear();

private:
    struct Entry {
        std::shared_ptr<const std::string> text;
        long long size = -1;
        long long mtimeNanoseconds = -1;
    };
    std::mutex m_mutex;
    std::unordered_map<std::string, Entry> m_entries;
};

// Reads a whole file without caching; nothing when it cannot be read.
std::optional<std::string> readWholeFile(const std::string& path);

}  // namespace vx
