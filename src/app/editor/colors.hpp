// The editor's own colours: text, gutter, selection, current line, bars and dialogs. A theme
// replaces them where it has its own; these are what a text shows without one.
#pragma once

#include "app/tui/screen.hpp"

namespace vx::editor {

struct EditorColors {
    tui::Style text;
    tui::Color selection;
    tui::Color currentLine;
    tui::Style invisibles;
    tui::Style gutter;
    tui::Style gutterCurrent;
    tui::Style tabBar;
    tui::Style tabActive;
    tui::Style statusBar;
    tui::Style message;
    tui::Style error;
    tui::Style dialog;
    tui::Style dialogTitle;
    tui::Style dialogFocus;
    tui::Style match;
};

inline EditorColors defaultColors() {
    using tui::Color;
    const Color background = Color::rgb(0x1e, 0x1f, 0x22), foreground = Color::rgb(0xd8, 0xd8, 0xd2);
    const Color bar = Color::rgb(0x2f, 0x31, 0x36), dim = Color::rgb(0x6e, 0x72, 0x7a);
    EditorColors c;
    c.text = {foreground, background, 0};
    c.selection = Color::rgb(0x26, 0x4f, 0x78);
    c.currentLine = Color::rgb(0x27, 0x29, 0x2d);
    c.invisibles = {Color::rgb(0x50, 0x53, 0x5a), background, 0};
    c.gutter = {dim, background, 0};
    c.gutterCurrent = {Color::rgb(0xb0, 0xb4, 0xbc), Color::rgb(0x27, 0x29, 0x2d), 0};
    c.tabBar = {Color::rgb(0xa0, 0xa4, 0xac), bar, 0};
    c.tabActive = {Color::rgb(0xff, 0xff, 0xff), background, tui::kBold};
    c.statusBar = {Color::rgb(0xe0, 0xe0, 0xe0), Color::rgb(0x3a, 0x5a, 0x80), 0};
    c.message = {foreground, background, 0};
    c.error = {Color::rgb(0xff, 0x80, 0x70), background, tui::kBold};
    c.dialog = {foreground, bar, 0};
    c.dialogTitle = {Color::rgb(0xff, 0xd0, 0x70), bar, tui::kBold};
    c.dialogFocus = {Color::rgb(0x10, 0x10, 0x10), Color::rgb(0xd0, 0xd0, 0xd0), tui::kBold};
    c.match = {Color::rgb(0x10, 0x10, 0x10), Color::rgb(0xe0, 0xc0, 0x60), 0};
    return c;
}

}  // namespace vx::editor
