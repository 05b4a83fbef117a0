// The document's scoped settings and the tab information chosen from them when a file is opened
// or saved.
#include "document/default_detector.hpp"
#include "document/single_file_document.hpp"
#include "document/tab_setup.hpp"
#include "document/tabdetection.hpp"

namespace vx {
namespace {

// Detection over the document a block of whole lines at a time (about 64K units), so that opening
// a large file never holds a second copy of its text.
TabDetectionResult detectIndentation(const VXTextStorage& text) {
    constexpr uint64_t kBlock = 1 << 16;
    uint64_t position = 0;
    std::u16string block;
    return detectInPieces([&]() -> std::u16string_view {
        const uint64_t length = text.length();
        if (position >= length) return {};
        block.clear();
        uint64_t end = position;
        for (;;) {
            const uint64_t take = std::min<uint64_t>(kBlock, length - end);
            block += text.substring({end, take});
            end += take;
            if (end == length) break;
            const auto lastLineFeed = block.rfind(u'\n');
            if (lastLineFeed != std::u16string::npos) {
                block.resize(lastLineFeed + 1);
                end = position + block.size();
                break;
            }
        }
        position = end;
        return block;
    });
}

}  // namespace

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
    setTabInfo(resolveIndentation(m_indentation, detectIndentation(*m_contents), settings().tabSettings(), language));
}

}  // namespace vx
