#include "projects/path_index.hpp"

#include <sys/stat.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstring>

#include "projects/path_filter.hpp"

namespace vx {

void lowercasePathInto(std::string_view text, std::string& out) {
    out.resize(text.size());
    bool ascii = true;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            ascii = false;
            break;
        }
        out[i] = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    if (ascii) return;
    out.clear();
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())))
        .toLower(icu::Locale::getRoot())
        .toUTF8String(out);
}

std::string lowercasePath(std::string_view text) {
    std::string out;
    lowercasePathInto(text, out);
    return out;
}

const char* PathTextArena::store(std::string_view first, std::string_view second) {
    const size_t size = first.size() + second.size();
    if (size > kBlockSize) {
        // A path longer than a block gets a block of its own, placed before the current one so
        // that the current block keeps filling.
        auto block = std::make_unique<char[]>(size);
        char* out = block.get();
        m_blocks.insert(m_blocks.empty() ? m_blocks.end() : m_blocks.end() - 1, std::move(block));
        m_reserved += size;
        std::memcpy(out, first.data(), first.size());
        std::memcpy(out + first.size(), second.data(), second.size());
        return out;
    }
    if (m_used + size > kBlockSize) {
        m_blocks.push_back(std::make_unique<char[]>(kBlockSize));
        m_used = 0;
        m_reserved += kBlockSize;
    }
    char* out = m_blocks.back().get() + m_used;
    std::memcpy(out, first.data(), first.size());
    std::memcpy(out + first.size(), second.data(), second.size());
    m_used += size;
    return out;
}

void PathTextArena::clear() {
    m_blocks.clear();
    m_used = kBlockSize;
    m_reserved = 0;
}

void path_collection::clear() {
    items.clear();
    text.clear();
}

void path_collection::add(std::string_view path, std::string_view lowerPath, uint32_t componentCount) {
    const char* stored = text.store(path, lowerPath);
    items.push_back({stored, static_cast<uint32_t>(path.size()), static_cast<uint32_t>(lowerPath.size()), componentCount});
}

namespace {

bool isDirectoryFollowingLinks(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool isSymbolicLink(const std::string& path) {
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};

// Pushes the ignore files of a folder; answers how many it pushed. At the root the repository's
// own exclude list goes below the root's .gitignore, which is asked first.
int pushIgnoreFiles(QuickOpenWalk& walk, const std::string& absolutePath, const std::string& relativePath) {
    int pushed = 0;
    auto push = [&](const std::string& file) {
        auto rules = std::make_shared<IgnoreRules>(IgnoreRules::load(file));
        if (rules->empty()) return;
        walk.ignores.push(relativePath, std::move(rules));
        ++pushed;
    };
    if (relativePath.empty()) push(absolutePath + "/.git/info/exclude");
    push(absolutePath + "/.gitignore");
    return pushed;
}

}  // namespace

void recurseFiles(const std::string& absolutePath, const std::string& relativePath, QuickOpenWalk& walk,
                  unsigned char entryType) {
    const bool isRoot = relativePath.empty();
    if (!isRoot) {
        lowercasePathInto(relativePath, walk.lowerScratch);
        if (!pathIsGood(walk.lowerScratch, walk.components)) return;
    }
    // The listing's type settles plain files and folders; links and unknown types need a stat.
    const bool isDirectory = entryType == DT_DIR   ? true
                             : entryType == DT_REG ? false
                                                   : isDirectoryFollowingLinks(absolutePath);
    if (!isRoot && walk.options.honorIgnoreFiles && walk.ignores.isIgnored(relativePath, isDirectory)) return;

    if (path_collection* target = isRoot ? nullptr : isDirectory ? walk.directories : walk.files)
        target->add(relativePath, walk.lowerScratch, static_cast<uint32_t>(walk.components.size()));
    if (!isDirectory) return;

    if (entryType != DT_DIR && isSymbolicLink(absolutePath)) return;  // never walk into a link

    std::unique_ptr<DIR, DirCloser> dir(::opendir(absolutePath.c_str()));
    if (!dir) return;
    const int pushed = walk.options.honorIgnoreFiles ? pushIgnoreFiles(walk, absolutePath, relativePath) : 0;
    std::string childAbsolute, childRelative;
    while (const dirent* entry = ::readdir(dir.get())) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
        childAbsolute.assign(absolutePath).append("/").append(name);
        if (isRoot)
            childRelative.assign(name);
        else
            childRelative.assign(relativePath).append("/").append(name);
        recurseFiles(childAbsolute, childRelative, walk, entry->d_type);
    }
    for (int i = 0; i < pushed; ++i) walk.ignores.pop();
}

namespace {

void walkFromRoot(const std::string& root, QuickOpenWalk& walk) {
    if (root.empty()) return;
    std::string base = root;
    while (base.size() > 1 && base.back() == '/') base.pop_back();
    recurseFiles(base, "", walk);
}

}  // namespace

void VXBuildQuickOpenIndexInto(const std::string& root, path_collection& collection, const QuickOpenWalkOptions& options) {
    collection.clear();
    QuickOpenWalk walk;
    walk.options = options;
    (options.directoriesOnly ? walk.directories : walk.files) = &collection;
    walkFromRoot(root, walk);
}

void VXBuildQuickOpenIndexesInto(const std::string& root, path_collection& files, path_collection& directories,
                                 bool honorIgnoreFiles) {
    files.clear();
    directories.clear();
    QuickOpenWalk walk;
    walk.options.honorIgnoreFiles = honorIgnoreFiles;
    walk.files = &files;
    walk.directories = &directories;
    walkFromRoot(root, walk);
}

}  // namespace vx
