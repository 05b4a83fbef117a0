#include "intelligence/project_files.hpp"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

#include "intelligence/project_indexer.hpp"
#include "platform/unique_handle.hpp"

namespace vx {
namespace {

// Folders whose files are never the project's own source.
constexpr std::array<std::string_view, 16> kSkippedFolders = {
    ".git", ".hg", ".svn", ".bzr", "_darcs", "CVS", "node_modules", "build", "_build", ".sass-cache",
    "autom4te.cache", "__pycache__", ".mypy_cache", ".tox", ".venv", ".cache"};

void closeDirectory(DIR* directory) { ::closedir(directory); }
using UniqueDirectory = UniqueHandle<DIR*, closeDirectory>;

// Walks with readdir and lstat: a directory's entries come in one system call each, and links are
// seen as links, never followed.
void walk(const std::string& folder, const std::vector<std::string>& excluded, std::vector<ProjectFile>& out) {
    UniqueDirectory directory(::opendir(folder.c_str()));
    if (!directory) return;
    std::vector<std::string> subfolders;
    while (const dirent* entry = ::readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        std::string path = folder + "/" + std::string(name);
        struct stat info;
        if (::lstat(path.c_str(), &info) != 0) continue;
        if (S_ISDIR(info.st_mode)) {
            if (VXFolderIsWorthIndexing(name) && std::find(excluded.begin(), excluded.end(), path) == excluded.end())
                subfolders.push_back(std::move(path));
        } else if (S_ISREG(info.st_mode)) {
            const double modified = static_cast<double>(info.st_mtim.tv_sec) + info.st_mtim.tv_nsec / 1e9 - kReferenceDateOffset;
            out.push_back({std::move(path), modified});
        }
    }
    directory.reset();  // closed before descending, so deep trees do not hold a descriptor per level
    for (const auto& subfolder : subfolders) walk(subfolder, excluded, out);
}

}  // namespace

bool VXFolderIsWorthIndexing(std::string_view name) {
    return std::find(kSkippedFolders.begin(), kSkippedFolders.end(), name) == kSkippedFolders.end();
}

std::vector<ProjectFile> VXProjectFilesForIndexing(const std::string& root, const std::vector<std::string>& excluded) {
    std::vector<ProjectFile> files;
    std::string start = root;
    while (start.size() > 1 && start.back() == '/') start.pop_back();
    walk(start, excluded, files);
    return files;
}

}  // namespace vx
