#include "app/editor/editor.hpp"
#include "app/editor/symbol_navigation.hpp"

#include <algorithm>

#include "app/editor/files.hpp"
#include "app/editor/line_layout.hpp"
#include "app/editor/quick_open_panel.hpp"
#include "app/editor/snippet_commands.hpp"
#include "app/editor/theme_colors.hpp"
#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::editor {
namespace {

std::string base64(std::string_view bytes) {
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        uint32_t n = (static_cast<uint8_t>(bytes[i]) << 16) | (static_cast<uint8_t>(bytes[i + 1]) << 8) | static_cast<uint8_t>(bytes[i + 2]);
        for (int shift : {18, 12, 6, 0}) out += kAlphabet[(n >> shift) & 63];
    }
    if (i < bytes.size()) {
        uint32_t n = static_cast<uint8_t>(bytes[i]) << 16;
        if (i + 1 < bytes.size()) n |= static_cast<uint8_t>(bytes[i + 1]) << 8;
        out += kAlphabet[(n >> 18) & 63];
        out += kAlphabet[(n >> 12) & 63];
        out += i + 1 < bytes.size() ? kAlphabet[(n >> 6) & 63] : '=';
        out += '=';
    }
    return out;
}

std::string digitsOf(uint64_t value) {
    return std::to_string(value);
}

}  // namespace

Editor::Editor()
    : m_bindings(tui::KeyBindings::defaults()), m_colors(defaultColors()), m_styler(std::make_unique<BasicScopeStyler>()) {
    registerEditingCommands(*this);
    registerSelectionCommands(*this);
    registerFileCommands(*this);
    registerDocumentCommands(*this);
    registerSymbolCommands(*this);
    registerSnippetCommands(*this);
    registerQuickOpenCommands(*this);
}

size_t Editor::runAlert(const std::string& title, const std::string& message, const std::vector<std::string>& buttons,
                        size_t escapeButton) {
    // The question goes over whatever modal was showing, which comes back afterwards.
    auto previous = std::move(m_modal);
    std::optional<int> answer;
    showModal(std::make_unique<Alert>(title, message, buttons, static_cast<int>(escapeButton),
                                      [&answer](Editor&, int button) { answer = button; }));
    while (!answer && m_modal && m_pump && m_pump()) {
    }
    if (!answer) m_modal.reset();
    if (!m_modal) m_modal = std::move(previous);
    return answer && *answer >= 0 ? static_cast<size_t>(*answer) : escapeButton;
}

Editor::~Editor() = default;

void Editor::setSize(int width, int height) {
    m_width = std::max(width, 1);
    m_height = std::max(height, 1);
    revealCaret();
}

Tab& Editor::openTab(std::unique_ptr<Tab> tab) {
    m_tabs.push_back(std::move(tab));
    m_active = m_tabs.size() - 1;
    return *m_tabs.back();
}

void Editor::closeTab(size_t index) {
    if (index >= m_tabs.size()) return;
    m_tabs.erase(m_tabs.begin() + static_cast<std::ptrdiff_t>(index));
    if (m_active >= m_tabs.size()) m_active = m_tabs.empty() ? 0 : m_tabs.size() - 1;
    else if (m_active > index) --m_active;
}

void Editor::activateTab(size_t index) {
    if (index >= m_tabs.size()) return;
    if (Tab* tab = activeTab()) tab->endTyping();
    m_active = index;
}

Layout Editor::layout() const {
    Layout layout;
    layout.width = m_width;
    layout.height = m_height;
    layout.textTop = m_height >= 4 ? 1 : 0;
    layout.statusRow = m_height >= 3 ? m_height - 2 : m_height;
    layout.messageRow = m_height - 1;
    layout.textRows = std::max(std::min(layout.statusRow, layout.messageRow) - layout.textTop, 1);
    uint64_t lines = m_tabs.empty() ? 1 : m_tabs[m_active]->text().lineCount();
    layout.gutterWidth = static_cast<int>(std::max<size_t>(digitsOf(lines).size(), 3)) + 2;
    if (layout.gutterWidth * 2 > m_width) layout.gutterWidth = 0;
    return layout;
}

void Editor::revealCaret() {
    Tab* tab = activeTab();
    if (!tab) return;
    Layout l = layout();
    tab->scrollToCaret(l.textRows, std::max(l.width - l.gutterWidth - 1, 1));
}

void Editor::applyTheme(const std::shared_ptr<VXTheme>& theme) {
    if (!theme) return;
    m_colors = colorsFromTheme(*theme);
    m_styler = std::make_unique<ThemeStyler>(theme);
}

bool Editor::hasBackgroundWork() {
    if (m_search) return true;
    Tab* tab = activeTab();
    if (tab && tab->hasSnippetOutputPending()) return true;
    if (!tab || !tab->highlighter()) return false;
    uint64_t lastShown = tab->topLine + static_cast<uint64_t>(layout().textRows);
    return !tab->highlighter()->isWithinReach(std::min(lastShown, tab->text().lineCount() - 1));
}

void Editor::doBackgroundWork(std::chrono::microseconds budget) {
    if (m_search) return continueFind(budget);
    Tab* tab = activeTab();
    // A snippet's shell commands: their output, when it has come, replaces the defaults.
    if (tab && tab->hasSnippetOutputPending()) {
        tab->takeSnippetOutput(budget);
        return;
    }
    if (!tab || !tab->highlighter()) return;
    uint64_t lastShown = tab->topLine + static_cast<uint64_t>(layout().textRows);
    tab->highlighter()->advance(tab->text(), lastShown, budget);
}

void Editor::handleEvent(const tui::InputEvent& event) {
    if (auto* key = std::get_if<tui::KeyEvent>(&event)) return handleKey(*key);
    if (auto* paste = std::get_if<tui::PasteEvent>(&event)) return handlePaste(paste->text);
    if (auto* mouse = std::get_if<tui::MouseEvent>(&event)) return handleMouse(*mouse);
    if (auto* resize = std::get_if<tui::ResizeEvent>(&event)) setSize(resize->width, resize->height);
}

void Editor::handleKey(const tui::KeyEvent& key) {
    m_message = {};
    if (Tab* tab = activeTab()) tab->refreshIfReverted();
    if (m_modal) {
        // Keep the modal alive while it runs: its callback may replace it.
        auto modal = std::move(m_modal);
        bool keep = modal->handleKey(*this, key);
        if (keep && !m_modal) m_modal = std::move(modal);
        revealCaret();
        return;
    }
    if (auto command = m_bindings.commandForKey(key)) {
        runCommand(*command);
        return;
    }
    bool chord = key.modifiers & (tui::kCtrl | tui::kAlt | tui::kSuper);
    if (key.key == tui::Key::Character && !chord && key.codepoint >= 0x20 && key.codepoint != 0x7f) {
        std::u16string text;
        tui::appendUtf16(text, key.codepoint);
        typeText(text);
        return;
    }
    if (chord || key.key != tui::Key::Character) showError(tui::keyName(key) + " is not bound to a command");
}

void Editor::runCommand(const std::string& name) {
    auto found = m_commands.find(name);
    if (found == m_commands.end()) {
        showError("unknown command: " + name);
        return;
    }
    // Whatever a command does, a run of typing ends here (saving must see the typed text as a
    // finished change, and undo must not merge it with what comes next). A run of deletions
    // goes on as one undo step while the same deleting key is pressed.
    if (Tab* tab = activeTab(); tab && name != "delete-backward" && name != "delete-forward") tab->endTyping();
    // Copy: a command may replace the table (rebinding) while it runs.
    Command command = found->second;
    command(*this);
    snippetCommandDidFinish();
    revealCaret();
}

void Editor::snippetCommandDidFinish() {
    if (Tab* tab = activeTab())
        if (VXSnippetSession* session = tab->snippetSession()) session->commandDidFinish();
}

void Editor::typeText(std::u16string_view text) {
    Tab* tab = activeTab();
    if (!tab) return;
    tab->typeText(text);
    snippetCommandDidFinish();
    revealCaret();
}

void Editor::handlePaste(const std::string& text) {
    m_message = {};
    if (m_modal) {
        m_modal->handlePaste(*this, text);
        return;
    }
    if (Tab* tab = activeTab()) {
        tab->insertText(utf16FromUtf8(text));
        snippetCommandDidFinish();
        revealCaret();
    }
}

void Editor::handleMouse(const tui::MouseEvent& mouse) {
    if (m_modal) return;
    Layout l = layout();
    Tab* tab = activeTab();
    if (mouse.action == tui::MouseAction::WheelUp || mouse.action == tui::MouseAction::WheelDown) {
        if (tab) tab->scrollBy(mouse.action == tui::MouseAction::WheelUp ? -3 : 3, l.textRows);
        return;
    }
    if (mouse.action == tui::MouseAction::Release) {
        m_dragging = false;
        return;
    }
    if (mouse.button != 0 || (mouse.action != tui::MouseAction::Press && mouse.action != tui::MouseAction::Drag)) return;
    if (mouse.action == tui::MouseAction::Press && mouse.y == 0 && l.textTop == 1) {
        for (size_t i = 0; i < m_tabBarSpans.size(); ++i)
            if (mouse.x >= m_tabBarSpans[i].first && mouse.x < m_tabBarSpans[i].second) activateTab(i);
        return;
    }
    if (!tab) return;
    bool inText = mouse.y >= l.textTop && mouse.y < l.textTop + l.textRows;
    if (mouse.action == tui::MouseAction::Press && !inText) return;
    if (mouse.action == tui::MouseAction::Drag && !m_dragging) return;
    // Dragging above or below the text scrolls it.
    int row = std::clamp(mouse.y - l.textTop, -1, l.textRows);
    int64_t line = static_cast<int64_t>(tab->topLine) + row;
    uint64_t column = tab->leftColumn + static_cast<uint64_t>(std::max(mouse.x - l.gutterWidth, 0));
    auto lineAt = static_cast<uint64_t>(std::max<int64_t>(line, 0));
    // Alt with a press and a drag selects a block, one selection per line.
    if (mouse.modifiers & tui::kAlt) {
        if (mouse.action == tui::MouseAction::Press) m_columnDragAnchor = {lineAt, column};
        if (m_columnDragAnchor)
            tab->view().setColumnSelection(m_columnDragAnchor->first, m_columnDragAnchor->second, lineAt, column);
        m_dragging = true;
        revealCaret();
        return;
    }
    m_columnDragAnchor.reset();
    bool extend = mouse.action == tui::MouseAction::Drag || (mouse.modifiers & tui::kShift);
    tab->placeCaret(lineAt, column, extend);
    m_dragging = true;
    revealCaret();
}

void Editor::setClipboard(std::vector<std::u16string> pieces, std::u16string_view lineBreak) {
    std::u16string joined;
    for (size_t i = 0; i < pieces.size(); ++i) joined += (i ? std::u16string(lineBreak) : u"") + pieces[i];
    setClipboard(std::move(joined));
    m_clipboardPieces = std::move(pieces);
}

void Editor::setClipboard(std::u16string text) {
    m_clipboard = std::move(text);
    m_clipboardPieces = {m_clipboard};
    m_terminalRequests += "\x1b]52;c;" + base64(utf8FromUtf16(m_clipboard)) + "\x07";
}

void Editor::findNext(bool forward) {
    Tab* tab = activeTab();
    m_search.reset();
    if (!tab) return;
    if (m_findQuery.empty()) {
        showError("Nothing to find");
        return;
    }
    const Range selection = tab->selection().range();
    m_search.emplace(m_findQuery, forward, forward ? selection.end() : selection.location);
    m_searchTab = tab;
    // A small text is searched at once; a large one goes on between frames (see
    // doBackgroundWork), so that the next key is read as soon as it comes.
    continueFind(std::chrono::milliseconds(4));
}

void Editor::continueFind(std::chrono::microseconds budget) {
    if (!m_search) return;
    Tab* tab = activeTab();
    if (tab != m_searchTab) {  // the tab changed: the search no longer means anything
        m_search.reset();
        return;
    }
    const auto deadline = std::chrono::steady_clock::now() + budget;
    constexpr uint64_t kPositionsPerSlice = 1 << 18;
    while (m_search->step(tab->text(), kPositionsPerSlice) == editing::TextSearch::Status::Searching)
        if (std::chrono::steady_clock::now() >= deadline) return;
    const editing::TextSearch search = *m_search;
    m_search.reset();
    if (search.status() == editing::TextSearch::Status::NotFound) {
        showError("Not found: " + utf8FromUtf16(m_findQuery));
        return;
    }
    tab->setSelection({search.foundAt(), search.foundAt() + search.length()});
    if (search.wrapped()) showMessage("Search wrapped around");
    revealCaret();
}

void Editor::draw(tui::Screen& screen) {
    if (screen.width() != m_width || screen.height() != m_height) screen.resize(m_width, m_height);
    if (Tab* tab = activeTab()) tab->refreshIfReverted();
    screen.clear(m_colors.text);
    screen.setCursor(std::nullopt);
    Layout l = layout();
    if (l.textTop == 1) drawTabBar(screen, l);
    drawText(screen, l);
    if (l.statusRow < m_height) drawStatusBar(screen, l);
    drawMessageLine(screen, l);
    if (m_modal) {
        m_modal->draw(screen, m_colors, l);
        if (!m_message.text.empty()) m_modal->drawMessage(screen, m_colors, l, m_message.text, m_message.isError);
    }
}

void Editor::drawTabBar(tui::Screen& screen, const Layout& l) {
    screen.fill(0, 0, l.width, m_colors.tabBar);
    m_tabBarSpans.clear();
    int x = 0;
    for (size_t i = 0; i < m_tabs.size(); ++i) {
        const Tab& tab = *m_tabs[i];
        std::string title = " " + tab.displayName() + (tab.isModified() ? " \u25cf " : "   ");
        const auto& style = i == m_active ? m_colors.tabActive : m_colors.tabBar;
        int start = x;
        x = screen.print(x, 0, title, style);
        m_tabBarSpans.emplace_back(start, x);
        x = screen.print(x, 0, "\u2502", m_colors.tabBar);
        if (x >= l.width) break;
    }
}

void Editor::drawText(tui::Screen& screen, const Layout& l) {
    Tab* tab = activeTab();
    if (!tab) {
        screen.print(2, l.textTop + 1, "No open files. Ctrl-N makes a new one, Ctrl-O opens one, Ctrl-Q quits.", m_colors.gutter);
        return;
    }
    const TextBuffer& text = tab->text();
    Range selection = tab->selection().range();
    // Every selection is shaded; carets other than the primary show as inverted cells (the
    // terminal has one cursor, which stays on the primary).
    std::vector<Range> selected;
    std::vector<uint64_t> carets;
    for (const Selection& s : tab->view().selections()) {
        if (!s.isEmpty()) selected.push_back(s.range());
        if (s.caret != tab->selection().caret) carets.push_back(s.caret);
    }
    auto isSelected = [&](uint64_t offset) {
        auto after = std::upper_bound(selected.begin(), selected.end(), offset, [](uint64_t o, const Range& r) { return o < r.location; });
        return after != selected.begin() && offset < std::prev(after)->end();
    };
    auto isCaret = [&](uint64_t offset) { return std::binary_search(carets.begin(), carets.end(), offset); };
    uint64_t caretLine = tab->caretLine();
    int textLeft = l.gutterWidth;
    int tabSize = tab->tabSize();
    for (int row = 0; row < l.textRows; ++row) {
        uint64_t line = tab->topLine + static_cast<uint64_t>(row);
        int y = l.textTop + row;
        if (line >= text.lineCount()) break;
        bool current = line == caretLine;
        tui::Style lineStyle = m_colors.text;
        if (current && selection.length == 0) lineStyle.background = m_colors.currentLine;
        screen.fill(textLeft, y, l.width - textLeft, lineStyle);
        if (l.gutterWidth > 0) {
            const auto& gutter = current ? m_colors.gutterCurrent : m_colors.gutter;
            std::string number = digitsOf(line + 1);
            screen.fill(0, y, l.gutterWidth, gutter);
            screen.print(l.gutterWidth - 1 - static_cast<int>(number.size()), y, number, gutter);
        }
        Range content = text.lineContentRange(line);
        std::u16string lineText = text.substring(content);
        std::optional<std::vector<StyledRun>> runs;
        if (tab->highlighter()) runs = tab->highlighter()->runsForLine(text, line, *m_styler, lineStyle);
        size_t run = 0;
        uint64_t left = tab->leftColumn;
        uint64_t right = left + static_cast<uint64_t>(l.width - textLeft);
        layoutLine(lineText, tabSize, [&](const LaidOutCharacter& ch) {
            if (ch.column >= right) return false;
            uint64_t offset = content.location + ch.offset;
            tui::Style style = lineStyle;
            if (runs) {
                while (run < runs->size() && (*runs)[run].end <= ch.offset) ++run;
                if (run < runs->size() && (*runs)[run].start <= ch.offset) style = (*runs)[run].style;
            }
            if (isSelected(offset)) style.background = m_colors.selection;
            if (isCaret(offset)) style.attributes |= tui::kReverse;
            if (ch.width == 0) {
                if (ch.column > left) screen.put(textLeft + static_cast<int>(ch.column - left), y, ch.codepoint, style);
                return true;
            }
            if (ch.column + static_cast<uint64_t>(ch.width) <= left) return true;
            int x = textLeft + static_cast<int>(ch.column >= left ? ch.column - left : 0);
            int visibleWidth = static_cast<int>(std::min(ch.column + static_cast<uint64_t>(ch.width), right) - std::max(ch.column, left));
            if (ch.codepoint == U'\t' || ch.column < left) {
                screen.fill(x, y, visibleWidth, style);
            } else if (ch.codepoint < 0x20 || ch.codepoint == 0x7f) {
                tui::Style control = m_colors.invisibles;
                control.background = style.background;
                char shown = ch.codepoint == 0x7f ? '?' : static_cast<char>('@' + ch.codepoint);
                screen.print(x, y, std::string("^") + shown, control, textLeft + static_cast<int>(right - left));
            } else {
                screen.put(x, y, ch.codepoint, style, textLeft + static_cast<int>(right - left));
            }
            return true;
        }, left);
        // A selection that takes in the line break shows one cell past the line's end, and so
        // does a secondary caret there.
        bool breakSelected = isSelected(content.end()) && content.end() < text.length();
        uint64_t endColumn = breakSelected || isCaret(content.end()) ? columnForOffset(lineText, lineText.size(), tabSize) : 0;
        if ((breakSelected || isCaret(content.end())) && endColumn >= left && endColumn < right) {
            tui::Style style = lineStyle;
            if (breakSelected) style.background = m_colors.selection;
            if (isCaret(content.end())) style.attributes |= tui::kReverse;
            screen.fill(textLeft + static_cast<int>(endColumn - left), y, 1, style);
        }
    }
    uint64_t caretRow = caretLine - std::min(caretLine, tab->topLine);
    uint64_t caretColumn = tab->caretColumn();
    if (caretLine >= tab->topLine && caretRow < static_cast<uint64_t>(l.textRows) && caretColumn >= tab->leftColumn &&
        caretColumn - tab->leftColumn < static_cast<uint64_t>(l.width - textLeft))
        screen.setCursor(tui::Point{textLeft + static_cast<int>(caretColumn - tab->leftColumn), l.textTop + static_cast<int>(caretRow)});
}

void Editor::drawStatusBar(tui::Screen& screen, const Layout& l) {
    screen.fill(0, l.statusRow, l.width, m_colors.statusBar);
    Tab* tab = activeTab();
    if (!tab) return;
    // The mark first: a long path is cut at the right, the mark never.
    std::string left = (tab->isModified() ? " [+] " : " ") + (tab->path().empty() ? tab->displayName() : tab->path());
    std::string right = "Ln " + digitsOf(tab->caretLine() + 1) + ", Col " + digitsOf(tab->caretColumn() + 1) + "  " +
                        (tab->softTabs() ? "Spaces: " : "Tab Size: ") + std::to_string(tab->tabSize()) + "  " +
                        tab->encodingName() + "  " + tab->lineEndingName() + "  " + tab->languageName() + " ";
    int rightWidth = tui::stringWidth(right);
    screen.print(0, l.statusRow, left, m_colors.statusBar, std::max(l.width - rightWidth - 1, 0));
    screen.print(std::max(l.width - rightWidth, 0), l.statusRow, right, m_colors.statusBar);
}

void Editor::drawMessageLine(tui::Screen& screen, const Layout& l) {
    screen.fill(0, l.messageRow, l.width, m_colors.message);
    if (!m_message.text.empty())
        screen.print(0, l.messageRow, m_message.text, m_message.isError ? m_colors.error : m_colors.message);
}

}  // namespace vx::editor
