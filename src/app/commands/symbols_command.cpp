// vx symbols (--file PATH | --name NAME | --prefix TEXT) [--db PATH | --root ROOT]: the symbol
// list of a file, the jump-to-definition lookup of a name or the prefix lookup, from a project's
// symbol index, one symbol a line: <path> <line> <column> <type_code> <name>, tab-separated.
#include <sys/stat.h>

#include "app/commands/command.hpp"
#include "intelligence/index_paths.hpp"
#include "intelligence/main_database.hpp"

namespace vx::cli {
namespace {

void registerSymbols(CLI::App& app) {
    static std::string file, name, prefix, database, root;
    auto* symbols = app.add_subcommand("symbols", "Query a project's symbol index");
    auto* fileOption = symbols->add_option("--file", file, "The symbols of one file");
    auto* nameOption = symbols->add_option("--name", name, "Symbols of exactly this name (go to definition)");
    auto* prefixOption = symbols->add_option("--prefix", prefix, "Symbols whose names begin with this text");
    fileOption->excludes(nameOption)->excludes(prefixOption);
    nameOption->excludes(prefixOption);
    auto* dbOption = symbols->add_option("--db", database, "The index file");
    symbols->add_option("--root", root, "The project folder whose index to read (default: the current folder)")->excludes(dbOption);
    symbols->callback([fileOption, nameOption, prefixOption] {
        if (!*fileOption && !*nameOption && !*prefixOption)
            throw CommandFailure("symbols: one of --file, --name or --prefix is needed");
        const std::string path = !database.empty() ? database : VXDefaultIndexPathForDirectory(root.empty() ? "." : root);
        struct stat info;
        if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
            throw CommandFailure(path + ": no symbol index there (vx index makes one)");
        VXXMainDatabase index(path);
        if (!index.isOpen()) throw CommandFailure(path + ": cannot open the symbol index");
        std::vector<VXSymbol> found = *fileOption ? index.symbolsOfFile(VXStandardizedPath(file))
                                      : *nameOption ? index.symbolsNamed(name)
                                                    : index.symbolsWithPrefix(prefix);
        std::string out;
        for (const auto& symbol : found)
            out += symbol.path + "\t" + std::to_string(symbol.rangeLine) + "\t" + std::to_string(symbol.rangeColumn) + "\t" +
                   symbol.typeCode + "\t" + symbol.name + "\n";
        writeOutput(out);
    });
}

const CommandRegistration registration("symbols", registerSymbols);

}  // namespace
}  // namespace vx::cli
