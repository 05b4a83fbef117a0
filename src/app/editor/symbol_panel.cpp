#include "app/editor/symbol_panel.hpp"

#include <algorithm>

#include "app/editor/editor.hpp"
#include "app/editor/list_panel.hpp"
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
    const int count = static_cast<int>(rows().size());
    if (key.key == tui::Key::Escape) return false;
    if (key.key == tui::Key::Enter) {
        if (m_selected < count) {
            const VXSymbol chosen = m_rows[static_cast<size_t>(m_selected)];
            m_choice(editor, chosen);
        }
        return false;
    }
    if (moveListSelection(m_selected, count, key)) return true;
    if (editListQuery(m_query, key)) {
        m_stale = true;
        m_selected = 0;
    }
    return true;
}

bool SymbolPanel::handlePaste(Editor&, std::string_view text) {
    appendToListQuery(m_query, text);
    m_stale = true;
    m_selected = 0;
    return true;
}

void SymbolPanel::draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const {
    refresh();
    std::vector<std::string> lines;
    size_t nameWidth = 0;
    for (const auto& symbol : m_rows) nameWidth = std::max(nameWidth, std::min<size_t>(symbol.name.size(), 40));
    for (const auto& symbol : m_rows) lines.push_back(rowText(symbol, nameWidth, m_root, m_showPaths));
    const ListPanelLook look{m_title + ": " + m_query, tui::stringWidth(m_title) + 24, 96,
                             m_query.empty() && m_showPaths ? "(type a name)" : "(no symbols)"};
    drawListPanel(screen, colors, layout, look, lines, m_selected, m_top);
}

}  // namespace vx::editor
