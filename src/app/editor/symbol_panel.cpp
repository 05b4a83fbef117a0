#include "app/editor/symbol_panel.hpp"

#include <algorithm>

#include "app/editor/editor.hpp"
#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"
#include "platform/unicode.hpp"
#include "projects/smart_sort.hpp"

namespace vx::editor {
namespace {

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The query's characters occur in the name in order, ignoring ASCII case ("gts" in "getString").
bool containsInOrder(std::string_view name, std::string_view query) {
    size_t at = 0;
    for (char c : name)
        if (at < query.size() && lowerAscii(c) == lowerAscii(query[at])) ++at;
    return at == query.size();
}

// "name    kind in parent    where", the names padded to one width so the kinds line up.
std::string rowText(const VXSymbol& symbol, size_t nameWidth, const std::string& root, bool showPaths) {
    std::string text = symbol.name + std::string(nameWidth > symbol.name.size() ? nameWidth - symbol.name.size() : 0, ' ');
    text += "  " + symbol.typeCode;
    if (!symbol.parentName.empty()) text += " in " + symbol.parentName;
    if (!showPaths) return text + "  line " + std::to_string(symbol.rangeLine);
    std::string path = symbol.path.empty() ? std::string("(unsaved)") : symbol.path;
    if (!root.empty() && path.size() > root.size() && path.compare(0, root.size(), root) == 0 && path[root.size()] == '/')
        path.erase(0, root.size() + 1);
    return text + "  " + path + ":" + std::to_string(symbol.rangeLine);
}

}  // namespace

std::vector<VXSymbol> rankSymbols(const std::string& query, std::vector<VXSymbol> symbols) {
    if (query.empty()) return symbols;
    std::erase_if(symbols, [&](const VXSymbol& s) { return !containsInOrder(s.name, query); });
    return smartSort(query, std::move(symbols), [](const VXSymbol& symbol) -> const std::string& { return symbol.name; });
}

SymbolPanel::SymbolPanel(std::string title, Source source, std::shared_ptr<const uint64_t> news, Choice choice,
                         bool showPaths, std::string root)
    : m_title(std::move(title)), m_source(std::move(source)), m_news(std::move(news)), m_choice(std::move(choice)),
      m_showPaths(showPaths), m_root(std::move(root)) {}

void SymbolPanel::refresh() const {
    const uint64_t news = m_news ? *m_news : 0;
    if (!m_stale && news == m_seen) return;
    m_seen = news;
    m_stale = false;
    m_rows = m_source(m_query);
}

const std::vector<VXSymbol>& SymbolPanel::rows() const {
    refresh();
    return m_rows;
}

bool SymbolPanel::handleKey(Editor& editor, const tui::KeyEvent& key) {
    using tui::Key;
    const int count = static_cast<int>(rows().size());
    const bool plain = !(key.modifiers & (tui::kCtrl | tui::kAlt | tui::kSuper));
    switch (key.key) {
    case Key::Escape:
        return false;
    case Key::Enter: {
        if (m_selected < count) {
            const VXSymbol chosen = m_rows[static_cast<size_t>(m_selected)];
            m_choice(editor, chosen);
        }
        return false;
    }
    case Key::Up:
        m_selected = std::max(m_selected - 1, 0);
        return true;
    case Key::Down:
        m_selected = std::min(m_selected + 1, std::max(count - 1, 0));
        return true;
    case Key::PageUp:
        m_selected = std::max(m_selected - 10, 0);
        return true;
    case Key::PageDown:
        m_selected = std::min(m_selected + 10, std::max(count - 1, 0));
        return true;
    case Key::Backspace:
        if (!m_query.empty()) {
            // Drops the last character, not the last byte.
            size_t end = m_query.size() - 1;
            while (end > 0 && (static_cast<unsigned char>(m_query[end]) & 0xC0) == 0x80) --end;
            m_query.erase(end);
            m_stale = true;
            m_selected = 0;
        }
        return true;
    case Key::Character:
        if (plain && key.codepoint >= 0x20) {
            m_query += tui::utf8(key.codepoint);
            m_stale = true;
            m_selected = 0;
        }
        return true;
    default:
        return true;
    }
}

bool SymbolPanel::handlePaste(Editor&, std::string_view text) {
    for (char c : text)
        if (c != '\n' && c != '\r') m_query += c;
    m_stale = true;
    m_selected = 0;
    return true;
}

void SymbolPanel::draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const {
    refresh();
    std::vector<std::string> lines;
    int widest = tui::stringWidth(m_title) + 24;
    size_t nameWidth = 0;
    for (const auto& symbol : m_rows) nameWidth = std::max(nameWidth, std::min<size_t>(symbol.name.size(), 40));
    for (const auto& symbol : m_rows) {
        lines.push_back(rowText(symbol, nameWidth, m_root, m_showPaths));
        widest = std::max(widest, tui::stringWidth(lines.back()) + 2);
    }
    const int wanted = std::max(static_cast<int>(lines.size()) + 2, 3);
    const Box box = drawBox(screen, layout, std::min(widest, 96), wanted, colors.dialog);
    const int right = box.left + box.width - 1;
    screen.print(box.left + 2, box.top + 1, m_title + ": " + m_query, colors.dialogTitle, right);
    const int visible = std::max(box.rows - 1, 1);
    if (m_selected < m_top) m_top = m_selected;
    if (m_selected >= m_top + visible) m_top = m_selected - visible + 1;
    for (int row = 0; row < visible; ++row) {
        const int shown = m_top + row;
        if (shown >= static_cast<int>(lines.size())) break;
        const int y = box.top + 2 + row;
        const auto& style = shown == m_selected ? colors.dialogFocus : colors.dialog;
        if (shown == m_selected) screen.fill(box.left + 1, y, box.width - 2, style);
        screen.print(box.left + 2, y, lines[static_cast<size_t>(shown)], style, right);
    }
    if (lines.empty())
        screen.print(box.left + 2, box.top + 2, m_query.empty() && m_showPaths ? "(type a name)" : "(no symbols)", colors.dialog, right);
    screen.setCursor(std::nullopt);
}

}  // namespace vx::editor
