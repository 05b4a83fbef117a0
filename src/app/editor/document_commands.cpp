// The commands about the document as a file: its encoding, its line endings, its tab settings,
// and the check for changes another program made to it on disk.
#include <algorithm>
#include <charconv>

#include "app/editor/editor.hpp"
#include "document/encodings.hpp"
#include "document/line_endings.hpp"
#include "document/refresh_monitor.hpp"

namespace vx::editor {
namespace {

void showEncodingMenu(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    EncodingMenu menu = encodingMenuForDocument(tab->document().fileEncoding());
    uint64_t current = tab->document().fileEncoding() ? tab->document().fileEncoding() : encoding::kUTF8;
    int selected = 0;
    for (size_t i = 0; i < menu.encodings.size(); ++i)
        if (menu.encodings[i] == current) selected = static_cast<int>(i);
    editor.showModal(std::make_unique<ListMenu>("Save in the encoding", menu.names, selected, [menu](Editor& e, int item) {
        Tab* t = e.activeTab();
        if (!t || item < 0) return;
        const std::string& name = menu.names[static_cast<size_t>(item)];
        if (!t->document().setFileEncoding(menu.encodings[static_cast<size_t>(item)])) {
            e.showError("The text has characters that " + name + " cannot hold; the encoding stays as it was.");
            return;
        }
        e.showMessage("The file will be saved in " + name + ".");
    }));
}

void showLineEndingMenu(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    struct Item {
        const char* label;
        NewlineType type;
        bool convert;
    };
    static constexpr Item kItems[] = {
        {"LF (Unix): new line breaks", NewlineType::LF, false},
        {"CRLF (Windows): new line breaks", NewlineType::CRLF, false},
        {"CR (classic Mac): new line breaks", NewlineType::CR, false},
        {"Convert every line break to LF", NewlineType::LF, true},
        {"Convert every line break to CRLF", NewlineType::CRLF, true},
        {"Convert every line break to CR", NewlineType::CR, true},
    };
    std::vector<std::string> labels;
    int selected = 0;
    for (const auto& item : kItems) {
        if (!item.convert && item.type == tab->document().lineEndingType()) selected = static_cast<int>(labels.size());
        labels.push_back(item.label);
    }
    editor.showModal(std::make_unique<ListMenu>("Line endings", labels, selected, [](Editor& e, int index) {
        Tab* t = e.activeTab();
        if (!t || index < 0) return;
        const Item& item = kItems[index];
        VXSingleFileDocument& document = t->document();
        // Nothing to do is not a change: the text stays unmodified.
        const bool sameStyle = document.lineEndingType() == item.type;
        const bool textChanges = item.convert && document.lineBreaksDifferFrom(item.type);
        if (sameStyle && !textChanges) {
            e.showMessage(std::string("The line breaks are already ") + t->lineEndingName() + ".");
            return;
        }
        // One undo step for both the style and, when converting, the text.
        document.undoManager().beginUndoGrouping();
        if (item.convert) document.convertToLineEndings(item.type);
        document.setLineEndingType(item.type);
        document.undoManager().endUndoGrouping();
        t->setSelection(t->selection());
    }));
}

// Applies a tab setting to the tab's document, and for a language-wide choice records it in the
// scoped settings (for the file's extension and language, and as the global value too).
void applyTabSetting(Tab& tab, std::optional<uint64_t> tabSize, std::optional<bool> softTabs, bool forLanguage) {
    VXSingleFileDocument& document = tab.document();
    VXIndentationContext context = document.indentationContext();
    if (tabSize) context.tabSize = std::clamp<uint64_t>(*tabSize, 1, VXIndentationContext::kMaxTabSize);
    if (softTabs) context.useSoftTabs = *softTabs;
    document.setTabInfo(context);
    document.userHasChangedIndentationContext = true;
    if (forLanguage) {
        if (tabSize) document.setSetting(PropertyValue(context.tabSize), "VXTabSize", true);
        if (softTabs) document.setSetting(PropertyValue(*softTabs), "VXUseSoftTabs", true);
    }
    tab.setIndentation(static_cast<int>(context.tabSize), context.useSoftTabs);
}

// Asks whether a tab setting is for this file or for its language, then applies it.
void chooseTabSettingScope(Editor& editor, std::optional<uint64_t> tabSize, std::optional<bool> softTabs) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    const std::string language = tab->languageName();
    std::vector<std::string> scopes = {"For this file", "For every " + language + " file"};
    editor.showModal(std::make_unique<ListMenu>("Apply the setting", scopes, 0, [tabSize, softTabs](Editor& e, int item) {
        Tab* t = e.activeTab();
        if (!t || item < 0) return;
        applyTabSetting(*t, tabSize, softTabs, item == 1);
        e.showMessage(std::string(t->softTabs() ? "Spaces" : "Tabs") + ", tab size " + std::to_string(t->tabSize()) +
                      (item == 1 ? " for every " + t->languageName() + " file." : " for this file."));
    }));
}

void showTabSettingsMenu(Editor& editor) {
    Tab* tab = editor.activeTab();
    if (!tab) return;
    std::vector<std::string> items;
    for (int size = 1; size <= 8; ++size) items.push_back("Tab size " + std::to_string(size));
    items.push_back("Tab size: other...");
    items.push_back("Indent with spaces (soft tabs)");
    items.push_back("Indent with tabs");
    const int current = tab->tabSize() >= 1 && tab->tabSize() <= 8 ? tab->tabSize() - 1 : 8;
    editor.showModal(std::make_unique<ListMenu>("Tab settings", items, current, [](Editor& e, int item) {
        if (item < 0) return;
        if (item < 8) return chooseTabSettingScope(e, static_cast<uint64_t>(item + 1), std::nullopt);
        if (item == 9 || item == 10) return chooseTabSettingScope(e, std::nullopt, item == 9);
        e.showModal(std::make_unique<LinePrompt>("Tab size (1-18): ", "", [](Editor& e2, std::optional<std::string> text) {
            if (!text) return;
            uint64_t size = 0;
            auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), size);
            if (error != std::errc() || end != text->data() + text->size() || size == 0) {
                e2.showError("Not a tab size: " + *text);
                return;
            }
            chooseTabSettingScope(e2, size, std::nullopt);
        }));
    }));
}

}  // namespace

void registerDocumentCommands(Editor& editor) {
    editor.addCommand("encoding-menu", showEncodingMenu);
    editor.addCommand("line-ending-menu", showLineEndingMenu);
    editor.addCommand("tab-settings", showTabSettingsMenu);
    editor.addCommand("check-disk", [](Editor& e) {
        for (size_t i = 0; i < e.tabCount(); ++i) e.tab(i).endTyping();
        VXRefreshMonitor::sharedMonitor().promptImmediately();
    });
}

}  // namespace vx::editor
