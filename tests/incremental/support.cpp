#include "support/build_paths.hpp"
#include "incremental/support.hpp"

#include <cstdlib>
#include <filesystem>

#include "syntax/document_highlighter.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/mapped_string.hpp"

namespace vx::test {

const VXSyntaxRuleset& bundledRuleset(const std::string& language) {
    static const bool once = [] {
        setenv("VX_TRUFFLES", (std::filesystem::path(VX_SOURCE_DIR) / "truffles").c_str(), 1);
        return true;
    }();
    (void)once;
    const VXLanguageCatalog& catalog = VXLanguageCatalog::sharedCatalog();
    const VXLanguage* found = catalog.languageNamed(language);
    if (!found) throw std::runtime_error("no bundled language " + language);
    const VXSyntaxRuleset* ruleset = catalog.rulesetForLanguage(*found);
    if (!ruleset) throw std::runtime_error("cannot load " + language);
    return *ruleset;
}

HighlightedDocument::HighlightedDocument(const std::string& language, std::u16string_view text)
    : ruleset(bundledRuleset(language)) {
    highlighter = std::make_unique<VXIncrementalHighlighter>(
        document, [this](const DocumentLanguage&) { return &ruleset; });
    if (!text.empty()) document.js_setText(text);
    highlighter->waitUntilSettled();
}

std::string differenceFromFullParse(HighlightedDocument& doc) {
    doc.highlighter->waitUntilSettled();
    const std::u16string text = doc.document.contents().string();
    const std::vector<VXHighlightedLine> fresh = highlightText(text, doc.ruleset);
    if (fresh.size() != doc.highlighter->lineCount())
        return "line count " + std::to_string(doc.highlighter->lineCount()) + ", expected " + std::to_string(fresh.size());
    for (uint64_t line = 0; line < fresh.size(); ++line) {
        auto zones = doc.highlighter->zonesForLine(line, VXIncrementalHighlighter::Wait::No);
        const std::string where = "line " + std::to_string(line) + " \"" +
                                  utf8FromUtf16(std::u16string_view(text).substr(fresh[line].line.start, fresh[line].line.contentLength)) + "\"";
        if (!zones || !zones->settled) return where + ": not settled";
        const Range range = doc.highlighter->lineRange(line);
        if (range.location != fresh[line].line.start || range.length != fresh[line].line.length)
            return where + ": range " + std::to_string(range.location) + "+" + std::to_string(range.length);
        if (!zones->startContext.equalZoneDefinitions(fresh[line].startContext))
            return where + ": starts in " + zones->startContext.toString() + ", expected " + fresh[line].startContext.toString();
        VXHighlightedLine got{fresh[line].line, zones->startContext, zones->zones};
        if (formatEvents({got}) != formatEvents({fresh[line]}))
            return where + ": events\n" + formatEvents({got}) + "expected\n" + formatEvents({fresh[line]});
    }
    return "";
}

}  // namespace vx::test
