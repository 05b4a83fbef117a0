// Turns frames into terminal output, sending only the cells that changed since the last frame.
//
// Colours go out as 24-bit SGR sequences, or mapped to the nearest entry of the 256-colour
// palette for terminals that do not claim 24-bit colour (COLORTERM=truecolor or 24bit).
// Each frame is wrapped in synchronized-update marks so terminals that know them show it whole.
#pragma once

#include <string>

#include "app/tui/screen.hpp"

namespace vx::tui {

enum class ColorMode { TrueColor, Palette256 };

// The mode the environment asks for.
ColorMode colorModeFromEnvironment();

// The xterm 256-colour palette entry nearest to an RGB colour (from the 6x6x6 cube or the greys).
uint8_t paletteIndex(uint8_t r, uint8_t g, uint8_t b);

// The SGR sequence that sets exactly this style from any previous one.
std::string sgrSequence(const Style& style, ColorMode mode);

class Renderer {
public:
    explicit Renderer(ColorMode mode = ColorMode::TrueColor) : m_mode(mode) {}

    // The bytes that take the terminal from the previous frame to `next`. The first frame, and
    // any after invalidate() or a change of size, repaints everything.
    std::string render(const Screen& next);
    void invalidate() { m_valid = false; }
    ColorMode colorMode() const { return m_mode; }

private:
    ColorMode m_mode;
    Screen m_previous;
    bool m_valid = false;
};

}  // namespace vx::tui
