// The languages the program knows: read from truffles, and chosen for a file.
//
//     <truffles>/<Truffle>/info.selfml                      (name ...) (scope ...)
//     <truffles>/<Truffle>/Languages/<Language>/syntax.selfml     the definition
//     <truffles>/<Truffle>/Languages/<Language>/language.selfml   the language's own settings:
//         (name <display name>) (name-glob <glob>...) (content-regex <regex>) (tab-size <n>)
//         (soft-tabs yes|no) (comment (line <s>) (start <s>) (end <s>)) (pairs (pair <open> <close>)...)
//
// The language folder's name is the language's name, from which its identifier (and the
// suffix of its zones' scopes) is made. Bundled truffles come first in the search, then the
// user's; a user language with the identifier of a bundled one replaces it. Plain text ("txt")
// exists even when no truffle defines it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "syntax/ruleset.hpp"
#include "syntax/zone_manager.hpp"

namespace vx {

struct VXLanguage {
    std::string name;        // display name
    std::string folderName;  // the language's name for identifiers and includes
    std::string identifier;
    std::string truffleName;
    std::string truffleScope;
    std::string syntaxPath;  // empty for the built-in plain text
    std::vector<std::string> nameGlobs;
    std::string contentRegex;
    std::optional<int> tabSize;
    std::optional<bool> softTabs;
    std::string lineComment, blockCommentStart, blockCommentEnd;
    std::vector<std::pair<std::string, std::string>> pairs;
};

class VXLanguageCatalog {
public:
    // Bundled and user truffles, read once; its loader is installed in the shared manager.
    static VXLanguageCatalog& sharedCatalog();
    // How much of the head of a text (UTF-16 units) the content rules of detection look at.
    static constexpr size_t kDetectionHeadLength = 500;

    VXLanguageCatalog() = default;
    // Reads every truffle under each folder, in order (later folders replace languages of
    // earlier ones with the same identifier), then adds plain text unless a truffle has it.
    void loadTruffleDirectories(const std::vector<std::string>& directories);

    const std::vector<VXLanguage>& allLanguages() const { return m_languages; }
    // By display name, folder name or identifier, compared after normalizeLanguageName.
    const VXLanguage* languageNamed(std::string_view name) const;
    const VXLanguage* plainText() const { return languageNamed("txt"); }

    // The ruleset of a language (nothing when its file cannot be read); not yet registered.
    std::unique_ptr<VXSyntaxRuleset> makeRuleset(const VXLanguage& language, VXSyntaxZoneManager& manager) const;
    // Makes `manager` load languages from this catalogue on demand.
    void attachTo(VXSyntaxZoneManager& manager) const;
    // The language's ruleset from the shared manager, loading it when needed.
    VXSyntaxRuleset* rulesetForLanguage(const VXLanguage& language) const;

    // Extension (or whole file name) -> language name, as the user set it; replaces what the
    // user defaults hold under "VXLanguageForExtension".
    void setUserDefinedLanguages(std::map<std::string, std::string> byExtension);
    const VXLanguage* userDefinedLanguageForExtension(const std::string& extension) const;

    // Chooses a language for a file; see the README for the order of the rules.
    const VXLanguage* detectLanguageForFilePath(const std::string& path, std::u16string_view contents) const;

private:
    const VXLanguage* detect(const std::string& path, std::u16string_view contents, bool consultSiblings) const;

    std::vector<VXLanguage> m_languages;
    std::optional<std::map<std::string, std::string>> m_userLanguages;
};

// The path's extension (lower-cased, without the dot), or the whole file name when it has none.
std::string pathExtensionOrFilename(const std::string& path);

}  // namespace vx
