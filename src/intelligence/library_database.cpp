#include "intelligence/library_database.hpp"

#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <thread>

#include "intelligence/ctags_runner.hpp"
#include "intelligence/kind_map.hpp"
#include "intelligence/project_files.hpp"

namespace vx {
namespace {

// Identifiers that C and C++ keep for the implementation: completion must not offer them.
bool isReserved(std::string_view name) {
    return name.size() >= 2 && name[0] == '_' && (name[1] == '_' || std::isupper(static_cast<unsigned char>(name[1])));
}

std::string trimmed(std::string text) {
    const auto notSpace = [](unsigned char c) { return !std::isspace(c); };
    text.erase(text.begin(), std::find_if(text.begin(), text.end(), notSpace));
    text.erase(std::find_if(text.rbegin(), text.rend(), notSpace).base(), text.end());
    return text;
}

// Splits a ctags scope into the enclosing namespace and the enclosing types: a member of
// "std::vector" (a class) has namespace "std" and parents "vector".
void splitScope(const CtagsTag& tag, std::string& parents, std::string& nameSpace) {
    if (tag.scope.empty()) return;
    if (tag.scopeKind == "namespace" || tag.scopeKind == "package" || tag.scopeKind == "module") {
        nameSpace = tag.scope;
        return;
    }
    const std::string separator = tag.scope.find("::") != std::string::npos ? "::" : ".";
    const size_t at = tag.scope.rfind(separator);
    if (at == std::string::npos) {
        parents = tag.scope;
    } else {
        nameSpace = tag.scope.substr(0, at);
        parents = tag.scope.substr(at + separator.size());
    }
}

}  // namespace

std::vector<VXLibrarySymbol> VXLibrarySymbolsNamed(VXXLibraryDatabase& library, const std::string& name) {
    library.onNext();
    std::vector<VXLibrarySymbol> symbols;
    library.syncWithConnection([&](SqliteConnection& db) {
        for (auto rows = db.query("SELECT name, type_code, declaration, documentation, original_namespace, sourcedecl, parents, "
                                  "namespace FROM symbols WHERE name = ? LIMIT 1000",
                                  {name});
             rows.next();)
            symbols.push_back({rows.text(0), rows.text(1), rows.text(2), rows.text(3), rows.text(4), rows.text(5), rows.text(6),
                               rows.text(7)});
    });
    return symbols;
}

LibraryBuildResult VXBuildLibraryDatabase(const std::string& path, const std::string& sourceDirectory,
                                          const std::vector<std::string>& exclude) {
    LibraryBuildResult result;
    std::error_code error;
    if (!std::filesystem::is_directory(sourceDirectory, error)) {
        result.error = sourceDirectory + ": not a folder";
        return result;
    }
    if (VXCtagsExecutable().empty()) {
        result.error = "ctags (universal-ctags) is not installed";
        return result;
    }
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    const std::string building = path + ".building-" + std::to_string(::getpid());
    std::filesystem::remove(building, error);
    auto db = SqliteConnection::open(building);
    if (!db) {
        result.error = path + ": cannot be written";
        return result;
    }
    db->execute("PRAGMA journal_mode = OFF");  // a file nobody reads until it is renamed into place
    db->execute("PRAGMA synchronous = OFF");
    db->execute("CREATE TABLE symbols (name TEXT, type_code TEXT, declaration TEXT, documentation TEXT, "
                "original_namespace TEXT, sourcedecl TEXT, parents TEXT, namespace TEXT)");
    db->execute("BEGIN");
    auto insert = db->prepared("INSERT INTO symbols VALUES (?, ?, ?, ?, ?, ?, ?, ?)");

    std::string root = std::filesystem::path(sourceDirectory).lexically_normal().string();
    while (root.size() > 1 && root.back() == '/') root.pop_back();
    std::vector<std::string> files;
    for (auto& file : VXProjectFilesForIndexing(root, exclude)) files.push_back(std::move(file.path));
    result.files = files.size();
    CtagsRun run;
    run.jobs = std::max(1u, std::thread::hardware_concurrency());
    const bool ran = VXRunCtags(files, run, [&](CtagsFileTags&& file) {
        const std::string sourcedecl = file.path.size() > root.size() ? file.path.substr(root.size() + 1) : file.path;
        for (const auto& tag : file.tags) {
            const std::string type = VXTypeCodeForCtagsKind(tag.language, tag.kind, tag.scopeKind, !tag.signature.empty());
            if (isReserved(tag.name) || type == "local" || type == "misc") continue;
            std::string parents, nameSpace;
            splitScope(tag, parents, nameSpace);
            insert.execute({tag.name, type, trimmed(VXLineOfCtagsPattern(tag.pattern)), std::string(), tag.scope, sourcedecl,
                            parents, nameSpace});
            ++result.symbols;
        }
    });
    db->execute("COMMIT");
    // Completion looks names up exactly and by prefix (LIKE, which ignores ASCII case).
    db->execute("CREATE INDEX symbols_name_index ON symbols (name)");
    db->execute("CREATE INDEX symbols_name_nocase_index ON symbols (name COLLATE NOCASE)");
    db->execute("CREATE INDEX symbols_namespace_index ON symbols (namespace)");
    insert = SqlitePrepared();
    db.reset();
    if (!ran) {
        std::filesystem::remove(building, error);
        result.error = "ctags failed while reading " + sourceDirectory;
        return result;
    }
    std::filesystem::rename(building, path, error);
    if (error) {
        std::filesystem::remove(building, error);
        result.error = path + ": " + error.message();
        return result;
    }
    result.ok = true;
    return result;
}

}  // namespace vx
