#include "intelligence/index_paths.hpp"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>

#include "platform/paths.hpp"

namespace vx {

std::string VXProjectIndexesDirectory() {
    const std::string folder = userDataDirectory() + "/ProjectIndexes";
    makeDirectories(folder);
    return folder;
}

std::string VXProjectIndexPath(const std::string& indexName) {
    return VXProjectIndexesDirectory() + "/" + indexName + ".vxindex";
}

std::string VXTemporaryIndexPath() {
    const std::string folder = (std::filesystem::temp_directory_path() / "VXIndexTemps").string();
    makeDirectories(folder);
    std::random_device random;
    std::error_code error;
    while (true) {
        char name[40];
        std::snprintf(name, sizeof name, "%08x%08x.vxindex", static_cast<unsigned>(random()), static_cast<unsigned>(random()));
        std::string path = folder + "/" + name;
        if (!std::filesystem::exists(path, error)) return path;
    }
}

std::string VXStandardizedPath(const std::string& path) {
    std::error_code error;
    std::string result = std::filesystem::absolute(path, error).lexically_normal().string();
    if (error) result = path;
    while (result.size() > 1 && result.back() == '/') result.pop_back();
    return result;
}

std::string VXDefaultIndexNameForDirectory(const std::string& directory) {
    const std::string standardized = VXStandardizedPath(directory);
    uint64_t hash = 1469598103934665603ull;  // FNV-1a: short, stable, and no library needed
    for (unsigned char c : standardized) hash = (hash ^ c) * 1099511628211ull;
    std::string name = std::filesystem::path(standardized).filename().string();
    if (name.empty()) name = "root";
    char suffix[24];
    std::snprintf(suffix, sizeof suffix, "-%016llx", static_cast<unsigned long long>(hash));
    return name + suffix;
}

std::string VXDefaultIndexPathForDirectory(const std::string& directory) {
    return VXProjectIndexPath(VXDefaultIndexNameForDirectory(directory));
}

}  // namespace vx
