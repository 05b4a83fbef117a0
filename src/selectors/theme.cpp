#include "selectors/theme.hpp"

#include <filesystem>
#include <map>

#include "platform/paths.hpp"

namespace vx {

void VXThemeZone::setSelectorString(const std::optional<std::string>& text) {
    m_selectorString = text.value_or("");
    m_selector = VXSelector::compileString(m_selectorString);
}

VXTheme::VXTheme()
    : defaultZone(std::make_shared<VXThemeZone>(VXThemeZone::Kind::Default)),
      allZone(std::make_shared<VXThemeZone>(VXThemeZone::Kind::All)) {}

std::shared_ptr<VXTheme> VXTheme::initWithThemePath(const std::string& path) {
    auto theme = std::make_shared<VXTheme>();
    theme->parseSFOThemeFileAtPath(path);
    return theme;
}

void VXTheme::parseSFOThemeFileAtPath(const std::string& path) {
    themePath = path;
    themeName = std::filesystem::path(path).stem().string();
    parseSFONode(SFONode::nodeWithContentsOfFile(path));
}

// A colour node: (color red), (color #aabbcc80), (color (rgba 1 0 0 0.5)) or (rgba 1 0 0 0.5).
std::optional<VXColor> VXTheme::handleSFOColor(const SFONodePtr& node) {
    if (!node) return std::nullopt;
    auto first = node->first();
    if (first && first->isString()) return colorFromThemeString(first->string());
    if (first && first->isNode()) return colorFromComponents(first->node()->head(), first->node()->extractStrings());
    return colorFromComponents(node->head(), node->extractStrings());
}

void VXTheme::handleSFOApplication(const SFONodePtr& node, VXThemeZone& zone) {
    const auto strings = node->extractStrings();
    zone.setSelectorString(strings.empty() ? std::nullopt : std::optional<std::string>(strings[0]));
    zone.name = strings.size() > 1 ? strings[1] : std::string();
    zone.bold = node->nodeForKey("bold") != nullptr;
    zone.italic = node->nodeForKey("italic") != nullptr;
    zone.underline = node->nodeForKey("underline") != nullptr;
    zone.strikethrough = node->nodeForKey("strikethrough") != nullptr;
    zone.foregroundColor = handleSFOColor(node->nodeForKey("color"));
    zone.backgroundColor = handleSFOColor(node->nodeForKey("background"));
}

void VXTheme::appendZone(const SFONodePtr& node) {
    auto zone = std::make_shared<VXThemeZone>();
    handleSFOApplication(node, *zone);
    zones[zone->selectorString()] = zone;
    zonesArray.push_back(std::move(zone));
}

void VXTheme::parseSFONode(const SFONodePtr& root) {
    {
        std::lock_guard lock(m_cacheMutex);
        m_attributesCache.clear();
        m_contextZoneCache.clear();
    }
    zonesArray.clear();
    zones.clear();
    themeSettings.clear();
    if (!root) return;
    themeAuthor = root->valueForKey("author").value_or("");
    themeAuthorEmail = root->valueForKey("email").value_or("");
    themeAuthorWebsite = root->valueForKey("url").value_or("");
    allZone = std::make_shared<VXThemeZone>(VXThemeZone::Kind::All);

    if (auto defaults = root->nodeForKey("!default")) {
        selectionColor = handleSFOColor(defaults->nodeForKey("selection")).value_or(VXColor::selectedTextBackgroundColor());
        currentLineColor = handleSFOColor(defaults->nodeForKey("line-highlight")).value_or(VXColor::lightGrayColor());
        caretColor = handleSFOColor(defaults->nodeForKey("caret")).value_or(VXColor::blackColor());
        invisiblesColor = handleSFOColor(defaults->nodeForKey("invisibles")).value_or(VXColor::grayColor());
        allZone->selectionColor = selectionColor;
        allZone->currentLineColor = currentLineColor;
        allZone->caretColor = caretColor;
        allZone->invisiblesColor = invisiblesColor;
        handleSFOApplication(defaults, *defaultZone);
        zonesArray.push_back(defaultZone);
    }

    for (const auto& apply : root->extract("apply")) {
        const auto strings = apply->extractStrings();
        if (!strings.empty() && strings[0] == "invalid") continue;
        appendZone(apply);
    }
    appendBuiltInZones();
}

void VXTheme::appendBuiltInZones() {
    for (const char* flag : {"bold", "italic", "underline"}) {
        auto node = SFONode::nodeFromString(std::string("(zone ") + flag + " (" + flag + "))");
        appendZone(node->childAtIndex(0)->node());
    }
}

VXThemeZonePtr VXTheme::computeZoneForContext(const VXContext& context) const {
    const ContextScopes stack(context);
    VXThemeZonePtr best;
    BigUnsigned bestScore = 0;
    for (const auto& zone : zonesArray) {
        BigUnsigned score = zone->selector() ? zone->selector()->operateOnScopeStack(stack.scopes()) : BigUnsigned(0);
        if (score > bestScore) {
            bestScore = std::move(score);
            best = zone;
        }
    }
    return best ? best : defaultZone;
}

VXThemeZonePtr VXTheme::zoneForContext(const VXContext& context) {
    const std::string key = context.environmentString();
    {
        std::lock_guard lock(m_cacheMutex);
        if (auto found = m_contextZoneCache.find(key); found != m_contextZoneCache.end()) return found->second;
    }
    auto zone = computeZoneForContext(context);
    std::lock_guard lock(m_cacheMutex);
    m_contextZoneCache.emplace(key, zone);
    return zone;
}

VXThemeZonePtr VXTheme::zoneForSelector(const VXSelector* selector) const {
    if (!selector) return nullptr;
    auto found = zones.find(selector->originalString());
    return found == zones.end() ? nullptr : found->second;
}

VXAttrDict VXTheme::attributesForZone(const VXThemeZonePtr& zone) {
    if (!zone) return {};
    std::lock_guard lock(m_cacheMutex);
    if (auto found = m_attributesCache.find(zone.get()); found != m_attributesCache.end()) return found->second;
    VXAttrDict attributes;
    attributes.foreground = zone->foregroundColor.value_or(VXColor::clearColor());
    attributes.background = zone->backgroundColor.value_or(VXColor::clearColor());
    attributes.bold = zone->bold;
    attributes.italic = zone->italic;
    attributes.underline = zone->underline;
    attributes.strikethrough = zone->strikethrough;
    m_attributesCache.emplace(zone.get(), attributes);
    return attributes;
}

std::vector<std::pair<std::string, std::string>> availableThemes() {
    std::map<std::string, std::string> byName;
    std::vector<std::string> roots{bundledTrufflesDirectory(), userTrufflesDirectory()};
    std::error_code error;
    for (const auto& root : roots) {
        if (!std::filesystem::is_directory(root, error)) continue;
        for (const auto& truffle : std::filesystem::directory_iterator(root, error)) {
            const auto folder = truffle.path() / "Themes";
            if (!std::filesystem::is_directory(folder, error)) continue;
            for (const auto& file : std::filesystem::directory_iterator(folder, error)) {
                const auto extension = file.path().extension();
                if (extension == ".selfml" || extension == ".tmTheme") byName[file.path().stem().string()] = file.path().string();
            }
        }
    }
    return {byName.begin(), byName.end()};
}

std::shared_ptr<VXTheme> loadTheme(const std::string& nameOrPath) {
    std::string path;
    for (const auto& [name, themePath] : availableThemes())
        if (name == nameOrPath) path = themePath;
    std::error_code error;
    if (path.empty() && std::filesystem::is_regular_file(nameOrPath, error)) path = nameOrPath;
    if (path.empty()) return nullptr;
    if (std::filesystem::path(path).extension() == ".tmTheme") return VXTheme::initWithTextmateThemePath(path);
    return VXTheme::initWithThemePath(path);
}

}  // namespace vx
