// vx highlight FILE [--language NAME | --syntax PATH] [--format FORMAT]: the whole file through
// the highlighter, printed in one of the formats below.
//
// Formats are a table: a format turns the highlighted lines into text, so output for people
// (colours from a theme) is added as another entry without touching the rest.
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>

#include "app/commands/command.hpp"
#include "syntax/document_highlighter.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/zone_manager.hpp"

namespace vx::cli {
namespace {

struct HighlightInput {
    std::u16string text;
    std::vector<VXHighlightedLine> lines;
    const VXSyntaxRuleset* ruleset = nullptr;
};

using HighlightFormat = std::function<std::string(const HighlightInput&)>;

const std::map<std::string, HighlightFormat>& formats() {
    static const std::map<std::string, HighlightFormat> table = {
        {"scopes", [](const HighlightInput& input) { return formatScopes(input.lines); }},
        {"events", [](const HighlightInput& input) { return formatEvents(input.lines); }},
    };
    return table;
}

struct Options {
    std::string file;
    std::string language;
    std::string syntax;
    std::string format;
};

// The text of a file as the highlighter sees it: UTF-8 (a byte-order mark is dropped).
std::u16string readText(const std::string& path) {
    std::string bytes = readInputFile(path);
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
    return utf16FromUtf8(bytes);
}

// One definition file loaded on its own (for grammar authors): its folder names the language,
// and its includes of other languages resolve against the bundled ones.
const VXSyntaxRuleset* loadSyntaxFile(const std::string& path) {
    static VXSyntaxZoneManager manager;
    const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
    catalog.attachTo(manager);
    const std::string language = std::filesystem::absolute(path).parent_path().filename().string();
    auto ruleset = VXSyntaxRuleset::rulesetWithContentsOfFile(path, language, "", manager);
    if (!ruleset) throw CommandFailure(path + ": cannot read the definition file");
    return manager.addRuleset(std::move(ruleset));
}

void run(const Options& options) {
    const std::string format = options.format.empty() ? "scopes" : options.format;
    auto formatter = formats().find(format);
    if (formatter == formats().end()) throw CommandFailure("unknown format: " + format);

    HighlightInput input;
    input.text = readText(options.file);
    if (!options.syntax.empty()) {
        input.ruleset = loadSyntaxFile(options.syntax);
    } else {
        const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
        const VXLanguage* language = nullptr;
        if (!options.language.empty()) {
            language = catalog.languageNamed(options.language);
            if (!language) throw CommandFailure("unknown language: " + options.language);
        } else {
            language = catalog.detectLanguageForFilePath(options.file == "-" ? std::string() : options.file, input.text);
        }
        input.ruleset = language ? catalog.rulesetForLanguage(*language) : nullptr;
        if (!input.ruleset) throw CommandFailure("cannot load the language definition for " + options.file);
    }
    input.lines = highlightText(input.text, *input.ruleset);
    writeOutput(formatter->second(input));
}

void registerHighlight(CLI::App& app) {
    static Options options;
    auto* command = app.add_subcommand("highlight", "Highlight a whole file");
    command->add_option("FILE", options.file, "The file, or - for standard input")->required();
    auto* language = command->add_option("--language", options.language, "Highlight as this language");
    command->add_option("--syntax", options.syntax, "Load this syntax.selfml instead of choosing a language")
        ->excludes(language);
    std::string names;
    for (const auto& [name, _] : formats()) names += (names.empty() ? "" : "|") + name;
    command->add_option("--format", options.format, "Output format: " + names + " (default scopes)");
    command->callback([] { run(options); });
}

const CommandRegistration registration("highlight", registerHighlight);

}  // namespace
}  // namespace vx::cli
