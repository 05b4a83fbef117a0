#include "syntax/language_catalog.hpp"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/paths.hpp"
#include "platform/user_defaults.hpp"
#include "syntax/language_name.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/regex.hpp"

namespace vx {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> sortedSubdirectories(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (it->is_directory(error)) found.push_back(it->path());
    std::sort(found.begin(), found.end());
    return found;
}

VXLanguage readLanguage(const fs::path& folder, const std::string& truffleName, const std::string& truffleScope) {
    VXLanguage language;
    language.folderName = folder.filename().string();
    language.name = language.folderName;
    language.identifier = languageIdentifierFromName(language.folderName);
    language.truffleName = truffleName;
    language.truffleScope = truffleScope;
    language.syntaxPath = (folder / "syntax.selfml").string();

    auto settings = SFONode::nodeWithContentsOfFile((folder / "language.selfml").string());
    // A display name may be written as several words: (name Plain Text).
    if (auto name = settings->nodeForKey("name")) {
        std::string joined;
        for (const auto& word : name->extractStrings()) joined += (joined.empty() ? "" : " ") + word;
        if (!joined.empty()) language.name = joined;
    }
    for (const auto& globs : settings->extract("name-glob"))
        for (const auto& glob : globs->extractStrings()) language.nameGlobs.push_back(glob);
    if (auto regex = settings->valueForKey("content-regex")) language.contentRegex = *regex;
    if (auto tabSize = settings->valueForKey("tab-size")) {
        const int size = std::atoi(tabSize->c_str());
        if (size >= 1 && size <= 18) language.tabSize = size;
    }
    if (auto softTabs = settings->valueForKey("soft-tabs")) language.softTabs = *softTabs == "yes" || *softTabs == "true";
    if (auto comment = settings->nodeForKey("comment")) {
        language.lineComment = comment->valueForKey("line").value_or("");
        language.blockCommentStart = comment->valueForKey("start").value_or("");
        language.blockCommentEnd = comment->valueForKey("end").value_or("");
    }
    if (auto pairs = settings->nodeForKey("pairs")) {
        for (const auto& pair : pairs->extract("pair")) {
            const auto strings = pair->extractStrings();
            if (strings.size() >= 2) language.pairs.emplace_back(strings[0], strings[1]);
        }
    }
    return language;
}

bool globMatches(const std::string& glob, const std::string& fileName) {
    return fnmatch(glob.c_str(), fileName.c_str(), FNM_CASEFOLD) == 0;
}

bool contentMatches(const VXLanguage& language, std::u16string_view head) {
    if (language.contentRegex.empty()) return false;
    auto regex = VXRegex::compile(utf16FromUtf8(language.contentRegex));
    if (!regex) return false;
    auto region = makeRegion();
    return regex->search(head, 0, head.size(), region.get()).has_value();
}

}  // namespace

std::string pathExtensionOrFilename(const std::string& path) {
    const fs::path standardized = fs::path(path).lexically_normal();
    std::string extension = standardized.extension().string();
    std::string key = extension.size() > 1 ? extension.substr(1) : standardized.filename().string();
    for (char& c : key)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return key;
}

VXLanguageCatalog& VXLanguageCatalog::sharedCatalog() {
    static VXLanguageCatalog* catalog = [] {
        auto* shared = new VXLanguageCatalog();  // lives for the whole process, like the manager
        shared->loadTruffleDirectories({bundledTrufflesDirectory(), userTrufflesDirectory()});
        shared->attachTo(VXSyntaxZoneManager::sharedManager());
        return shared;
    }();
    return *catalog;
}

void VXLanguageCatalog::loadTruffleDirectories(const std::vector<std::string>& directories) {
    for (const auto& directory : directories) {
        for (const fs::path& truffle : sortedSubdirectories(directory)) {
            auto info = SFONode::nodeWithContentsOfFile((truffle / "info.selfml").string());
            const std::string truffleName = info->valueForKey("name").value_or(truffle.filename().string());
            const std::string truffleScope = info->valueForKey("scope").value_or("");
            for (const fs::path& folder : sortedSubdirectories(truffle / "Languages")) {
                std::error_code error;
                if (!fs::is_regular_file(folder / "syntax.selfml", error)) continue;
                VXLanguage language = readLanguage(folder, truffleName, truffleScope);
                auto same = std::find_if(m_languages.begin(), m_languages.end(),
                                         [&](const VXLanguage& known) { return known.identifier == language.identifier; });
                if (same != m_languages.end()) *same = std::move(language);
                else m_languages.push_back(std::move(language));
            }
        }
    }
    if (!languageNamed("txt")) {
        VXLanguage plain;
        plain.name = "Plain Text";
        plain.folderName = "txt";
        plain.identifier = "txt";
        plain.nameGlobs = {"*.txt"};
        m_languages.push_back(std::move(plain));
    }
}

const VXLanguage* VXLanguageCatalog::languageNamed(std::string_view name) const {
    const auto wanted = normalizeLanguageName(name);
    if (!wanted) return nullptr;
    for (const auto& language : m_languages) {
        for (const std::string* candidate : {&language.identifier, &language.folderName, &language.name})
            if (normalizeLanguageName(*candidate) == wanted) return &language;
    }
    return nullptr;
}

std::unique_ptr<VXSyntaxRuleset> VXLanguageCatalog::makeRuleset(const VXLanguage& language,
                                                                VXSyntaxZoneManager& manager) const {
    if (language.syntaxPath.empty()) return VXSyntaxRuleset::emptyRuleset(language.folderName, "text.plain", manager);
    return VXSyntaxRuleset::rulesetWithContentsOfFile(language.syntaxPath, language.folderName, language.truffleScope,
                                                      manager);
}

void VXLanguageCatalog::attachTo(VXSyntaxZoneManager& manager) const {
    manager.setLanguageLoader([this](const std::string& name, VXSyntaxZoneManager& into) -> std::unique_ptr<VXSyntaxRuleset> {
        const VXLanguage* language = languageNamed(name);
        return language ? makeRuleset(*language, into) : nullptr;
    });
}

VXSyntaxRuleset* VXLanguageCatalog::rulesetForLanguage(const VXLanguage& language) const {
    return VXSyntaxZoneManager::sharedManager().rulesetForLanguage(language.folderName);
}

void VXLanguageCatalog::setUserDefinedLanguages(std::map<std::string, std::string> byExtension) {
    m_userLanguages = std::move(byExtension);
}

const VXLanguage* VXLanguageCatalog::userDefinedLanguageForExtension(const std::string& extension) const {
    if (m_userLanguages) {
        auto it = m_userLanguages->find(extension);
        return it == m_userLanguages->end() ? nullptr : languageNamed(it->second);
    }
    auto mapping = UserDefaults::standardUserDefaults().objectForKey("VXLanguageForExtension");
    if (!mapping) return nullptr;
    const PropertyValue* value = mapping->find(extension);
    return value && value->string() ? languageNamed(*value->string()) : nullptr;
}

const VXLanguage* VXLanguageCatalog::detectLanguageForFilePath(const std::string& path,
                                                               std::u16string_view contents) const {
    return detect(path, contents, true);
}

// The order of the rules (documented in the README):
//   1. the user's own choice for the extension (or the whole file name);
//   2. the languages whose name-glob matches the file name;
//   3. when that leaves none or several, the head of the text: languages whose content-regex
//      it matches (among the glob matches when there are any) narrow the choice;
//   4. several left: the languages of sibling files with the same base name vote;
//   5. still several: the first in catalogue order; none: plain text.
const VXLanguage* VXLanguageCatalog::detect(const std::string& path, std::u16string_view contents,
                                            bool consultSiblings) const {
    const std::string key = pathExtensionOrFilename(path);
    if (const VXLanguage* chosen = userDefinedLanguageForExtension(key)) return chosen;

    const std::string fileName = fs::path(path).filename().string();
    std::vector<const VXLanguage*> candidates;
    for (const auto& language : m_languages)
        for (const auto& glob : language.nameGlobs)
            if (globMatches(glob, fileName)) {
                candidates.push_back(&language);
                break;
            }

    if (candidates.size() != 1) {
        const std::u16string_view head = contents.substr(0, std::min(contents.size(), kDetectionHeadLength));
        std::vector<const VXLanguage*> byContent;
        if (candidates.empty()) {
            for (const auto& language : m_languages)
                if (contentMatches(language, head)) byContent.push_back(&language);
        } else {
            for (const VXLanguage* language : candidates)
                if (contentMatches(*language, head)) byContent.push_back(language);
        }
        if (!byContent.empty()) candidates = std::move(byContent);
    }

    if (candidates.size() > 1 && consultSiblings) {
        const fs::path file(path);
        const std::string stem = file.stem().string();
        std::vector<std::pair<const VXLanguage*, int>> votes;
        std::error_code error;
        std::vector<fs::path> siblings;
        for (fs::directory_iterator it(file.has_parent_path() ? file.parent_path() : fs::path("."), error), end;
             !error && it != end; it.increment(error))
            if (it->path().filename() != file.filename() && it->path().stem().string() == stem) siblings.push_back(it->path());
        std::sort(siblings.begin(), siblings.end());
        for (const auto& sibling : siblings) {
            const VXLanguage* language = detect(sibling.string(), {}, false);
            if (!language) continue;
            // A header beside Objective-C++ sources is Objective-C++ even when only Objective-C
            // claims headers.
            if (normalizeLanguageName(language->identifier) == "objc++") {
                for (const VXLanguage* candidate : candidates)
                    if (normalizeLanguageName(candidate->identifier) == "objc") return language;
            }
            if (std::find(candidates.begin(), candidates.end(), language) == candidates.end()) continue;
            auto vote = std::find_if(votes.begin(), votes.end(), [&](const auto& v) { return v.first == language; });
            if (vote == votes.end()) votes.emplace_back(language, 1);
            else ++vote->second;
        }
        if (!votes.empty())
            return std::max_element(votes.begin(), votes.end(), [](const auto& a, const auto& b) { return a.second < b.second; })->first;
    }
    if (!candidates.empty()) return candidates.front();
    // Nothing matched: a ".txt" file is plain text; anything else is looked at once more as if
    // it were one (which lets a user's choice for "txt" apply).
    if (key == "txt") return plainText();
    return detect(path + ".txt", contents, consultSiblings);
}

}  // namespace vx
