#include "support/build_paths.hpp"
#include "syntax_test_support.hpp"

#include <deque>
#include <filesystem>

#include "platform/file_cache.hpp"
#include "syntax/mapped_string.hpp"

namespace vx::test {

TestLanguages::TestLanguages(std::map<std::string, std::string> definitions) : m_definitions(std::move(definitions)) {
    m_manager.setLanguageLoader([this](const std::string& name, VXSyntaxZoneManager& manager) -> std::unique_ptr<VXSyntaxRuleset> {
        auto it = m_definitions.find(name);
        if (it == m_definitions.end()) return nullptr;
        return VXSyntaxRuleset::rulesetFromString(it->second, name, "", manager);
    });
}

const VXSyntaxRuleset& TestLanguages::ruleset(const std::string& name) {
    VXSyntaxRuleset* ruleset = m_manager.rulesetForLanguage(name);
    if (!ruleset) throw std::runtime_error("no test language " + name);
    return *ruleset;
}

const VXSyntaxRuleset& languageFrom(const std::string& definition) {
    // Kept for the whole run: definitions are referred to by the events tests look at.
    static std::deque<std::unique_ptr<TestLanguages>> kept;
    kept.push_back(std::make_unique<TestLanguages>(std::map<std::string, std::string>{{"t", definition}}));
    return kept.back()->ruleset("t");
}

std::string scopesOf(const std::string& utf8Text, const VXSyntaxRuleset& ruleset) {
    return formatScopes(highlightText(utf16FromUtf8(utf8Text), ruleset));
}

std::string eventsOf(const std::string& utf8Text, const VXSyntaxRuleset& ruleset) {
    return formatEvents(highlightText(utf16FromUtf8(utf8Text), ruleset));
}

VXContext literalParseLine(const VXContext& incoming, const VXSyntaxLine& givenLine, std::vector<VXSyntaxZone>& events,
                           const VXSyntaxRuleset& ruleset) {
    if (!VXSyntaxBreakIsLineFeed(givenLine))
        return VXSyntaxParseWithLineFeedBreak(givenLine, events, [&](const VXSyntaxLine& line) {
            return literalParseLine(incoming, line, events, ruleset);
        });
    const VXSyntaxLine& line = givenLine;
    VXRegexRegionPtr region = makeRegion();
    VXSyntaxZoneStack stack;
    VXSyntaxLoadStack(incoming, stack);
    uint64_t position = 0;
    int emptyMatches = 0;
    while (position <= line.contentLength) {
        if (auto length = VXSyntaxParseAttemptEnd(stack, line, position, region.get())) {
            VXSyntaxEmitEnd(stack, position, *length, region.get(), line, events);
            if (*length > 0) {
                position += *length;
                emptyMatches = 0;
            }
            continue;
        }
        if (position >= line.contentLength) break;
        std::vector<const VXSyntaxZoneDefinition*> visited;
        const auto candidates = VXSyntaxCandidateOwner(stack, ruleset).subzonesForBase(&ruleset);
        const auto match = VXSyntaxParseZonesForLine(candidates, &ruleset, line, position, visited, region.get());
        if (!match) {
            position = VXSyntaxNextCharacter(line.text, position);
            emptyMatches = 0;
            continue;
        }
        VXSyntaxEmitMatch(*match->definition, position, match->length, region.get(), line, stack, events);
        position = VXSyntaxPositionAfterMatch(line, position, match->length, emptyMatches);
    }
    return VXSyntaxContextFromStack(stack);
}

std::vector<VXHighlightedLine> highlightLiterally(std::u16string_view text, const VXSyntaxRuleset& ruleset) {
    std::vector<VXHighlightedLine> out;
    VXContext context = rootContextForRuleset(ruleset);
    for (const VXTextLine& line : splitTextLines(text)) {
        VXHighlightedLine highlighted{line, context, {}};
        const VXSyntaxLine subject{text.substr(line.start, line.length), line.contentLength, line.start};
        context = literalParseLine(context, subject, highlighted.events, ruleset);
        out.push_back(std::move(highlighted));
    }
    return out;
}

BundledLanguages::BundledLanguages() {
    catalog.loadTruffleDirectories({std::string(VX_SOURCE_DIR) + "/truffles"});
    catalog.attachTo(manager);
}

std::string BundledLanguages::samplesDirectory() { return std::string(VX_SOURCE_DIR) + "/tests/data/syntax"; }

std::vector<BundledLanguages::Sample> BundledLanguages::samples() {
    namespace fs = std::filesystem;
    std::vector<Sample> out;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(samplesDirectory(), error)) {
        const fs::path path = entry.path();
        if (!entry.is_regular_file() || !fs::is_regular_file(path.string() + ".scopes", error)) continue;
        Sample sample{path.string(), utf16FromUtf8(*readWholeFile(path.string()))};
        sample.language = catalog.languageNamed(path.parent_path().filename().string());
        if (!sample.language) sample.language = catalog.detectLanguageForFilePath(sample.path, sample.text);
        if (sample.language) sample.ruleset = manager.rulesetForLanguage(sample.language->folderName);
        out.push_back(std::move(sample));
    }
    return out;
}

}  // namespace vx::test
