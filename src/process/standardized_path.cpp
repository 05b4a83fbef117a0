#include "process/standardized_path.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace vx {
namespace {

// The home folder of the current user (for "~") or of a named one ("~name"); empty when unknown.
std::string homeDirectory(const std::string& user) {
    if (user.empty()) {
        if (const char* home = std::getenv("HOME"); home && *home) return home;
        if (const passwd* entry = getpwuid(getuid())) return entry->pw_dir;
        return {};
    }
    if (const passwd* entry = getpwnam(user.c_str())) return entry->pw_dir;
    return {};
}

std::string expandTilde(std::string_view path) {
    if (path.empty() || path.front() != '~') return std::string(path);
    const size_t slash = path.find('/');
    const std::string user(path.substr(1, slash == std::string_view::npos ? std::string_view::npos : slash - 1));
    const std::string home = homeDirectory(user);
    if (home.empty()) return std::string(path);  // an unknown user's "~name" stays as written
    return slash == std::string_view::npos ? home : home + std::string(path.substr(slash));
}

}  // namespace

std::string standardizedPath(std::string_view input) {
    const std::string path = expandTilde(input);
    if (path.empty()) return path;
    const bool absolute = path.front() == '/';

    std::vector<std::string_view> parts;
    const std::string_view whole(path);
    size_t start = 0;
    while (start <= whole.size()) {
        size_t end = whole.find('/', start);
        if (end == std::string_view::npos) end = whole.size();
        const std::string_view part = whole.substr(start, end - start);
        start = end + 1;
        if (part.empty() || part == ".") continue;
        if (part == ".." && absolute) {
            if (!parts.empty()) parts.pop_back();  // "/.." is "/"
            continue;
        }
        parts.push_back(part);
    }

    std::string result = absolute ? "/" : "";
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) result += '/';
        result += parts[i];
    }
    if (result.empty()) return ".";  // "./" and "." name the current folder
    return result;
}

}  // namespace vx
