// The editor in the colours of a theme: each zone's colours and traits, and the editor colours
// (text, selection, current line, invisibles) from the theme's defaults. The theme is chosen by
// the user default "VXTheme" (a bundled or user theme's name, or a path); "Nightfall" otherwise.
#pragma once

#include <memory>
#include <string>

#include "app/editor/colors.hpp"
#include "app/editor/highlighting.hpp"
#include "selectors/theme.hpp"

namespace vx::editor {

inline constexpr const char* kDefaultThemeName = "Nightfall";

// A theme colour on the terminal: its alpha blended over `beneath`.
tui::Color terminalColor(const VXColor& color, tui::Color beneath);

class ThemeStyler final : public ScopeStyler {
public:
    explicit ThemeStyler(std::shared_ptr<VXTheme> theme);
    tui::Style styleFor(const VXContext& context, const tui::Style& base) const override;

private:
    std::shared_ptr<VXTheme> m_theme;
    // The text's own background: a zone that merely repeats it keeps the background beneath
    // (the current line's, a selection's), so that highlighted lines show no stripes.
    VXColor m_textBackground = VXColor::clearColor();
};

// The editor colours of a theme, derived where it has none (bars and gutter from its text colours).
EditorColors colorsFromTheme(VXTheme& theme);

// The theme the user chose; null when it cannot be loaded.
std::shared_ptr<VXTheme> loadUserTheme();

}  // namespace vx::editor
