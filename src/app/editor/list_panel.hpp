// What the panels that narrow a list as the user types share (the symbol panels, quick open):
// editing the typed query, moving the chosen row, and drawing the box with the rows, the chosen
// one marked and scrolled into view.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/editor/modal.hpp"

namespace vx::editor {

// Up, Down, Page Up and Page Down move the chosen row within [0, count); true when the key was one
// of them.
bool moveListSelection(int& selected, int count, const tui::KeyEvent& key);

// Backspace drops the query's last character, a plain character is added to it; true when the
// query changed.
bool editListQuery(std::string& query, const tui::KeyEvent& key);
// A paste is added to the query without its line breaks.
void appendToListQuery(std::string& query, std::string_view text);

struct ListPanelLook {
    std::string titleLine;   // the first line: the title and what is typed
    int minimumWidth = 0;
    int maximumWidth = 96;
    std::string emptyNote;   // shown when there are no rows
};

// Draws the box; `top` keeps the first row shown between frames.
void drawListPanel(tui::Screen& screen, const EditorColors& colors, const Layout& layout, const ListPanelLook& look,
                   const std::vector<std::string>& lines, int selected, int& top);

}  // namespace vx::editor
