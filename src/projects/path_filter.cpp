#include "projects/path_filter.hpp"

#include <algorithm>
#include <array>

namespace vx {
namespace {

// Sorted once at first use; a binary search of a few dozen short strings beats hashing them.
template <size_t N>
struct Table {
    std::array<std::string_view, N> entries;
    explicit constexpr Table(std::array<std::string_view, N> values) : entries(values) {
        std::sort(entries.begin(), entries.end());
    }
    bool contains(std::string_view value) const {
        return std::binary_search(entries.begin(), entries.end(), value);
    }
};

template <class... T>
constexpr auto table(T... values) {
    return Table<sizeof...(T)>(std::array<std::string_view, sizeof...(T)>{values...});
}

constexpr auto bannedExtensions = table(
    "o", "so", "dll", "class", "exe", "pyc", "elc", "rbc", "7z", "dmg", "gz", "iso", "jar", "rar", "tar",
    "zip", "tif", "tiff", "png", "jpg", "jpeg", "gif", "psd", "ai", "mov", "aep", "pdf", "aif", "aiff", "ico",
    "icns", "mp3", "m4a", "ttf", "bz2", "hqx", "lock", "swp", "out", "tmp", "mode1v3", "pbxuser",
    "classdescription");

// ".ds_stor" and the bare "ico" are kept on purpose: the table is used as it has always been.
constexpr auto bannedFilenames = table(".ds_store", ".ds_stor", "ehthumbs.db", "thumbs.db", "ico", "icon");

constexpr auto subpathBannedDirectoryExtensions = table("xcodeproj", "tmproj", "esproj", "vxproj", "nbproject");

// Compared with every component, the last one too: a file named "build", "tmp" or "log" is never
// indexed either.
constexpr auto bannedExactDirectories = table(
    ".fseventsd", ".spotlight-v100", ".temporaryitems", ".trashes", ".bzr", ".cdv", ".git", ".hg", ".pc", ".svn",
    "cvs", "rcs", "sccs", "_darcs", "_sgbak", "blib", "_build", ".sass-cache", "autom4te.cache", "cover_db",
    ".metadata", "build", "tmp", "log", "node_modules");

constexpr std::array<std::string_view, 4> bannedSubstringDirectories = {"~.dep", "~.dot", "~.nib", "~.plst"};

}  // namespace

void splitPathComponents(std::string_view path, std::vector<std::string_view>& components) {
    components.clear();
    size_t start = 0;
    while (start <= path.size()) {
        size_t slash = path.find('/', start);
        if (slash == std::string_view::npos) slash = path.size();
        if (slash > start) components.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
}

std::string_view pathExtension(std::string_view component) {
    const size_t dot = component.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    return component.substr(dot + 1);
}

bool pathIsGood(std::string_view lowerPath, std::vector<std::string_view>& components) {
    components.clear();
    const size_t lastSlash = lowerPath.rfind('/');
    const std::string_view lastComponent =
        lastSlash == std::string_view::npos ? lowerPath : lowerPath.substr(lastSlash + 1);
    const std::string_view extension = pathExtension(lastComponent);
    if (!extension.empty() && bannedExtensions.contains(extension)) return false;
    if (bannedFilenames.contains(lastComponent)) return false;

    splitPathComponents(lowerPath, components);
    // Inside a project bundle everything is rejected; the bundle folder itself passes.
    const size_t parentCount = lastSlash == std::string_view::npos || components.empty() ? 0 : components.size() - 1;
    for (size_t i = 0; i < parentCount; ++i) {
        const std::string_view parentExtension = pathExtension(components[i]);
        if (!parentExtension.empty() && subpathBannedDirectoryExtensions.contains(parentExtension)) return false;
    }
    for (std::string_view component : components) {
        if (bannedExactDirectories.contains(component)) return false;
        for (std::string_view banned : bannedSubstringDirectories)
            if (component.find(banned) != std::string_view::npos) return false;
    }
    return true;
}

}  // namespace vx
