#include "app/editor/theme_colors.hpp"

#include <algorithm>
#include <cmath>

#include "platform/user_defaults.hpp"

namespace vx::editor {
namespace {

uint8_t channel(double value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

// `a` moved towards `b` by `amount` (0..1).
tui::Color mix(tui::Color a, tui::Color b, double amount) {
    auto step = [amount](uint8_t x, uint8_t y) { return static_cast<uint8_t>(std::lround(x + (y - x) * amount)); };
    return tui::Color::rgb(step(a.r, b.r), step(a.g, b.g), step(a.b, b.b));
}

}  // namespace

tui::Color terminalColor(const VXColor& color, tui::Color beneath) {
    if (color.alpha <= 0) return beneath;
    tui::Color solid = tui::Color::rgb(channel(color.red), channel(color.green), channel(color.blue));
    if (color.alpha >= 1 || beneath.kind != tui::Color::Kind::Rgb) return solid;
    return mix(beneath, solid, color.alpha);
}

ThemeStyler::ThemeStyler(std::shared_ptr<VXTheme> theme) : m_theme(std::move(theme)) {
    if (m_theme->defaultZone) m_textBackground = m_theme->attributesForZone(m_theme->defaultZone).background;
}

tui::Style ThemeStyler::styleFor(const VXContext& context, const tui::Style& base) const {
    VXAttrDict attributes = m_theme->attributesForZone(m_theme->zoneForContext(context));
    tui::Style style = base;
    style.foreground = terminalColor(attributes.foreground, base.foreground);
    if (!(attributes.background == m_textBackground)) style.background = terminalColor(attributes.background, base.background);
    if (attributes.bold) style.attributes |= tui::kBold;
    if (attributes.italic) style.attributes |= tui::kItalic;
    if (attributes.underline) style.attributes |= tui::kUnderline;
    if (attributes.strikethrough) style.attributes |= tui::kStrikethrough;
    return style;
}

EditorColors colorsFromTheme(VXTheme& theme) {
    EditorColors c = defaultColors();
    if (theme.defaultZone) {
        VXAttrDict text = theme.attributesForZone(theme.defaultZone);
        c.text.background = terminalColor(text.background, c.text.background);
        c.text.foreground = terminalColor(text.foreground, c.text.foreground);
    }
    tui::Color background = c.text.background, foreground = c.text.foreground;
    tui::Color current = theme.currentLineColor ? terminalColor(*theme.currentLineColor, background) : mix(background, foreground, 0.06);
    c.selection = theme.selectionColor ? terminalColor(*theme.selectionColor, background) : mix(background, foreground, 0.25);
    c.currentLine = current;
    tui::Color invisibles = theme.invisiblesColor ? terminalColor(*theme.invisiblesColor, background) : mix(background, foreground, 0.3);
    c.invisibles = {invisibles, background, 0};
    c.gutter = {mix(background, foreground, 0.4), background, 0};
    c.gutterCurrent = {mix(background, foreground, 0.75), current, 0};
    c.tabBar = {mix(background, foreground, 0.6), mix(background, foreground, 0.1), 0};
    c.tabActive = {foreground, background, tui::kBold};
    c.statusBar = {foreground, mix(background, foreground, 0.2), 0};
    c.message = {foreground, background, 0};
    c.error.background = background;
    c.dialog = {foreground, mix(background, foreground, 0.12), 0};
    c.dialogTitle.background = c.dialog.background;
    c.dialogFocus = {background, foreground, tui::kBold};
    return c;
}

std::shared_ptr<VXTheme> loadUserTheme() {
    std::string name = UserDefaults::standardUserDefaults().stringForKey("VXTheme");
    if (!name.empty())
        if (auto theme = loadTheme(name)) return theme;
    return loadTheme(kDefaultThemeName);
}

}  // namespace vx::editor
