// vx selfml dump FILE | vx selfml fmt FILE: the parsed tree as JSON, or written back as self-ml.
#include <nlohmann/json.hpp>

#include "app/commands/command.hpp"
#include "selfml/sfnode.hpp"
#include "selfml/sfwriter.hpp"

namespace vx::cli {
namespace {

nlohmann::ordered_json toJson(const SFNode* list) {
    nlohmann::ordered_json children = nlohmann::ordered_json::array();
    for (const SFNode* child = SFNodeFirstChild(list); child; child = SFNodeNextInList(child)) {
        if (SFNodeGetType(child) == SFNodeTypeString)
            children.push_back(SFNodeStringValue(child) ? SFNodeStringValue(child) : "");
        else
            children.push_back(toJson(child));
    }
    const char* head = SFNodeHead(list);
    return nlohmann::ordered_json{{"head", head ? head : ""}, {"children", std::move(children)}};
}

struct ParsedFile {
    explicit ParsedFile(const std::string& path) {
        std::string text = readInputFile(path);
        root = SFNodeCreateFromBytes(text.data(), text.size());
        if (!root) throw CommandFailure(path + ": out of memory");
    }
    ~ParsedFile() { SFNodeFree(root); }
    ParsedFile(const ParsedFile&) = delete;
    ParsedFile& operator=(const ParsedFile&) = delete;
    SFNode* root = nullptr;
};

void registerSelfml(CLI::App& app) {
    auto* selfml = app.add_subcommand("selfml", "Parse self-ml definition files");
    selfml->require_subcommand(1);

    static std::string dumpPath, fmtPath;
    auto* dump = selfml->add_subcommand("dump", "Print the parsed tree as JSON");
    dump->add_option("FILE", dumpPath, "A self-ml file, or - for standard input")->required();
    dump->callback([] {
        ParsedFile parsed(dumpPath);
        // Strings keep their bytes; those that are not UTF-8 print as U+FFFD.
        writeOutput(toJson(parsed.root).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    });

    auto* fmt = selfml->add_subcommand("fmt", "Print the parsed tree written back as self-ml");
    fmt->add_option("FILE", fmtPath, "A self-ml file, or - for standard input")->required();
    fmt->callback([] {
        ParsedFile parsed(fmtPath);
        writeOutput(SFNodeSelfmlRepresentation(parsed.root) + "\n");
    });
}

const CommandRegistration registration("selfml", registerSelfml);

}  // namespace
}  // namespace vx::cli
