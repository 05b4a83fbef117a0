#include "document/tab_setup.hpp"

#include "document/default_detector.hpp"

namespace vx {
namespace {

// Set for the file's extension or its language rather than for every file.
bool isSpecific(int64_t stratum) { return stratum > 0; }

bool isTrustedWidth(int64_t width) { return width == 2 || width == 3 || width == 4 || width == 6 || width == 8; }

std::optional<uint64_t> chooseTabSize(const TabDetectionResult& detected, const TabSettings& settings,
                                      const std::optional<std::string>& language) {
    if (!detected.undecided && detected.usesSpaces && detected.widthConfidence > 0.8 && isTrustedWidth(detected.width))
        return uint64_t(detected.width);
    if (settings.tabSize && isSpecific(settings.tabSizeStratum) && *settings.tabSize > 0) return uint64_t(*settings.tabSize);
    if (language) {
        int64_t size = VXDefaultDetector::tabSizeForLanguage(*language);
        if (size >= 1) return uint64_t(size);
    }
    if (settings.tabSize && *settings.tabSize > 0) return uint64_t(*settings.tabSize);
    return std::nullopt;
}

std::optional<bool> chooseSoftTabs(const TabDetectionResult& detected, const TabSettings& settings,
                                   const std::optional<std::string>& language) {
    if (!detected.undecided && detected.ratio > 0.8) return detected.usesSpaces != 0;
    if (!(settings.useSoftTabs && isSpecific(settings.useSoftTabsStratum))) {
        if (language) {
            int64_t spaces = VXDefaultDetector::usesSpacesForLanguage(*language);
            if (spaces == 0 || spaces == 1) return spaces == 1;  // -1: no opinion
        }
        return settings.useSoftTabs;
    }
    return settings.useSoftTabs;
}

}  // namespace

VXIndentationContext resolveIndentation(const VXIndentationContext& current, const TabDetectionResult& detected,
                                        const TabSettings& settings, const std::optional<std::string>& language) {
    std::optional<std::string> known = language && !language->empty() ? language : std::nullopt;
    VXIndentationContext context = current;
    if (auto size = chooseTabSize(detected, settings, known)) context.tabSize = *size;
    if (auto soft = chooseSoftTabs(detected, settings, known)) context.useSoftTabs = *soft;
    return context;
}

}  // namespace vx
