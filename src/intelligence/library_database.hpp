// Library databases: the symbols of a standard library (the C headers, the C++ standard
// library...), read-only, for completion. One SQLite file per library, with one table:
//
//   symbols (name, type_code, declaration, documentation, original_namespace, sourcedecl,
//            parents, namespace)
//
// `VXXLibraryDatabase` opens one read-only; `VXBuildLibraryDatabase` makes one from a tree of
// headers or sources through ctags.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "storage/database.hpp"

namespace vx {

class VXXLibraryDatabase final : public VXXDatabase {
public:
    explicit VXXLibraryDatabase(std::string path) { initWithPath(std::move(path)); }
    bool isReadonly() const override { return true; }

    // The next use (onNext) closes and reopens the connection: a download replaced the file.
    void reopenOnNext() { m_reopen = true; }
    // Called before each use.
    void onNext() {
        if (m_reopen.exchange(false)) reopen();
    }

private:
    std::atomic<bool> m_reopen = false;
};

// One row of a library database.
struct VXLibrarySymbol {
    std::string name, typeCode, declaration, documentation, originalNamespace, sourcedecl, parents, nameSpace;
};

// Reads the symbols named `name` exactly (for checks and the command line).
std::vector<VXLibrarySymbol> VXLibrarySymbolsNamed(VXXLibraryDatabase& library, const std::string& name);

struct LibraryBuildResult {
    bool ok = false;
    size_t files = 0;
    size_t symbols = 0;
    std::string error;  // why it failed, for the user
};

// Writes a library database at `path` from every file under `sourceDirectory` that ctags reads.
// The file is built beside its place and renamed into it, so a reader never sees half of one.
// Names reserved for the implementation ("__x", "_X") and kinds that are no use to completion
// (locals, misc) are left out. `exclude` lists folders (absolute) not to walk into.
LibraryBuildResult VXBuildLibraryDatabase(const std::string& path, const std::string& sourceDirectory,
                                          const std::vector<std::string>& exclude = {});

}  // namespace vx
