// vx library: the library databases that completion reads.
//   vx library build NAME SOURCE-DIR [--exclude DIR]... [--if-missing]   one library from a tree of headers
//   vx library build-defaults                                             c/99 and c++/11 from the system's headers
//   vx library path NAME                                                  where the library's file lives
#include <filesystem>
#include <nlohmann/json.hpp>

#include "app/commands/command.hpp"
#include "intelligence/library_manager.hpp"

namespace vx::cli {
namespace {

// The system's C++ standard headers: the newest numbered folder of /usr/include/c++.
std::string systemCxxHeaders() {
    std::error_code error;
    std::string best;
    int bestVersion = -1;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/include/c++", error)) {
        const std::string name = entry.path().filename().string();
        const int number = std::atoi(name.c_str());
        if (entry.is_directory(error) && number > bestVersion) {
            bestVersion = number;
            best = entry.path().string();
        }
    }
    return best;
}

// The C library: /usr/include without the trees of C++ libraries installed beside it.
std::vector<std::string> cxxTreesInSystemHeaders() {
    static const char* const kPrefixes[] = {"c++", "boost", "llvm", "clang", "node", "oneapi", "tbb", "gtest", "gmock",
                                            "benchmark", "CLI", "nlohmann", "qt"};
    std::vector<std::string> trees;
    std::error_code error;
    for (const char* parent : {"/usr/include", "/usr/include/x86_64-linux-gnu", "/usr/include/aarch64-linux-gnu"})
        for (const auto& entry : std::filesystem::directory_iterator(parent, error)) {
            const std::string name = entry.path().filename().string();
            for (const char* prefix : kPrefixes)
                if (name.rfind(prefix, 0) == 0 && entry.is_directory(error)) trees.push_back(entry.path().string());
        }
    return trees;
}

nlohmann::ordered_json build(const std::string& name, const std::string& source, const std::vector<std::string>& exclude,
                             bool ifMissing) {
    const std::string path = VXLibraryDBManager::localPathForLibrary(name);
    nlohmann::ordered_json result = {{"library", name}, {"database", path}};
    std::error_code error;
    if (ifMissing && std::filesystem::exists(path, error)) {
        result["built"] = false;
        return result;
    }
    std::vector<std::string> excluded;
    for (const auto& folder : exclude) excluded.push_back(std::filesystem::absolute(folder).lexically_normal().string());
    const auto built = VXBuildLibraryDatabase(path, source, excluded);
    if (!built.ok) throw CommandFailure(built.error);
    result["built"] = true;
    result["files"] = built.files;
    result["symbols"] = built.symbols;
    return result;
}

void registerLibrary(CLI::App& app) {
    static std::string name, source;
    static std::vector<std::string> exclude;
    static bool ifMissing = false;
    auto* library = app.add_subcommand("library", "Library databases for completion");
    library->require_subcommand(1);

    auto* buildCommand = library->add_subcommand("build", "Build a library database from a folder of headers or sources (JSON summary)");
    buildCommand->add_option("NAME", name, "The library's name, such as c++/11")->required();
    buildCommand->add_option("SOURCE-DIR", source, "The folder to read")->required();
    buildCommand->add_option("--exclude", exclude, "A folder not to read (repeatable)");
    buildCommand->add_flag("--if-missing", ifMissing, "Do nothing when the library's file exists");
    buildCommand->callback([] { writeOutput(build(name, source, exclude, ifMissing).dump() + "\n"); });

    auto* defaults = library->add_subcommand("build-defaults",
                                             "Build c/99 (from /usr/include) and c++/11 (from the system's C++ headers) when missing");
    defaults->callback([] {
        std::string out;
        const std::string cxx = systemCxxHeaders();
        out += build("c/99", "/usr/include", cxxTreesInSystemHeaders(), true).dump() + "\n";
        if (!cxx.empty()) out += build("c++/11", cxx, {}, true).dump() + "\n";
        writeOutput(out);
    });

    auto* pathCommand = library->add_subcommand("path", "Where a library's database lives");
    pathCommand->add_option("NAME", name, "The library's name")->required();
    pathCommand->callback([] { writeOutput(VXLibraryDBManager::localPathForLibrary(name) + "\n"); });
}

const CommandRegistration registration("library", registerLibrary);

}  // namespace
}  // namespace vx::cli
