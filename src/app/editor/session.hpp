// The editor without a terminal: a key script goes in, a grid of cells comes out. The keystroke
// tests, the end-to-end checks and scripted edits all drive the editor through this.
//
// A key script is typed text with keys and events in angle brackets; line breaks in the script
// are ignored (press <enter> for one):
//
//     hello<enter>world<ctrl+s>        text and keys, named as in key-binding files
//     <lt>                             a literal "<"
//     <paste>any text</paste>          a bracketed paste, line breaks kept
//     <click 10,3> <shift+click 4,2> <drag 12,3> <release 12,3> <wheelup 0,5> <wheeldown 0,5>
//     <resize 100x30>
#pragma once

#include <deque>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/editor/editor.hpp"
#include "app/tui/input_decoder.hpp"
#include "app/tui/screen.hpp"

namespace vx::editor {

struct KeyScriptError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws KeyScriptError naming the token it could not read.
std::vector<tui::InputEvent> parseKeyScript(std::string_view script);

class Session {
public:
    Session(int width = 80, int height = 24);
    ~Session();

    Editor& editor() { return m_editor; }
    // Opens a tab on text that belongs to no file.
    Tab& openText(std::u16string_view text, Selection selection = {});

    void send(std::string_view keyScript);
    void send(const tui::InputEvent& event) { m_editor.handleEvent(event); }

    // The frame as the editor draws it now.
    const tui::Screen& screen();
    std::string row(int y) { return screen().rowText(y); }

private:
    Editor m_editor;
    tui::Screen m_screen;
    // Events not yet handled; a question asked in the middle of a script takes its answer from here.
    std::deque<tui::InputEvent> m_pending;
};

}  // namespace vx::editor
