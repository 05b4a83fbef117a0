// The commands that edit, move, find and switch tabs, by the names the key bindings use.
#include <algorithm>
#include <charconv>

#include "app/editor/editor.hpp"
#include "app/tui/utf8.hpp"

namespace vx::editor {
namespace {

// Runs `action` on the active tab, when there is one.
Editor::Command onTab(void (*action)(Tab&)) {
    return [action](Editor& editor) {
        if (Tab* tab = editor.activeTab()) action(*tab);
    };
}

// Scrolls by lines; a caret the scroll would leave off the screen comes along to the nearest
// line shown, so revealing the caret afterwards does not scroll back.
void scrollKeepingCaret(Editor& editor, int64_t lines) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    int rows = editor.layout().textRows;
    tab->scrollBy(lines, rows);
    uint64_t line = tab->caretLine();
    uint64_t first = tab->topLine, last = tab->topLine + static_cast<uint64_t>(std::max(rows, 1)) - 1;
    if (line < first || line > last) tab->placeCaret(std::clamp(line, first, last), tab->caretColumn(), false);
}

void registerMotions(Editor& editor) {
    static constexpr std::pair<const char*, Motion> kMotions[] = {
        {"left", Motion::Left}, {"right", Motion::Right}, {"up", Motion::Up}, {"down", Motion::Down},
        {"word-left", Motion::WordLeft}, {"word-right", Motion::WordRight},
        {"line-start", Motion::LineStart}, {"line-beginning", Motion::LineBeginning}, {"line-end", Motion::LineEnd},
        {"document-start", Motion::DocumentStart}, {"document-end", Motion::DocumentEnd},
    };
    for (auto [name, motion] : kMotions) {
        for (bool extend : {false, true}) {
            editor.addCommand(std::string(extend ? "select-" : "move-") + name, [motion, extend](Editor& e) {
                if (Tab* tab = e.activeTab()) tab->move(motion, extend, e.layout().textRows);
            });
        }
    }
    for (bool extend : {false, true}) {
        editor.addCommand(extend ? "select-page-up" : "page-up", [extend](Editor& e) {
            if (Tab* tab = e.activeTab()) tab->move(Motion::PageUp, extend, e.layout().textRows);
        });
        editor.addCommand(extend ? "select-page-down" : "page-down", [extend](Editor& e) {
            if (Tab* tab = e.activeTab()) tab->move(Motion::PageDown, extend, e.layout().textRows);
        });
    }
    editor.addCommand("scroll-up", [](Editor& e) { scrollKeepingCaret(e, -1); });
    editor.addCommand("scroll-down", [](Editor& e) { scrollKeepingCaret(e, 1); });
}

void copySelection(Editor& editor, bool cut) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    // Each selection's text; with nothing selected, the whole line with its line break.
    editor.setClipboard(tab->view().copyTexts(), tab->lineBreak());
    if (cut) tab->view().cut();
}

void startFind(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    // A selection within one line is what to find; otherwise the last query.
    std::u16string initial = editor.findQuery();
    std::u16string selected = tab->selectedText();
    if (!selected.empty() && selected.find_first_of(u"\r\n") == std::u16string::npos) initial = selected;
    Selection origin = tab->selection();
    auto incremental = [origin](Editor& e, const std::string& text) {
        // Each change searches again from where finding started.
        Tab* t = e.activeTab();
        if (!t) return;
        t->setSelection(Selection::caretAt(origin.range().location));
        e.setFindQuery(utf16FromUtf8(text));
        if (!text.empty()) e.findNext(true);
    };
    auto done = [origin](Editor& e, std::optional<std::string> text) {
        if (!text) {
            e.cancelFind();
            if (Tab* t = e.activeTab()) t->setSelection(origin);
            return;
        }
        e.setFindQuery(utf16FromUtf8(*text));
    };
    auto other = [](Editor& e, const tui::KeyEvent& key) {
        auto command = e.keyBindings().commandForKey(key);
        if (command == "find-next" || command == "find-previous") {
            e.findNext(*command == "find-next");
            return true;
        }
        return false;
    };
    // The previous query shows selected: typing starts a new one, a movement key keeps it.
    auto prompt = std::make_unique<LinePrompt>("Find: ", utf8FromUtf16(initial), done, incremental, other);
    prompt->selectingInitialText();
    editor.showModal(std::move(prompt));
}

void goToLine(Editor& editor) {
    editor.showModal(std::make_unique<LinePrompt>("Go to line: ", "", [](Editor& e, std::optional<std::string> text) {
        Tab* tab = e.activeTab();
        if (!tab || !text || text->empty()) return;
        uint64_t line = 0;
        auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), line);
        if (error != std::errc() || end != text->data() + text->size() || line == 0) {
            e.showError("Not a line number: " + *text);
            return;
        }
        line = std::min(line, tab->text().lineCount());
        tab->setSelection(Selection::caretAt(tab->text().lineStart(line - 1)));
        e.revealCaret();
    }));
}

void showHelp(Editor& editor) {
    std::vector<std::string> lines;
    for (const auto& command : editor.keyBindings().commands()) {
        std::string keys;
        for (const auto& key : editor.keyBindings().keysForCommand(command)) keys += (keys.empty() ? "" : ", ") + tui::keyName(key);
        lines.push_back(command + std::string(command.size() < 22 ? 22 - command.size() : 1, ' ') + keys);
    }
    editor.showModal(std::make_unique<ListMenu>("Key bindings (type to filter)", lines, 0, [](Editor& e, int item) {
        if (item < 0) return;
        // Enter runs the chosen command.
        auto commands = e.keyBindings().commands();
        if (static_cast<size_t>(item) < commands.size()) e.runCommand(commands[static_cast<size_t>(item)]);
    }));
}

}  // namespace

void registerEditingCommands(Editor& editor) {
    registerMotions(editor);
    editor.addCommand("undo", onTab([](Tab& t) { t.undo(); }));
    editor.addCommand("redo", onTab([](Tab& t) { t.redo(); }));
    editor.addCommand("newline", onTab([](Tab& t) { t.view().insertNewline(); }));
    editor.addCommand("indent", onTab([](Tab& t) { t.view().indent(); }));
    editor.addCommand("unindent", onTab([](Tab& t) { t.view().unindent(); }));
    editor.addCommand("delete-backward", onTab([](Tab& t) { t.view().deleteBackward(); }));
    editor.addCommand("delete-forward", onTab([](Tab& t) { t.view().deleteForward(); }));
    editor.addCommand("delete-word-backward", onTab([](Tab& t) { t.view().deleteWordBackward(); }));
    editor.addCommand("delete-word-forward", onTab([](Tab& t) { t.view().deleteWordForward(); }));
    editor.addCommand("select-all", onTab([](Tab& t) { t.view().selectAll(); }));
    editor.addCommand("copy", [](Editor& e) { copySelection(e, false); });
    editor.addCommand("cut", [](Editor& e) { copySelection(e, true); });
    editor.addCommand("paste", [](Editor& e) {
        Tab* tab = e.activeTab();
        if (!tab || e.clipboard().empty()) return;
        // One piece per selection when the counts match; otherwise the whole text at each.
        if (e.clipboardPieces().size() > 1 && e.clipboardPieces().size() == tab->view().selections().size())
            tab->view().insertTexts(e.clipboardPieces());
        else
            tab->insertText(e.clipboard());
    });
    editor.addCommand("cancel", onTab([](Tab& t) {
        t.cancelSnippetSession();
        t.view().collapseSelections();
    }));
    editor.addCommand("find", startFind);
    editor.addCommand("find-next", [](Editor& e) { e.findNext(true); });
    editor.addCommand("find-previous", [](Editor& e) { e.findNext(false); });
    editor.addCommand("go-to-line", goToLine);
    editor.addCommand("help", showHelp);
    editor.addCommand("next-tab", [](Editor& e) {
        if (e.tabCount()) e.activateTab((e.activeIndex() + 1) % e.tabCount());
    });
    editor.addCommand("previous-tab", [](Editor& e) {
        if (e.tabCount()) e.activateTab((e.activeIndex() + e.tabCount() - 1) % e.tabCount());
    });
    for (size_t i = 1; i <= 9; ++i)
        editor.addCommand("tab-" + std::to_string(i), [i](Editor& e) { e.activateTab(i - 1); });
}

}  // namespace vx::editor
