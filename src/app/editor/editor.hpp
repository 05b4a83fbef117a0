// The editor: its tabs, the key bindings and commands, the modal prompts, the message line, and
// drawing a frame. It knows nothing of the real terminal: input arrives as decoded events and
// output is a Screen, so the terminal front end and the headless harness drive the same object.
//
//     row 0            tab bar
//     rows 1..h-3      text, with line numbers in a gutter
//     row h-2          status bar: file, modified mark, line:column, indentation, encoding, line ends, language
//     row h-1          message line, or the prompt being answered
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/editor/colors.hpp"
#include "app/editor/modal.hpp"
#include "document/document_hooks.hpp"
#include "editing/text_search.hpp"
#include "selectors/theme.hpp"
#include "snippets/snippet_catalog.hpp"
#include "app/editor/tab.hpp"
#include "app/tui/input_decoder.hpp"
#include "app/tui/key_bindings.hpp"
#include "app/tui/screen.hpp"

namespace vx::editor {

class Editor final : public AlertPresenter {
public:
    using Command = std::function<void(Editor&)>;
    // Handles some input while a modal question waits for its answer; false when no more input
    // will come (the terminal is gone, the key script has ended).
    using InputPump = std::function<bool()>;

    Editor();
    ~Editor();

    void setSize(int width, int height);
    tui::Point size() const { return {m_width, m_height}; }

    // Tabs.
    Tab& openTab(std::unique_ptr<Tab> tab);
    void closeTab(size_t index);
    size_t tabCount() const { return m_tabs.size(); }
    Tab& tab(size_t index) { return *m_tabs[index]; }
    Tab* activeTab() { return m_tabs.empty() ? nullptr : m_tabs[m_active].get(); }
    size_t activeIndex() const { return m_active; }
    void activateTab(size_t index);

    // Input. Events go to the modal being shown, else to the key bindings and commands.
    void handleEvent(const tui::InputEvent& event);
    void handleKey(const tui::KeyEvent& key);
    void runCommand(const std::string& name);
    // Text typed as one keystroke at every selection, through the typing aids.
    void typeText(std::u16string_view text);
    bool hasCommand(const std::string& name) const { return m_commands.count(name) != 0; }
    void addCommand(std::string name, Command command) { m_commands[std::move(name)] = std::move(command); }

    tui::KeyBindings& keyBindings() { return m_bindings; }
    void setKeyBindings(tui::KeyBindings bindings) { m_bindings = std::move(bindings); }

    // Modals and messages.
    void showModal(std::unique_ptr<Modal> modal) { m_modal = std::move(modal); }
    bool hasModal() const { return m_modal != nullptr; }
    // Shows an alert and handles input until it is answered; a question left unanswered (no more
    // input) answers `escapeButton`. The document's changed-on-disk check asks through this.
    size_t runAlert(const std::string& title, const std::string& message, const std::vector<std::string>& buttons,
                    size_t escapeButton);
    size_t runCriticalAlert(const std::string& title, const std::string& message,
                            const std::vector<std::string>& buttons) override {
        return runAlert(title, message, buttons, 0);
    }
    void setInputPump(InputPump pump) { m_pump = std::move(pump); }
    void showMessage(std::string text) { m_message = {std::move(text), false}; }
    void showError(std::string text) { m_message = {std::move(text), true}; }
    const std::string& message() const { return m_message.text; }

    // The internal clipboard; copying also asks the terminal to set its own (OSC 52).
    const std::u16string& clipboard() const { return m_clipboard; }
    // The texts of the selections it was copied from (one for a single selection).
    const std::vector<std::u16string>& clipboardPieces() const { return m_clipboardPieces; }
    void setClipboard(std::u16string text);
    // Copied from several selections: the pieces, and joined with line breaks for one selection.
    void setClipboard(std::vector<std::u16string> pieces, std::u16string_view lineBreak);
    // Escape sequences for the terminal beyond the frame itself (OSC 52), taken by the front end.
    std::string takeTerminalRequests() { return std::exchange(m_terminalRequests, {}); }

    // Find.
    // Finds the query from the selection (wrapping round); on a large text the search goes on
    // between frames, and a new search or cancelFind() drops it.
    void findNext(bool forward);
    void cancelFind() { m_search.reset(); }
    const std::u16string& findQuery() const { return m_findQuery; }
    void setFindQuery(std::u16string query) { m_findQuery = std::move(query); }

    void requestQuit() { m_quitRequested = true; }
    bool quitRequested() const { return m_quitRequested; }

    // The snippets that triggers and the snippet list choose from: the truffles' unless set.
    const VXSnippetCatalog& snippetCatalog() const { return m_snippetCatalog ? *m_snippetCatalog : VXSnippetCatalog::sharedCatalog(); }
    void setSnippetCatalog(const VXSnippetCatalog* catalog) { m_snippetCatalog = catalog; }

    EditorColors& colors() { return m_colors; }
    Layout layout() const;
    void draw(tui::Screen& screen);

    // Scrolls the active tab so its caret shows; commands call it after moving the caret.
    void revealCaret();

    // Work left for between frames (colouring lines that are out of a frame's reach); each step
    // takes about `budget`. The front end runs steps while it is idle; the headless session runs
    // them all before reading the screen.
    bool hasBackgroundWork();
    void doBackgroundWork(std::chrono::microseconds budget);
    void setScopeStyler(std::unique_ptr<ScopeStyler> styler) { m_styler = std::move(styler); }
    // Draws text and the editor's own parts in a theme's colours.
    void applyTheme(const std::shared_ptr<VXTheme>& theme);

private:
    // After every command: a snippet being filled in updates its mirrors, or ends when the
    // caret has left it.
    void snippetCommandDidFinish();
    void handleMouse(const tui::MouseEvent& mouse);
    void handlePaste(const std::string& text);
    void drawTabBar(tui::Screen& screen, const Layout& layout);
    void drawText(tui::Screen& screen, const Layout& layout);
    void drawStatusBar(tui::Screen& screen, const Layout& layout);
    void drawMessageLine(tui::Screen& screen, const Layout& layout);

    struct Message {
        std::string text;
        bool isError = false;
    };

    int m_width = 80, m_height = 24;
    std::vector<std::unique_ptr<Tab>> m_tabs;
    size_t m_active = 0;
    std::map<std::string, Command> m_commands;
    tui::KeyBindings m_bindings;
    std::unique_ptr<Modal> m_modal;
    Message m_message;
    std::u16string m_clipboard;
    std::vector<std::u16string> m_clipboardPieces;
    std::string m_terminalRequests;
    std::u16string m_findQuery;
    std::optional<editing::TextSearch> m_search;  // a find still under way
    Tab* m_searchTab = nullptr;
    void continueFind(std::chrono::microseconds budget);
    EditorColors m_colors;
    std::unique_ptr<ScopeStyler> m_styler;
    InputPump m_pump;
    const VXSnippetCatalog* m_snippetCatalog = nullptr;
    bool m_quitRequested = false;
    bool m_dragging = false;
    std::optional<std::pair<uint64_t, uint64_t>> m_columnDragAnchor;  // line and column of an Alt-drag
    std::vector<std::pair<int, int>> m_tabBarSpans;  // columns of each tab's title, for clicks
};

// Register the built-in commands on an editor: editing, moving, finding and tabs; the document's
// encoding, line endings and the check for changes on disk.
void registerEditingCommands(Editor& editor);
// Several selections, the line transforms and the text recipes.
void registerSelectionCommands(Editor& editor);
void registerDocumentCommands(Editor& editor);

}  // namespace vx::editor
