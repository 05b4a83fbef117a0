// Importing property-list themes (.tmTheme) as other editors write them: the first settings entry
// without a scope holds the editor colours and the default style; every other entry becomes a
// zone whose selector is its scope text.
#include <sstream>

#include "platform/file_cache.hpp"
#include "platform/property_list.hpp"
#include "selectors/theme.hpp"

namespace vx {
namespace {

std::optional<VXColor> colorSetting(const PropertyValue& settings, std::string_view key) {
    const PropertyValue* value = settings.find(key);
    if (!value || !value->string()) return std::nullopt;
    return colorFromThemeString(*value->string());
}

std::string stringSetting(const PropertyValue& entry, std::string_view key) {
    const PropertyValue* value = entry.find(key);
    return value && value->string() ? *value->string() : std::string();
}

}  // namespace

std::shared_ptr<VXTheme> VXTheme::initWithTextmateThemePath(const std::string& path) {
    auto theme = std::make_shared<VXTheme>();
    theme->themePath = path;
    auto plist = readPropertyListFile(path);
    if (!plist) {
        theme->appendBuiltInZones();
        return theme;
    }
    theme->themeName = stringSetting(*plist, "name");
    theme->themeAuthor = stringSetting(*plist, "author");
    const PropertyValue* entries = plist->find("settings");
    if (!entries || !entries->array()) {
        theme->appendBuiltInZones();
        return theme;
    }

    bool haveDefaults = false;
    for (const auto& entry : *entries->array()) {
        const PropertyValue* settings = entry.find("settings");
        if (!settings || !settings->dictionary()) continue;
        const std::string scope = stringSetting(entry, "scope");
        if (scope.empty() && !haveDefaults) {
            haveDefaults = true;
            theme->selectionColor = colorSetting(*settings, "selection").value_or(VXColor::selectedTextBackgroundColor());
            theme->currentLineColor = colorSetting(*settings, "lineHighlight").value_or(VXColor::lightGrayColor());
            theme->caretColor = colorSetting(*settings, "caret").value_or(VXColor::blackColor());
            theme->invisiblesColor = colorSetting(*settings, "invisibles").value_or(VXColor::grayColor());
            theme->allZone->selectionColor = theme->selectionColor;
            theme->allZone->currentLineColor = theme->currentLineColor;
            theme->allZone->caretColor = theme->caretColor;
            theme->allZone->invisiblesColor = theme->invisiblesColor;
            theme->defaultZone->setSelectorString(std::nullopt);
            theme->defaultZone->foregroundColor = colorSetting(*settings, "foreground");
            theme->defaultZone->backgroundColor = colorSetting(*settings, "background");
            theme->zonesArray.insert(theme->zonesArray.begin(), theme->defaultZone);
            continue;
        }
        if (scope.empty()) continue;
        auto zone = std::make_shared<VXThemeZone>();
        zone->setSelectorString(scope);
        zone->name = stringSetting(entry, "name");
        zone->foregroundColor = colorSetting(*settings, "foreground");
        zone->backgroundColor = colorSetting(*settings, "background");
        std::istringstream styles(stringSetting(*settings, "fontStyle"));
        for (std::string style; styles >> style;) {
            if (style == "bold") zone->bold = true;
            if (style == "italic") zone->italic = true;
            if (style == "underline") zone->underline = true;
            if (style == "strikethrough") zone->strikethrough = true;
        }
        theme->zones[zone->selectorString()] = zone;
        theme->zonesArray.push_back(std::move(zone));
    }
    theme->appendBuiltInZones();
    return theme;
}

}  // namespace vx
