// What takes the keys while it is shown: a one-line prompt on the message line (find, go to line,
// save as), an alert with buttons, and a list to choose from (menus, the file list).
//
// A modal reports its outcome through the callback it was given. The editor keeps the modal alive
// while its handler runs, so a callback may show the next modal straight away.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/editor/colors.hpp"
#include "app/tui/input_decoder.hpp"
#include "app/tui/screen.hpp"

namespace vx::editor {

class Editor;

struct Layout {
    int width = 0, height = 0;
    int textTop = 1, textRows = 0;
    int gutterWidth = 0;
    int statusRow = 0, messageRow = 0;
};

// A framed box centred over the text area with `rows` rows inside, filled with the style.
struct Box {
    int left, top, width, rows;
};
Box drawBox(tui::Screen& screen, const Layout& layout, int wantWidth, int rows, const tui::Style& style);

class Modal {
public:
    virtual ~Modal() = default;
    // False when the modal is done and is to be removed.
    virtual bool handleKey(Editor& editor, const tui::KeyEvent& key) = 0;
    virtual bool handlePaste(Editor&, std::string_view) { return true; }
    virtual void draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const = 0;
    // A message for the user while the modal shows (a prompt shows it beside its text).
    virtual void drawMessage(tui::Screen&, const EditorColors&, const Layout&, const std::string&, bool) const {}
};

class LinePrompt final : public Modal {
public:
    using Done = std::function<void(Editor&, std::optional<std::string>)>;
    using Changed = std::function<void(Editor&, const std::string&)>;
    // Keys the prompt does not use itself go here first (find-next while finding); true if used.
    using OtherKey = std::function<bool(Editor&, const tui::KeyEvent&)>;

    LinePrompt(std::string label, std::string initial, Done done, Changed changed = {}, OtherKey other = {});
    // Shows the initial text selected: typing or pasting replaces it, Backspace clears it, a
    // movement keeps it.
    LinePrompt& selectingInitialText() {
        m_initialSelected = !m_text.empty();
        return *this;
    }
    bool handleKey(Editor& editor, const tui::KeyEvent& key) override;
    bool handlePaste(Editor& editor, std::string_view text) override;
    void draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const override;
    void drawMessage(tui::Screen& screen, const EditorColors& colors, const Layout& layout, const std::string& message,
                     bool isError) const override;
    std::string text() const;

private:
    std::string m_label;
    std::u32string m_text;
    size_t m_caret = 0;
    bool m_initialSelected = false;
    Done m_done;
    Changed m_changed;
    OtherKey m_other;
};

class Alert final : public Modal {
public:
    using Choice = std::function<void(Editor&, int button)>;
    // Escape chooses `escapeButton` (-1: none, the alert just closes with -1).
    Alert(std::string title, std::string message, std::vector<std::string> buttons, int escapeButton, Choice choice);
    bool handleKey(Editor& editor, const tui::KeyEvent& key) override;
    void draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const override;

private:
    std::string m_title, m_message;
    std::vector<std::string> m_buttons;
    int m_escape;
    int m_focus = 0;
    Choice m_choice;
};

class ListMenu final : public Modal {
public:
    using Choice = std::function<void(Editor&, int item)>;  // -1 when cancelled
    // Typing filters the items; `current` starts selected.
    ListMenu(std::string title, std::vector<std::string> items, int current, Choice choice);
    bool handleKey(Editor& editor, const tui::KeyEvent& key) override;
    bool handlePaste(Editor& editor, std::string_view text) override;
    void draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const override;

private:
    void refilter();
    std::string m_title;
    std::vector<std::string> m_items;
    std::string m_filter;
    std::vector<int> m_shown;  // indexes of the items that pass the filter
    int m_selected = 0;        // in m_shown
    mutable int m_top = 0;
    Choice m_choice;
};

// Breaks text into lines of at most `width` columns at spaces (and at its own line breaks).
std::vector<std::string> wrapText(std::string_view text, int width);

}  // namespace vx::editor
