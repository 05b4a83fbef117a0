// A small terminal emulator for tests: applies the renderer's output to a grid, so tests can
// check that what a terminal would show equals the frame the editor drew.
#pragma once

#include <string_view>

#include "app/tui/screen.hpp"

namespace vx::test {

class VtEmulator {
public:
    VtEmulator(int width, int height) : m_screen(width, height) {}
    void feed(std::string_view bytes);
    const tui::Screen& screen() const { return m_screen; }
    bool cursorVisible() const { return m_cursorVisible; }
    tui::Point cursor() const { return {m_x, m_y}; }

private:
    void csi(std::string_view parameters, char final);
    void sgr(std::string_view parameters);

    tui::Screen m_screen;
    tui::Style m_style;
    int m_x = 0, m_y = 0;
    bool m_pendingWrap = false;
    bool m_cursorVisible = true;
};

}  // namespace vx::test
