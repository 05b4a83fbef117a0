// How a document reads and writes the scoped settings: through its extension and its language.
//
//     a document "lib/Parser.RB" of language "source.ruby"
//       extension context  {"__extension__": "rb"}           (level 2)
//       language context   {"__language__": "source.ruby"}   (level 1)
//
// Reading a key asks each settings context for the extension value first, then the language
// value, then for any value at all (reported as level 0). Writing a key language-specifically
// stores it for the extension and the language, and always also as the global value, so that a
// change made in one file becomes the default for files of other languages as well.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/indentation_context.hpp"
#include "document/tab_setup.hpp"
#include "platform/property_list.hpp"
#include "settings/settings_context.hpp"

namespace vx {

class DocumentSettings {
public:
    using Dictionary = VXSettingsContext::Dictionary;

    // The settings contexts of every document: the application's global one alone.
    static std::vector<VXSettingsContext*> defaultContexts();

    // `path` is empty for a document without a file; `languageIdentifier` may be empty too.
    DocumentSettings(std::string languageIdentifier, std::string path,
                     std::vector<VXSettingsContext*> contexts = defaultContexts());

    const std::vector<VXSettingsContext*>& settingsContexts() const { return m_contexts; }
    std::optional<Dictionary> languageContext() const;
    std::optional<Dictionary> extensionContext() const;

    // The value and the level it came from (2 extension, 1 language, 0 anything else).
    std::optional<PropertyValue> settingForKey(std::string_view key, int64_t* fromStratum = nullptr) const;
    void setSetting(const PropertyValue& value, std::string_view key, bool languageSpecific) const;

    // "VXTabSize" and "VXUseSoftTabs" as the tab set-up wants them.
    TabSettings tabSettings() const;

private:
    std::string m_languageIdentifier, m_path;
    std::vector<VXSettingsContext*> m_contexts;
};

// The indentation a document with this text should use: detection over the text, combined with
// the scoped settings and the defaults of `defaultDetectorLanguage` (the language the default
// detector gives the file's extension).
VXIndentationContext tabInfoForText(std::u16string_view text, const VXIndentationContext& current,
                                    const DocumentSettings& settings,
                                    const std::optional<std::string>& defaultDetectorLanguage);

// A plain preference outside the settings contexts: the user-defaults integer under the key (0 when absent).
int64_t get_setting(std::string_view key);

}  // namespace vx
