// vx snippet parse TEXT | vx snippet convert TEXT | vx snippet convert --file FILE: a compiled
// snippet as JSON, a snippet in the dollar-sign syntax rewritten in this one, or a JSON
// collection of such snippets written as a snippets file for a truffle.
#include <nlohmann/json.hpp>

#include <iostream>
#include <map>

#include "app/commands/command.hpp"
#include "snippets/dollar_converter.hpp"
#include "snippets/regex_filter.hpp"
#include "snippets/snippet_collection.hpp"
#include "snippets/snippet_parser.hpp"
#include "platform/unicode.hpp"

namespace vx::cli {
namespace {

using Json = nlohmann::ordered_json;

Json constantJson(const SNConstant& constant) {
    switch (constant.kind()) {
    case SNConstant::Kind::String:
        return Json{{"type", "string"}, {"value", utf8FromUtf16(static_cast<const SNStringConstant&>(constant).resolvedValue)}};
    case SNConstant::Kind::Shell: {
        const auto& shell = static_cast<const SNShellConstant&>(constant);
        return Json{{"type", "shell"}, {"prefix", utf8FromUtf16(shell.prefix)}, {"script", utf8FromUtf16(shell.script)}};
    }
    case SNConstant::Kind::Variable: break;
    }
    return Json{{"type", "variable"}, {"name", utf8FromUtf16(static_cast<const SNVariableConstant&>(constant).variable)}};
}

Json filterJson(const SNFilter& filter) {
    if (const auto* regex = dynamic_cast<const SNRegexFilter*>(&filter)) {
        return Json{{"type", "regex"},
                    {"pattern", utf8FromUtf16(regex->pattern)},
                    {"replace", utf8FromUtf16(regex->replace)},
                    {"options", utf8FromUtf16(regex->options)}};
    }
    return Json{{"type", "orelse"}, {"constant", constantJson(*static_cast<const SNConstantFilter&>(filter).constant)}};
}

const char* kindName(SNConstruct::Kind kind) {
    switch (kind) {
    case SNConstruct::Kind::TabStop: return "tabstop";
    case SNConstruct::Kind::Mirror: return "mirror";
    case SNConstruct::Kind::Constant: break;
    }
    return "constant";
}

Json snippetJson(const CompiledSnippet& snippet) {
    std::map<const SNConstruct*, size_t> indexOf;
    Json constructs = Json::array();
    for (const auto& construct : snippet.constructs) {
        indexOf[construct.get()] = constructs.size();
        Json entry{{"kind", kindName(construct->kind())}};
        if (const auto* numbered = dynamic_cast<const SNNumberedConstruct*>(construct.get())) entry["number"] = numbered->number;
        entry["offset"] = construct->range.location;
        entry["length"] = construct->range.length;
        auto parent = construct->parentConstruct();
        entry["parent"] = parent ? Json(indexOf.at(parent.get())) : Json(nullptr);
        Json filters = Json::array();
        for (const auto& filter : construct->filters) filters.push_back(filterJson(*filter));
        entry["filters"] = std::move(filters);
        if (const auto* constant = dynamic_cast<const SNConstantConstruct*>(construct.get())) entry["constant"] = constantJson(*constant->constant);
        constructs.push_back(std::move(entry));
    }
    return Json{{"string", utf8FromUtf16(snippet.string)}, {"failed", snippet.failed}, {"constructs", std::move(constructs)}};
}

void registerSnippet(CLI::App& app) {
    auto* snippet = app.add_subcommand("snippet", "Compile snippets and convert them from the dollar-sign syntax");
    snippet->require_subcommand(1);

    static std::string parseText, convertText, convertFile, convertScope;
    auto* parse = snippet->add_subcommand("parse", "Print the compiled snippet as JSON: its text and its constructs");
    parse->add_option("TEXT", parseText, "The snippet text")->required();
    parse->callback([] { writeOutput(snippetJson(VXNewSnippetParserCompile(utf16FromUtf8(parseText))).dump() + "\n"); });

    auto* convert = snippet->add_subcommand("convert", "Rewrite a snippet from the dollar-sign syntax ($1, ${1:default}, ...) in this one, "
                                                       "or a JSON collection of them as a snippets file");
    auto* text = convert->add_option("TEXT", convertText, "The snippet in the dollar-sign syntax");
    auto* file = convert->add_option("--file", convertFile, "A JSON file of snippets (\"prefix\", \"body\", \"description\"); - for standard input");
    convert->add_option("--scope", convertScope, "With --file: the scope selector of the snippets file (the language they are for)");
    text->excludes(file);
    convert->callback([] {
        if (!convertFile.empty()) {
            SnippetCollectionConversion result = convertSnippetCollection(readInputFile(convertFile), convertScope);
            if (!result.error.empty()) throw CommandFailure(convertFile + ": " + result.error);
            for (const std::string& line : result.skipped) std::cerr << "vx: " << convertFile << ": left out " << line << "\n";
            for (const std::string& line : result.notes) std::cerr << "vx: " << convertFile << ": " << line << "\n";
            writeOutput(result.selfml);
            return;
        }
        if (convertText.empty()) throw CommandFailure("convert needs a snippet TEXT or --file FILE");
        SnippetConversion result = convertDollarSnippet(utf16FromUtf8(convertText));
        if (!result.ok) throw CommandFailure("cannot convert the snippet at offset " + std::to_string(result.offset) + ": " + result.problem);
        writeOutput(utf8FromUtf16(result.text) + "\n");
    });
}

const CommandRegistration registration("snippet", registerSnippet);

}  // namespace
}  // namespace vx::cli
