#include "app/editor/modal.hpp"

#include <algorithm>
#include <utility>

#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::editor {
namespace {

using tui::Key;
using tui::KeyEvent;

std::string lowerAscii(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

bool isPlainCharacter(const KeyEvent& key) {
    return key.key == Key::Character && !(key.modifiers & (tui::kCtrl | tui::kAlt | tui::kSuper)) && key.codepoint >= 0x20;
}

}  // namespace

Box drawBox(tui::Screen& screen, const Layout& layout, int wantWidth, int rows, const tui::Style& style) {
    int width = std::min(wantWidth + 4, std::max(layout.width - 2, 8));
    rows = std::min(rows, std::max(layout.textRows - 2, 1));
    int left = std::max((layout.width - width) / 2, 0);
    int top = layout.textTop + std::max((layout.textRows - rows - 2) / 2, 0);
    for (int y = top; y < top + rows + 2; ++y) screen.fill(left, y, width, style);
    return {left, top, width, rows};
}

std::vector<std::string> wrapText(std::string_view text, int width) {
    std::vector<std::string> lines;
    width = std::max(width, 1);
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view paragraph = text.substr(start, end - start);
        std::string line;
        int lineWidth = 0;
        size_t i = 0;
        while (i < paragraph.size()) {
            size_t wordEnd = paragraph.find(' ', i);
            if (wordEnd == std::string_view::npos) wordEnd = paragraph.size();
            std::string_view word = paragraph.substr(i, wordEnd - i);
            int wordWidth = tui::stringWidth(word);
            if (lineWidth > 0 && lineWidth + 1 + wordWidth > width) {
                lines.push_back(line);
                line.clear();
                lineWidth = 0;
            }
            if (lineWidth > 0) {
                line += ' ';
                ++lineWidth;
            }
            line += word;
            lineWidth += wordWidth;
            i = wordEnd + 1;
        }
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

LinePrompt::LinePrompt(std::string label, std::string initial, Done done, Changed changed, OtherKey other)
    : m_label(std::move(label)), m_done(std::move(done)), m_changed(std::move(changed)), m_other(std::move(other)) {
    for (size_t i = 0; i < initial.size();) m_text += tui::decodeUtf8(initial, i);
    m_caret = m_text.size();
}

std::string LinePrompt::text() const {
    std::string out;
    for (char32_t c : m_text) appendUtf8(out, c);
    return out;
}

bool LinePrompt::handleKey(Editor& editor, const KeyEvent& key) {
    std::u32string before = m_text;
    // A selected initial text goes as soon as something is typed in its place.
    bool replacing = std::exchange(m_initialSelected, false);
    if (replacing && (isPlainCharacter(key) || key.key == Key::Backspace || key.key == Key::Delete)) {
        m_text.clear();
        m_caret = 0;
        if (!isPlainCharacter(key)) {
            if (m_changed) m_changed(editor, text());
            return true;
        }
    }
    if (isPlainCharacter(key)) {
        m_text.insert(m_caret++, 1, key.codepoint);
    } else if (key.key == Key::Enter && key.modifiers == 0) {
        m_done(editor, text());
        return false;
    } else if (key.key == Key::Escape || (key.key == Key::Character && key.codepoint == U'g' && key.modifiers == tui::kCtrl && !m_other)) {
        m_done(editor, std::nullopt);
        return false;
    } else if (m_other && m_other(editor, key)) {
        return true;
    } else if (key.key == Key::Backspace && m_caret > 0) {
        m_text.erase(--m_caret, 1);
    } else if (key.key == Key::Delete && m_caret < m_text.size()) {
        m_text.erase(m_caret, 1);
    } else if (key.key == Key::Left && m_caret > 0) {
        --m_caret;
    } else if (key.key == Key::Right && m_caret < m_text.size()) {
        ++m_caret;
    } else if (key.key == Key::Home) {
        m_caret = 0;
    } else if (key.key == Key::End) {
        m_caret = m_text.size();
    } else if (key.key == Key::Character && key.codepoint == U'u' && key.modifiers == tui::kCtrl) {
        m_text.erase(0, m_caret);
        m_caret = 0;
    }
    if (m_changed && m_text != before) m_changed(editor, text());
    return true;
}

bool LinePrompt::handlePaste(Editor& editor, std::string_view pasted) {
    if (std::exchange(m_initialSelected, false)) {
        m_text.clear();
        m_caret = 0;
    }
    for (size_t i = 0; i < pasted.size();) {
        char32_t c = tui::decodeUtf8(pasted, i);
        if (c == U'\r' || c == U'\n') break;  // a prompt holds one line
        m_text.insert(m_caret++, 1, c);
    }
    if (m_changed) m_changed(editor, text());
    return true;
}

void LinePrompt::draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const {
    int y = layout.messageRow;
    screen.fill(0, y, layout.width, colors.message);
    int x = screen.print(0, y, m_label, {colors.dialogTitle.foreground, colors.message.background, tui::kBold});
    // Keep the caret in view: drop characters from the left when the text is too long.
    int room = std::max(layout.width - x - 1, 1);
    size_t first = 0;
    auto widthOf = [&](size_t from, size_t to) {
        int w = 0;
        for (size_t i = from; i < to; ++i) w += std::max(tui::codepointWidth(m_text[i]), 0);
        return w;
    };
    while (first < m_caret && widthOf(first, m_caret) > room) ++first;
    int caretX = x;
    tui::Style textStyle = colors.message;
    if (m_initialSelected) textStyle.background = colors.selection;
    for (size_t i = first; i < m_text.size(); ++i) {
        if (i == m_caret) caretX = x;
        x = screen.put(x, y, m_text[i], textStyle);
        if (x >= layout.width) break;
    }
    if (m_caret == m_text.size()) caretX = x;
    screen.setCursor(tui::Point{std::min(caretX, layout.width - 1), y});
}

Alert::Alert(std::string title, std::string message, std::vector<std::string> buttons, int escapeButton, Choice choice)
    : m_title(std::move(title)), m_message(std::move(message)), m_buttons(std::move(buttons)),
      m_escape(escapeButton), m_choice(std::move(choice)) {}

bool Alert::handleKey(Editor& editor, const KeyEvent& key) {
    auto count = static_cast<int>(m_buttons.size());
    if (key.key == Key::Enter) {
        m_choice(editor, m_focus);
        return false;
    }
    if (key.key == Key::Escape) {
        m_choice(editor, m_escape);
        return false;
    }
    if (key.key == Key::Right || (key.key == Key::Tab && !(key.modifiers & tui::kShift))) m_focus = (m_focus + 1) % count;
    else if (key.key == Key::Left || key.key == Key::Tab) m_focus = (m_focus + count - 1) % count;
    else if (isPlainCharacter(key) && key.codepoint < 0x80) {
        // A button's first letter chooses it.
        char letter = static_cast<char>(key.codepoint | 0x20);
        for (int i = 0; i < count; ++i)
            if (!m_buttons[static_cast<size_t>(i)].empty() && (m_buttons[static_cast<size_t>(i)][0] | 0x20) == letter) {
                m_choice(editor, i);
                return false;
            }
    }
    return true;
}

void Alert::draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const {
    int buttonsWidth = 0;
    for (const auto& button : m_buttons) buttonsWidth += tui::stringWidth(button) + 6;
    int inner = std::clamp(std::max(buttonsWidth, tui::stringWidth(m_title)), 40, 72);
    inner = std::min(inner, std::max(layout.width - 6, 4));
    auto lines = wrapText(m_message, inner);
    Box box = drawBox(screen, layout, inner, static_cast<int>(lines.size()) + 4, colors.dialog);
    int y = box.top + 1;
    screen.print(box.left + 2, y++, m_title, colors.dialogTitle, box.left + box.width - 1);
    ++y;
    for (const auto& line : lines) {
        if (y >= box.top + box.rows) break;
        screen.print(box.left + 2, y++, line, colors.dialog, box.left + box.width - 1);
    }
    y = box.top + box.rows;
    int x = box.left + 2;
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        const auto& style = static_cast<int>(i) == m_focus ? colors.dialogFocus : colors.dialog;
        x = screen.print(x, y, "[ " + m_buttons[i] + " ]", style, box.left + box.width - 1) + 2;
    }
    screen.setCursor(std::nullopt);
}

ListMenu::ListMenu(std::string title, std::vector<std::string> items, int current, Choice choice)
    : m_title(std::move(title)), m_items(std::move(items)), m_choice(std::move(choice)) {
    refilter();
    auto found = std::find(m_shown.begin(), m_shown.end(), current);
    m_selected = found == m_shown.end() ? 0 : static_cast<int>(found - m_shown.begin());
}

void ListMenu::refilter() {
    m_shown.clear();
    std::string filter = lowerAscii(m_filter);
    for (size_t i = 0; i < m_items.size(); ++i)
        if (lowerAscii(m_items[i]).find(filter) != std::string::npos) m_shown.push_back(static_cast<int>(i));
    m_selected = 0;
    m_top = 0;
}

bool ListMenu::handleKey(Editor& editor, const KeyEvent& key) {
    auto count = static_cast<int>(m_shown.size());
    if (key.key == Key::Enter) {
        m_choice(editor, count ? m_shown[static_cast<size_t>(m_selected)] : -1);
        return false;
    }
    if (key.key == Key::Escape) {
        m_choice(editor, -1);
        return false;
    }
    if (key.key == Key::Up) m_selected = std::max(m_selected - 1, 0);
    else if (key.key == Key::Down) m_selected = std::min(m_selected + 1, std::max(count - 1, 0));
    else if (key.key == Key::PageUp) m_selected = std::max(m_selected - 10, 0);
    else if (key.key == Key::PageDown) m_selected = std::min(m_selected + 10, std::max(count - 1, 0));
    else if (key.key == Key::Home) m_selected = 0;
    else if (key.key == Key::End) m_selected = std::max(count - 1, 0);
    else if (key.key == Key::Backspace && !m_filter.empty()) {
        size_t cut = m_filter.size() - 1;
        while (cut > 0 && (static_cast<unsigned char>(m_filter[cut]) & 0xC0) == 0x80) --cut;
        m_filter.erase(cut);
        refilter();
    } else if (isPlainCharacter(key)) {
        appendUtf8(m_filter, key.codepoint);
        refilter();
    }
    return true;
}

bool ListMenu::handlePaste(Editor&, std::string_view text) {
    m_filter += text.substr(0, text.find_first_of("\r\n"));
    refilter();
    return true;
}

void ListMenu::draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const {
    int widest = tui::stringWidth(m_title) + 12;
    for (int index : m_shown) widest = std::max(widest, tui::stringWidth(m_items[static_cast<size_t>(index)]) + 2);
    int wanted = static_cast<int>(m_shown.size()) + 2;
    Box box = drawBox(screen, layout, std::min(widest, 72), std::max(wanted, 3), colors.dialog);
    int right = box.left + box.width - 1;
    std::string title = m_title + (m_filter.empty() ? "" : "  " + m_filter);
    screen.print(box.left + 2, box.top + 1, title, colors.dialogTitle, right);
    int visible = std::max(box.rows - 1, 1);
    if (m_selected < m_top) m_top = m_selected;
    if (m_selected >= m_top + visible) m_top = m_selected - visible + 1;
    for (int row = 0; row < visible; ++row) {
        int shown = m_top + row;
        if (shown >= static_cast<int>(m_shown.size())) break;
        int y = box.top + 2 + row;
        const auto& style = shown == m_selected ? colors.dialogFocus : colors.dialog;
        if (shown == m_selected) screen.fill(box.left + 1, y, box.width - 2, style);
        screen.print(box.left + 2, y, m_items[static_cast<size_t>(m_shown[static_cast<size_t>(shown)])], style, right);
    }
    if (m_shown.empty()) screen.print(box.left + 2, box.top + 2, "(nothing matches)", colors.dialog, right);
    screen.setCursor(std::nullopt);
}

void LinePrompt::drawMessage(tui::Screen& screen, const EditorColors& colors, const Layout& layout,
                             const std::string& message, bool isError) const {
    // At the right of the prompt's row, when it fits after the text.
    int width = tui::stringWidth(message);
    int used = tui::stringWidth(m_label + text()) + 2;
    if (used + width >= layout.width) return;
    screen.print(layout.width - width - 1, layout.messageRow, message, isError ? colors.error : colors.message);
}

}  // namespace vx::editor
