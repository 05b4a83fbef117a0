#include "document/document_settings.hpp"

#include <utility>

#include "document/default_detector.hpp"
#include "platform/user_defaults.hpp"
#include "settings/user_defaults_settings_context.hpp"

namespace vx {

std::vector<VXSettingsContext*> DocumentSettings::defaultContexts() {
    return {&VXUserDefaultsSettingsContext::globalContext()};
}

DocumentSettings::DocumentSettings(std::string languageIdentifier, std::string path,
                                   std::vector<VXSettingsContext*> contexts)
    : m_languageIdentifier(std::move(languageIdentifier)), m_path(std::move(path)), m_contexts(std::move(contexts)) {}

std::optional<DocumentSettings::Dictionary> DocumentSettings::languageContext() const {
    if (m_languageIdentifier.empty()) return std::nullopt;
    return Dictionary{{std::string(VXSettingsContext::kLanguageKey), PropertyValue(m_languageIdentifier)}};
}

std::optional<DocumentSettings::Dictionary> DocumentSettings::extensionContext() const {
    if (m_path.empty()) return std::nullopt;
    return Dictionary{{std::string(VXSettingsContext::kExtensionKey), PropertyValue(extensionOrFileName(m_path))}};
}

std::optional<PropertyValue> DocumentSettings::settingForKey(std::string_view key, int64_t* fromStratum) const {
    const auto extension = extensionContext();
    const auto language = languageContext();
    for (VXSettingsContext* context : m_contexts) {
        if (extension) {
            if (auto value = context->valueForKey(key, VXSettingsContext::kExtensionStratum, &*extension)) {
                if (fromStratum) *fromStratum = VXSettingsContext::kExtensionStratum;
                return value;
            }
        }
        if (language) {
            if (auto value = context->valueForKey(key, VXSettingsContext::kLanguageStratum, &*language)) {
                if (fromStratum) *fromStratum = VXSettingsContext::kLanguageStratum;
                return value;
            }
        }
    }
    // Nothing for this file in particular: whatever the contexts hold, in their own order.
    for (VXSettingsContext* context : m_contexts) {
        if (auto value = context->valueForKey(key)) {
            if (fromStratum) *fromStratum = VXSettingsContext::kGlobalStratum;
            return value;
        }
    }
    return std::nullopt;
}

void DocumentSettings::setSetting(const PropertyValue& value, std::string_view key, bool languageSpecific) const {
    const auto extension = extensionContext();
    const auto language = languageContext();
    for (VXSettingsContext* context : m_contexts) {
        if (languageSpecific) {
            if (extension) context->setValue(value, key, VXSettingsContext::kExtensionStratum, &*extension);
            if (language) context->setValue(value, key, VXSettingsContext::kLanguageStratum, &*language);
        }
        // A language-specific change becomes the global value too, on purpose: what the user just
        // chose for one file is the best guess for files that have no setting of their own.
        context->setValue(value, key, VXSettingsContext::kGlobalStratum, nullptr);
    }
}

TabSettings DocumentSettings::tabSettings() const {
    TabSettings settings;
    int64_t stratum = 0;
    if (auto value = settingForKey("VXTabSize", &stratum)) {
        settings.tabSize = value->integerValue();
        settings.tabSizeStratum = stratum;
    }
    if (auto value = settingForKey("VXUseSoftTabs", &stratum)) {
        settings.useSoftTabs = value->boolValue();
        settings.useSoftTabsStratum = stratum;
    }
    return settings;
}

VXIndentationContext tabInfoForText(std::u16string_view text, const VXIndentationContext& current,
                                    const DocumentSettings& settings,
                                    const std::optional<std::string>& defaultDetectorLanguage) {
    return resolveIndentation(current, detect(text), settings.tabSettings(), defaultDetectorLanguage);
}

int64_t get_setting(std::string_view key) { return UserDefaults::standardUserDefaults().integerForKey(key); }

}  // namespace vx
