#include "app/editor/snippet_commands.hpp"

#include "platform/unicode.hpp"
#include "snippets/snippet_catalog.hpp"
#include "snippets/snippet_parser.hpp"
#include "snippets/snippet_trigger.hpp"

namespace vx::editor {
namespace {

// What a snippet's variables and shell commands learn of the tab beyond its selections.
SnippetEnvironment environmentFor(Editor& editor, Tab& tab) {
    SnippetEnvironment environment;
    if (std::string path = tab.document().fileURL().value_or(""); !path.empty()) environment.filePath = utf16FromUtf8(path);
    if (!editor.clipboard().empty()) environment.clipboard = editor.clipboard();
    environment.runShellCommands = true;
    return environment;
}

void start(Editor& editor, Tab& tab, std::u16string_view text, std::vector<Range> ranges = {}, size_t primary = 0) {
    tab.endSnippetSession();
    auto session = VXSnippetSession::expand(tab.view(), VXNewSnippetParserCompile(text), environmentFor(editor, tab), std::move(ranges), primary);
    if (session && session->isActive()) tab.startSnippetSession(std::move(session));
}

// The session, unless the caret has left it since the last command (a click).
VXSnippetSession* liveSession(Tab& tab) {
    VXSnippetSession* session = tab.snippetSession();
    if (session) session->commandDidFinish();
    return tab.snippetSession();
}

// Expands the snippet whose trigger is the word before the primary caret, at every selection:
// the trigger word goes where it stands before a caret, elsewhere the snippet takes the
// selection's place (no selection is lost). False when no snippet has that trigger here.
bool expandTrigger(Editor& editor, Tab& tab) {
    const Selection primary = tab.view().selection();
    if (!primary.isEmpty()) return false;
    const TextBuffer& text = tab.text();
    const Range word = triggerBeforeCaret(text, primary.caret);
    if (word.length == 0) return false;
    const std::u16string trigger = text.substring(word);
    const VXSnippetItem* item = editor.snippetCatalog().snippetForTrigger(trigger, tab.contextAt(word.location));
    if (!item) return false;
    size_t primaryIndex = 0;
    std::vector<Range> ranges;
    size_t primaryRange = 0;
    const auto selections = tab.view().selections(&primaryIndex);
    for (size_t i = 0; i < selections.size(); ++i) {
        const Selection& selection = selections[i];
        const Range here = selection.isEmpty() ? triggerBeforeCaret(text, selection.caret) : selection.range();
        if (i == primaryIndex) primaryRange = ranges.size();
        ranges.push_back(text.substring(here) == trigger ? here : selection.range());
    }
    start(editor, tab, item->text, std::move(ranges), primaryRange);
    return true;
}

void tabKey(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    if (VXSnippetSession* session = liveSession(*tab)) {
        session->nextField();
        return;
    }
    if (!expandTrigger(editor, *tab)) tab->view().indent();
}

void backtabKey(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    if (VXSnippetSession* session = liveSession(*tab)) {
        session->previousField();
        return;
    }
    tab->view().unindent();
}

void chooseSnippet(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    const auto snippets = editor.snippetCatalog().snippetsForContext(tab->contextAt(tab->selection().range().location));
    if (snippets.empty()) {
        editor.showMessage("No snippets apply here");
        return;
    }
    std::vector<std::string> lines;
    for (const VXSnippetItem* item : snippets) {
        std::string line = item->name;
        if (!item->trigger.empty()) line += std::string(line.size() < 28 ? 28 - line.size() : 1, ' ') + utf8FromUtf16(item->trigger) + "⇥";
        lines.push_back(std::move(line));
    }
    editor.showModal(std::make_unique<ListMenu>("Insert snippet (type to filter)", lines, 0, [snippets](Editor& e, int chosen) {
        Tab* target = e.activeTab();
        if (chosen < 0 || !target || static_cast<size_t>(chosen) >= snippets.size()) return;
        start(e, *target, snippets[static_cast<size_t>(chosen)]->text);
        e.revealCaret();
    }));
}

}  // namespace

void insertSnippet(Editor& editor, std::u16string_view text) {
    if (Tab* tab = editor.activeTab()) start(editor, *tab, text);
}

void registerSnippetCommands(Editor& editor) {
    editor.addCommand("expand-snippet-or-indent", tabKey);
    editor.addCommand("previous-field-or-unindent", backtabKey);
    editor.addCommand("insert-snippet", chooseSnippet);
}

}  // namespace vx::editor
