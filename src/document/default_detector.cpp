#include "document/default_detector.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <utility>

namespace vx {
namespace {

std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

// Extensions whose language is beyond doubt. Names are the language names of the bundled
// definitions, so that a language's defaults apply even before its definition is loaded.
constexpr std::pair<std::string_view, std::string_view> kExtensionLanguages[] = {
    {"c", "C"},          {"h", "C"},          {"cc", "C++"},        {"cpp", "C++"},      {"cxx", "C++"},
    {"hh", "C++"},       {"hpp", "C++"},      {"m", "Objective-C"}, {"mm", "Objective-C++"},
    {"css", "CSS"},      {"go", "Go"},        {"htm", "HTML"},      {"html", "HTML"},    {"java", "Java"},
    {"js", "JavaScript"}, {"json", "JSON"},   {"md", "Markdown"},   {"markdown", "Markdown"},
    {"php", "PHP"},      {"pl", "Perl"},      {"py", "Python"},     {"rb", "Ruby"},      {"gemfile", "Ruby"},
    {"rakefile", "Ruby"}, {"rs", "Rust"},     {"sh", "Shell"},      {"bash", "Shell"},   {"selfml", "self-ml"},
    {"txt", "Plain Text"}, {"xml", "XML"},    {"yaml", "YAML"},     {"yml", "YAML"},
};

}  // namespace

VXDefaultDetector& VXDefaultDetector::sharedDetector() {
    static VXDefaultDetector detector;
    return detector;
}

int64_t VXDefaultDetector::tabSizeForLanguage(const std::string& languageName) {
    // Both communities indent by two spaces almost without exception.
    if (languageName == "Ruby" || languageName == "YAML") return 2;
    return -1;
}

int64_t VXDefaultDetector::usesSpacesForLanguage(const std::string&) { return -1; }

std::optional<std::string> VXDefaultDetector::languageForExtension(const std::string& extension) const {
    std::string key = lowercased(extension);
    {
        std::lock_guard lock(m_mutex);
        if (auto it = m_recorded.find(key); it != m_recorded.end()) return it->second;
    }
    for (auto [known, language] : kExtensionLanguages)
        if (known == key) return std::string(language);
    return std::nullopt;
}

std::optional<std::string> VXDefaultDetector::languageForPath(const std::string& path) const {
    if (path.empty()) return std::nullopt;
    return languageForExtension(extensionOrFileName(path));
}

void VXDefaultDetector::recordLanguage(const std::string& languageName, const std::string& extension) {
    if (extension.empty() || languageName.empty()) return;
    std::lock_guard lock(m_mutex);
    m_recorded[lowercased(extension)] = languageName;
}

std::string extensionOrFileName(const std::string& path) {
    std::filesystem::path file = std::filesystem::path(path).filename();
    std::string extension = file.extension().string();
    return lowercased(extension.size() > 1 ? extension.substr(1) : file.string());
}

}  // namespace vx
