#include "platform/paths.hpp"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace vx {
namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

std::string homeDirectory() {
    std::string home = environment("HOME");
    return home.empty() ? std::string("/tmp") : home;
}

std::string executableDirectory() {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.parent_path().string();
}

}  // namespace

std::string userDataDirectory() {
    if (auto home = environment("VX_HOME"); !home.empty()) return home;
    if (auto xdg = environment("XDG_DATA_HOME"); !xdg.empty()) return xdg + "/Vellumex";
    return homeDirectory() + "/.local/share/Vellumex";
}

std::string userConfigDirectory() {
    if (auto home = environment("VX_HOME"); !home.empty()) return home;
    if (auto xdg = environment("XDG_CONFIG_HOME"); !xdg.empty()) return xdg + "/vellumex";
    return homeDirectory() + "/.config/vellumex";
}

std::string bundledTrufflesDirectory() {
    if (auto explicitPath = environment("VX_TRUFFLES"); !explicitPath.empty()) return explicitPath;
    std::error_code error;
    if (auto dir = executableDirectory(); !dir.empty()) {
        auto installed = std::filesystem::path(dir) / ".." / "share" / "vellumex" / "truffles";
        if (std::filesystem::is_directory(installed, error)) return installed.lexically_normal().string();
    }
    return VX_SOURCE_TRUFFLES;
}

std::string userTrufflesDirectory() { return userDataDirectory() + "/Truffles"; }

bool makeDirectories(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return std::filesystem::is_directory(path, error);
}

}  // namespace vx
