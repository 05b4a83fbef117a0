#include "support/build_paths.hpp"
#include "languages/bundled_files.hpp"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace vx::test {

namespace {

SFONodePtr parseFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return nullptr;
    std::ostringstream text;
    text << in.rdbuf();
    return SFONode::nodeFromString(text.str());
}

}  // namespace

std::filesystem::path bundledTruffle() {
    return std::filesystem::path(VX_SOURCE_DIR) / "truffles" / "Base";
}

const std::vector<BundledLanguage>& bundledLanguages() {
    static const std::vector<BundledLanguage> languages = [] {
        std::vector<BundledLanguage> out;
        for (const auto& entry : std::filesystem::directory_iterator(bundledTruffle() / "Languages")) {
            if (!entry.is_directory()) continue;
            out.push_back({entry.path().filename().string(), entry.path(),
                           parseFile(entry.path() / "syntax.selfml"),
                           parseFile(entry.path() / "language.selfml")});
        }
        std::sort(out.begin(), out.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
        return out;
    }();
    return languages;
}

const BundledLanguage* findLanguage(const std::string& name) {
    for (const auto& language : bundledLanguages())
        if (language.name == name) return &language;
    return nullptr;
}

std::vector<SFONodePtr> lists(const SFONodePtr& node) {
    return node ? node->extractLists() : std::vector<SFONodePtr>{};
}

std::vector<std::string> strings(const SFONodePtr& node) {
    return node ? node->extractStrings() : std::vector<std::string>{};
}

}  // namespace vx::test
