// vx edit [FILE] [--language NAME | --syntax PATH] [--tab-size N] [--soft-tabs yes|no]
//         [--select RANGES] [--do COMMAND]... [--write]
// Opens FILE as the editor would, sets the selections, runs each command through the editor's
// own commands and keys, and prints the text and the selections as JSON.
#include <nlohmann/json.hpp>

#include <chrono>

#include <filesystem>

#include "app/commands/command.hpp"
#include "app/editor/edit_document.hpp"
#include "app/editor/edit_script.hpp"
#include "app/editor/files.hpp"
#include "app/editor/session.hpp"
#include "platform/unicode.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/zone_manager.hpp"

namespace vx::cli {
namespace {

using Json = nlohmann::ordered_json;
using namespace vx::editor;

struct Options {
    std::string file;
    std::string language;
    std::string syntax;
    int tabSize = 0;
    std::string softTabs;
    std::string select;
    std::vector<std::string> commands;
    bool write = false;
};

// A definition file of its own: its folder names the language.
const VXSyntaxRuleset* loadSyntax(const std::string& path) {
    static VXSyntaxZoneManager manager;
    VXLanguageCatalog::sharedCatalog().attachTo(manager);
    const std::string language = std::filesystem::absolute(path).parent_path().filename().string();
    auto ruleset = VXSyntaxRuleset::rulesetWithContentsOfFile(path, language, "", manager);
    if (!ruleset) throw CommandFailure(path + ": cannot read the definition file");
    return manager.addRuleset(std::move(ruleset));
}

std::unique_ptr<VXSingleFileDocument> openDocument(const Options& options) {
    const VXLanguage* language = nullptr;
    if (!options.language.empty()) {
        language = VXLanguageCatalog::sharedCatalog().languageNamed(options.language);
        if (!language) throw CommandFailure("unknown language: " + options.language);
    }
    auto document = language ? newDocumentInLanguage(*language) : newDocument();
    std::string error;
    if (options.file.empty()) {
        if (!document->readFromData("", "", &error)) throw CommandFailure(error);
    } else if (options.file == "-") {
        if (!document->readFromData(readInputFile("-"), "", &error)) throw CommandFailure(error);
    } else if (!document->readFromURL(std::filesystem::absolute(options.file).string(), "", &error)) {
        throw CommandFailure(error.empty() ? options.file + ": cannot be read" : error);
    }
    return document;
}

void run(const Options& options) {
    if (options.write && (options.file.empty() || options.file == "-")) throw CommandFailure("--write needs a FILE to write to");
    if (!options.softTabs.empty() && options.softTabs != "yes" && options.softTabs != "no")
        throw CommandFailure("--soft-tabs takes yes or no, not " + options.softTabs);
    const VXSyntaxRuleset* syntax = options.syntax.empty() ? nullptr : loadSyntax(options.syntax);

    Session session;
    Editor& editor = session.editor();
    Tab& tab = editor.openTab(std::make_unique<Tab>(openDocument(options)));
    if (syntax) tab.setHighlighter(std::make_unique<TabHighlighter>(*syntax));
    int tabSize = options.tabSize > 0 ? options.tabSize : tab.tabSize();
    bool softTabs = options.softTabs.empty() ? tab.softTabs() : options.softTabs == "yes";
    tab.setIndentation(tabSize, softTabs);
    try {
        if (!options.select.empty()) tab.view().setSelections(parseSelectionRanges(options.select, tab.text().length()));
        for (const auto& command : options.commands) runEditCommand(editor, command);
    } catch (const EditScriptError& error) {
        throw CommandFailure(error.what());
    }
    // What is still coming in (a snippet's shell output) is part of the result.
    while (editor.hasBackgroundWork()) editor.doBackgroundWork(std::chrono::milliseconds(100));
    tab.endTyping();

    Json out = Json::object();
    if (options.write) {
        if (!saveTab(editor, tab)) throw CommandFailure(editor.message().empty() ? options.file + ": cannot be saved" : editor.message());
    } else {
        out["text"] = utf8FromUtf16(tab.text().text());
    }
    size_t primary = 0;
    Json selections = Json::array();
    for (const Selection& s : tab.view().selections(&primary)) selections.push_back({s.range().location, s.range().length});
    out["selections"] = std::move(selections);
    out["primary"] = primary;
    writeOutput(out.dump() + "\n");
}

void registerEdit(CLI::App& app) {
    static Options options;
    auto* command = app.add_subcommand("edit", "Edit a text headless with the editor's commands and print the result as JSON");
    command->add_option("FILE", options.file, "The file to edit (- for standard input; none for an empty text)");
    auto* language = command->add_option("--language", options.language, "Edit in this language");
    command->add_option("--syntax", options.syntax, "Load this syntax.selfml as the language")->excludes(language);
    command->add_option("--tab-size", options.tabSize, "The tab size")->check(CLI::Range(1, 18));
    command->add_option("--soft-tabs", options.softTabs, "Indent with spaces (yes) or tabs (no)");
    command->add_option("--select", options.select, "Selections: LOC or LOC:LEN, comma-separated; the first is the primary");
    command->add_option("--do", options.commands,
                        "A command: type:TEXT insert:TEXT backspace delete newline tab backtab undo redo move:DIR "
                        "select:DIR transform:EVENT command:NAME key:KEY")
        ->allow_extra_args(false);
    command->add_flag("--write", options.write, "Save the result to FILE instead of printing the text");
    command->callback([] { run(options); });
}

CommandRegistration registration("edit", registerEdit);

}  // namespace
}  // namespace vx::cli
