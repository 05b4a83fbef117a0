#include "projects/project_root.hpp"

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string_view>

namespace vx {
namespace {

constexpr std::array<std::string_view, 6> kVersionControlMarkers = {".git", ".hg", ".svn", ".bzr", "_darcs", ".fslckout"};
constexpr std::array<std::string_view, 20> kBuildMarkers = {
    "CMakeLists.txt", "meson.build", "configure.ac",  "Makefile",      "GNUmakefile", "package.json", "Cargo.toml",
    "pyproject.toml", "setup.py",    "go.mod",        "pom.xml",       "build.gradle", "build.gradle.kts", "Gemfile",
    "composer.json",  "mix.exs",     "stack.yaml",    "dune-project",  "build.zig",   "Package.swift"};

bool exists(const std::string& folder, std::string_view name) {
    struct stat info;
    const std::string path = (folder == "/" ? folder : folder + "/") + std::string(name);
    return ::stat(path.c_str(), &info) == 0;
}

bool isDirectory(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string parentOf(const std::string& path) {
    if (path == "/") return {};
    const size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

std::string VXProjectStandardizedPath(const std::string& path) {
    std::error_code error;
    std::string standardized = std::filesystem::absolute(path, error).lexically_normal().string();
    if (error) standardized = path;
    while (standardized.size() > 1 && standardized.back() == '/') standardized.pop_back();
    return standardized;
}

std::string VXProjectIndexNameForDirectory(const std::string& directory) {
    const std::string standardized = VXProjectStandardizedPath(directory);
    uint64_t hash = 1469598103934665603ull;  // FNV-1a: short, stable, and no library needed
    for (unsigned char c : standardized) hash = (hash ^ c) * 1099511628211ull;
    std::string name = std::filesystem::path(standardized).filename().string();
    if (name.empty()) name = "root";
    char suffix[24];
    std::snprintf(suffix, sizeof suffix, "-%016llx", static_cast<unsigned long long>(hash));
    return name + suffix;
}

std::string detectProjectURLForURL(const std::string& path, bool& wasStrongProject) {
    const std::string standardized = VXProjectStandardizedPath(path);
    const std::string start = isDirectory(standardized) ? standardized : parentOf(standardized);
    wasStrongProject = true;
    for (std::string folder = start; !folder.empty(); folder = parentOf(folder))
        for (std::string_view marker : kVersionControlMarkers)
            if (exists(folder, marker)) return folder;
    for (std::string folder = start; !folder.empty(); folder = parentOf(folder)) {
        for (std::string_view marker : kBuildMarkers) {
            if (!exists(folder, marker)) continue;
            std::string root = folder;
            for (std::string up = parentOf(root); !up.empty() && exists(up, marker); up = parentOf(up)) root = up;
            return root;
        }
    }
    wasStrongProject = false;
    return start.empty() ? standardized : start;
}

}  // namespace vx
