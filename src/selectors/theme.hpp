// VXTheme: how text looks. A default style, four editor colours and an ordered list of zone
// styles, each attached to a scope selector; for every scope stack the theme picks one zone by
// scoring the selectors (ties go to the zone that comes first).
//
//     (!default (color #ddd) (background #222) (selection #444) (caret white))
//     (apply [comment] Comment (color #888) (italic))
//     (apply [string - string.regexp] String (color rgb(160, 200, 120)))
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "selectors/color.hpp"
#include "selectors/selector.hpp"
#include "selfml/sfonode.hpp"

namespace vx {

class VXThemeZone {
public:
    enum class Kind { Zone, Default, All };

    explicit VXThemeZone(Kind kind = Kind::Zone) : m_kind(kind) {}

    Kind kind() const { return m_kind; }
    // Compiles the text (nothing compiles the empty selector, which scores 1 everywhere).
    void setSelectorString(const std::optional<std::string>& text);
    const VXSelector* selector() const { return m_selector; }
    const std::string& selectorString() const { return m_selectorString; }

    std::string name;
    // Absent colours draw as the clear colour: the text keeps the colour beneath it.
    std::optional<VXColor> foregroundColor, backgroundColor;
    bool bold = false, italic = false, underline = false, strikethrough = false;
    // The editor-wide colours, carried by the theme's "all" zone.
    std::optional<VXColor> selectionColor, currentLineColor, caretColor, invisiblesColor;

private:
    Kind m_kind;
    const VXSelector* m_selector = nullptr;
    std::string m_selectorString;
};

using VXThemeZonePtr = std::shared_ptr<VXThemeZone>;

// The text attributes a zone gives: what a renderer needs, colours resolved.
struct VXAttrDict {
    VXColor foreground = VXColor::clearColor();
    VXColor background = VXColor::clearColor();
    bool bold = false, italic = false, underline = false, strikethrough = false;
    friend bool operator==(const VXAttrDict&, const VXAttrDict&) = default;
};

class VXTheme {
public:
    VXTheme();
    // Reads a theme file (self-ml); a file that does not read leaves the theme empty.
    static std::shared_ptr<VXTheme> initWithThemePath(const std::string& path);
    // Imports a property-list theme of the kind other editors use (.tmTheme).
    static std::shared_ptr<VXTheme> initWithTextmateThemePath(const std::string& path);

    void parseSFOThemeFileAtPath(const std::string& path);
    void parseSFONode(const SFONodePtr& root);
    void handleSFOApplication(const SFONodePtr& node, VXThemeZone& zone);
    std::optional<VXColor> handleSFOColor(const SFONodePtr& node);

    // The zone that styles a context; cached by the context's scopes. Safe from any thread.
    VXThemeZonePtr zoneForContext(const VXContext& context);
    VXThemeZonePtr zoneForSelector(const VXSelector* selector) const;
    VXAttrDict attributesForZone(const VXThemeZonePtr& zone);

    std::string themeName, themeAuthor, themeAuthorEmail, themeAuthorWebsite, themePath;
    bool isEditable = false, isModified = false;
    VXThemeZonePtr defaultZone, allZone;
    std::vector<VXThemeZonePtr> zonesArray;
    std::unordered_map<std::string, VXThemeZonePtr> zones;
    std::unordered_map<std::string, std::string> themeSettings;
    std::optional<VXColor> selectionColor, currentLineColor, caretColor, invisiblesColor;

    // bold, italic and underline, appended last: text scoped so looks so unless an earlier zone
    // scores at least as high.
    void appendBuiltInZones();

private:
    VXThemeZonePtr computeZoneForContext(const VXContext& context) const;
    void appendZone(const SFONodePtr& node);


    std::mutex m_cacheMutex;
    std::unordered_map<const VXThemeZone*, VXAttrDict> m_attributesCache;
    std::unordered_map<std::string, VXThemeZonePtr> m_contextZoneCache;
};

// Themes by name: the bundled truffles' Themes folders, then the user's (a user theme of the same
// name wins). A name is the file name without its extension (.selfml or .tmTheme).
std::vector<std::pair<std::string, std::string>> availableThemes();
// A theme by name or by path; null when there is no such theme.
std::shared_ptr<VXTheme> loadTheme(const std::string& nameOrPath);

}  // namespace vx
