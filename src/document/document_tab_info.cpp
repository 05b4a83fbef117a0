// The document's scoped settings and the tab information chosen from them when a file is opened
// or saved.
#include "document/default_detector.hpp"
#include "document/single_file_document.hpp"

namespace vx {

DocumentSettings VXSingleFileDocument::settings() const {
    return DocumentSettings(m_language.identifier, m_fileURL.value_or(std::string()),
                            m_settingsContexts.empty() ? DocumentSettings::defaultContexts() : m_settingsContexts);
}

std::optional<PropertyValue> VXSingleFileDocument::settingForKey(std::string_view key, int64_t* fromStratum) const {
    return settings().settingForKey(key, fromStratum);
}

void VXSingleFileDocument::setSetting(const PropertyValue& value, std::string_view key, bool languageSpecific) {
    settings().setSetting(value, key, languageSpecific);
}

std::optional<std::string> VXSingleFileDocument::defaultDetectorLanguage() const {
    if (!m_fileURL) return std::nullopt;
    return VXDefaultDetector::sharedDetector().languageForPath(*m_fileURL);
}

void VXSingleFileDocument::setUpTabInfoWithDDLang(const std::optional<std::string>& language) {
    setTabInfo(tabInfoForText(m_contents->string(), m_indentation, settings(), language));
}

}  // namespace vx
