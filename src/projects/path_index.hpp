// The quick-open indexes: the relative paths of a project's files (or folders), each kept as its
// text in the case it has on disk followed by its lower-cased form, packed into large blocks so
// that an item costs a few machine words beyond its text (measured by bench/quick_open_peers.py).
//
//     root/src/View.c  ->  item { "src/View.c" "src/view.c", components 2 }
//
// The per-keystroke search reads the lower-cased components straight out of the block; nothing is
// converted or allocated per item.
#pragma once

#include <dirent.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dispatch.hpp"
#include "projects/ignore_rules.hpp"

namespace vx {

// Lower-cases UTF-8 text the way the search compares it: ASCII directly, anything else through
// Unicode's full case mapping (which may change the byte length).
std::string lowercasePath(std::string_view text);
void lowercasePathInto(std::string_view text, std::string& out);

struct path_item {
    const char* text = nullptr;  // the path, then at text + pathLength its lower-cased form
    uint32_t pathLength = 0;
    uint32_t lowerLength = 0;
    uint32_t componentCount = 0;

    // The relative path in its own case, "/"-separated, without a leading "/".
    std::string_view path() const { return {text, pathLength}; }
    // The same lower-cased: its "/"-separated parts are the item's components.
    std::string_view lower() const { return {text + pathLength, lowerLength}; }
};

// Walks the components of a "/"-separated path from the last to the first.
class ReverseComponents {
public:
    explicit ReverseComponents(std::string_view path) : m_path(path), m_end(path.size()) {}
    bool next(std::string_view& component) {
        while (m_end > 0 && m_path[m_end - 1] == '/') --m_end;
        if (m_end == 0) return false;
        const size_t slash = m_path.rfind('/', m_end - 1);
        const size_t start = slash == std::string_view::npos ? 0 : slash + 1;
        component = m_path.substr(start, m_end - start);
        m_end = start;
        return true;
    }

private:
    std::string_view m_path;
    size_t m_end;
};

// Append-only storage for the items' text; blocks never move, so items can point into them.
class PathTextArena {
public:
    const char* store(std::string_view first, std::string_view second);
    void clear();
    size_t bytesReserved() const { return m_reserved; }

private:
    static constexpr size_t kBlockSize = 1 << 20;
    std::vector<std::unique_ptr<char[]>> m_blocks;
    size_t m_used = kBlockSize;
    size_t m_reserved = 0;
};

// One index. Every rebuild and every search of it runs on its queue, so a search never sees a
// half-built index and searches of one collection never overlap.
struct path_collection {
    std::deque<path_item> items;
    PathTextArena text;
    SerialQueue queue{"quick-open index"};

    void clear();
    void add(std::string_view path, std::string_view lowerPath, uint32_t componentCount);
};

struct QuickOpenWalkOptions {
    bool directoriesOnly = false;
    // Leave out what the project's ignore files (".gitignore", ".git/info/exclude") exclude.
    bool honorIgnoreFiles = true;
};

// What one walk carries from folder to folder. It fills the files index, the folders index or both
// (one walk for both reads each folder once instead of twice).
struct QuickOpenWalk {
    QuickOpenWalkOptions options;
    path_collection* files = nullptr;
    path_collection* directories = nullptr;
    IgnoreStack ignores;
    std::string lowerScratch;
    std::vector<std::string_view> components;
};

// Indexes `absolutePath` (relative path `relativePath`, "" for the root) and what is below it.
// `entryType` is the type the folder listing gave (DT_UNKNOWN when not known); it spares a stat
// call for plain files and folders. Links are followed to decide whether a path is a folder but
// never walked into.
void recurseFiles(const std::string& absolutePath, const std::string& relativePath, QuickOpenWalk& walk,
                  unsigned char entryType = DT_UNKNOWN);

// Empties the collection, then fills it from the root (when there is one) with the files-only or
// the folders-only walk. Call it on the collection's queue.
void VXBuildQuickOpenIndexInto(const std::string& root, path_collection& collection, const QuickOpenWalkOptions& options);
// Both indexes from one walk; the caller holds both (the folders index may be a private one that
// is handed to its queue afterwards).
void VXBuildQuickOpenIndexesInto(const std::string& root, path_collection& files, path_collection& directories,
                                 bool honorIgnoreFiles);

}  // namespace vx
