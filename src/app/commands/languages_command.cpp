// vx languages: the languages of the truffles, one a line: name, identifier, file-name globs
// (tab-separated; the globs separated by spaces).
#include "app/commands/command.hpp"
#include "syntax/language_catalog.hpp"

namespace vx::cli {
namespace {

void registerLanguages(CLI::App& app) {
    auto* command = app.add_subcommand("languages", "List the languages");
    command->callback([] {
        std::string out;
        for (const VXLanguage& language : VXLanguageCatalog::sharedCatalog().allLanguages()) {
            std::string globs;
            for (const auto& glob : language.nameGlobs) globs += (globs.empty() ? "" : " ") + glob;
            out += language.name + "\t" + language.identifier + "\t" + globs + "\n";
        }
        writeOutput(out);
    });
}

const CommandRegistration registration("languages", registerLanguages);

}  // namespace
}  // namespace vx::cli
