// The symbol panels: a list of symbols that narrows and re-ranks as the user types (go to symbol
// in file, go to symbol in project, the choice among several definitions). Enter goes to the
// chosen symbol, Escape closes the panel.
//
// The rows come from a source asked again whenever the typed text changes (the project panel
// looks names up by prefix) or the index has news (the indexer finished a file), so a panel that
// opened on a stale index fills in by itself.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/editor/modal.hpp"
#include "intelligence/main_database.hpp"

namespace vx::editor {

class SymbolPanel final : public Modal {
public:
    // The symbols for what is typed, in the order to show them.
    using Source = std::function<std::vector<VXSymbol>(const std::string& query)>;
    using Choice = std::function<void(Editor&, const VXSymbol&)>;

    // `news` counts the index's updates; the rows are asked for again when it moves. With
    // `showPaths` each row says where the symbol is (relative to `root` when inside it).
    SymbolPanel(std::string title, Source source, std::shared_ptr<const uint64_t> news, Choice choice,
                bool showPaths, std::string root = {});
    bool handleKey(Editor& editor, const tui::KeyEvent& key) override;
    bool handlePaste(Editor& editor, std::string_view text) override;
    void draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const override;

    const std::vector<VXSymbol>& rows() const;
    const std::string& query() const { return m_query; }

private:
    void refresh() const;

    std::string m_title;
    Source m_source;
    std::shared_ptr<const uint64_t> m_news;
    Choice m_choice;
    bool m_showPaths;
    std::string m_root;
    std::string m_query;
    mutable std::vector<VXSymbol> m_rows;
    mutable uint64_t m_seen = UINT64_MAX;
    mutable bool m_stale = true;
    int m_selected = 0;
    mutable int m_top = 0;
};

// The symbols ranked for a query by the symbol-list ranking (smartSort: names close to the query,
// of its case, starting with it first); those not containing its characters in order are left
// out; every symbol, in its order, for an empty query.
std::vector<VXSymbol> rankSymbols(const std::string& query, std::vector<VXSymbol> symbols);

}  // namespace vx::editor
