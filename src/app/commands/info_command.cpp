// vx info FILE: what the document makes of a file when it opens it (encoding, line endings,
// language, indentation), as JSON.
#include <nlohmann/json.hpp>

#include "app/commands/command.hpp"
#include "document/single_file_document.hpp"
#include "document/tabdetection.hpp"
#include "syntax/language_chooser.hpp"

namespace vx::cli {
namespace {

nlohmann::ordered_json describe(VXSingleFileDocument& document) {
    nlohmann::ordered_json info;
    info["encoding"] = document.fileEncoding();
    info["encodingName"] = localizedNameOfStringEncoding(document.fileEncoding());
    info["lineEnding"] = static_cast<uint32_t>(document.lineEndingType());
    info["language"] = document.language().name;
    info["tabSize"] = document.indentationContext().tabSize;
    info["softTabs"] = document.indentationContext().useSoftTabs;
    const std::u16string text = document.contents().string();
    const TabDetectionResult detected = detect(text);
    info["detection"] = {{"undecided", detected.undecided},
                         {"usesSpaces", detected.usesSpaces},
                         {"ratio", detected.ratio},
                         {"width", detected.width},
                         {"widthConfidence", detected.widthConfidence}};
    info["shouldHighlight"] = shouldHighlight(text);
    return info;
}

void registerInfo(CLI::App& app) {
    static std::string path;
    auto* info = app.add_subcommand("info", "Describe a file as the editor would open it (JSON)");
    info->add_option("FILE", path, "A text file, or - for standard input")->required();
    info->callback([] {
        VXSingleFileDocument document;
        document.setLanguageChooser(&VXSyntaxLanguageChooser::shared());
        std::string error;
        bool ok;
        if (path == "-")
            ok = document.readFromData(readInputFile(path), "-", &error);
        else
            ok = document.readFromURL(path, "public.plain-text", &error);
        if (!ok) throw CommandFailure(error);
        writeOutput(describe(document).dump() + "\n");
    });
}

const CommandRegistration registration("info", registerInfo);

}  // namespace
}  // namespace vx::cli
