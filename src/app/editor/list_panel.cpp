#include "app/editor/list_panel.hpp"

#include <algorithm>

#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::editor {

bool moveListSelection(int& selected, int count, const tui::KeyEvent& key) {
    using tui::Key;
    const int last = std::max(count - 1, 0);
    switch (key.key) {
    case Key::Up:
        selected = std::max(selected - 1, 0);
        return true;
    case Key::Down:
        selected = std::min(selected + 1, last);
        return true;
    case Key::PageUp:
        selected = std::max(selected - 10, 0);
        return true;
    case Key::PageDown:
        selected = std::min(selected + 10, last);
        return true;
    default:
        return false;
    }
}

bool editListQuery(std::string& query, const tui::KeyEvent& key) {
    if (key.key == tui::Key::Backspace) {
        if (query.empty()) return false;
        size_t end = query.size() - 1;  // the last character, not the last byte
        while (end > 0 && (static_cast<unsigned char>(query[end]) & 0xC0) == 0x80) --end;
        query.erase(end);
        return true;
    }
    const bool plain = !(key.modifiers & (tui::kCtrl | tui::kAlt | tui::kSuper));
    if (key.key != tui::Key::Character || !plain || key.codepoint < 0x20) return false;
    query += tui::utf8(key.codepoint);
    return true;
}

void appendToListQuery(std::string& query, std::string_view text) {
    for (char c : text)
        if (c != '\n' && c != '\r') query += c;
}

void drawListPanel(tui::Screen& screen, const EditorColors& colors, const Layout& layout, const ListPanelLook& look,
                   const std::vector<std::string>& lines, int selected, int& top) {
    int widest = look.minimumWidth;
    for (const auto& line : lines) widest = std::max(widest, tui::stringWidth(line) + 2);
    const int wanted = std::max(static_cast<int>(lines.size()) + 2, 3);
    const Box box = drawBox(screen, layout, std::min(widest, look.maximumWidth), wanted, colors.dialog);
    const int right = box.left + box.width - 1;
    screen.print(box.left + 2, box.top + 1, look.titleLine, colors.dialogTitle, right);
    const int visible = std::max(box.rows - 1, 1);
    if (selected < top) top = selected;
    if (selected >= top + visible) top = selected - visible + 1;
    for (int row = 0; row < visible; ++row) {
        const int shown = top + row;
        if (shown >= static_cast<int>(lines.size())) break;
        const int y = box.top + 2 + row;
        const auto& style = shown == selected ? colors.dialogFocus : colors.dialog;
        if (shown == selected) screen.fill(box.left + 1, y, box.width - 2, style);
        screen.print(box.left + 2, y, lines[static_cast<size_t>(shown)], style, right);
    }
    if (lines.empty()) screen.print(box.left + 2, box.top + 2, look.emptyNote, colors.dialog, right);
    screen.setCursor(std::nullopt);
}

}  // namespace vx::editor
