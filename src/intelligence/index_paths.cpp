#include "intelligence/index_paths.hpp"

#include <cstdio>
#include <filesystem>
#include <random>

#include "platform/paths.hpp"
#include "projects/project_root.hpp"

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

// Both rules belong to the project layer, which names projects' indexes when it creates them.
std::string VXStandardizedPath(const std::string& path) { return VXProjectStandardizedPath(path); }

std::string VXDefaultIndexNameForDirectory(const std::string& directory) { return VXProjectIndexNameForDirectory(directory); }

std::string VXDefaultIndexPathForDirectory(const std::string& directory) {
    return VXProjectIndexPath(VXDefaultIndexNameForDirectory(directory));
}

}  // namespace vx
