// The commands about the document as a file: its encoding, its line endings, and the check for
// changes another program made to it on disk.
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
        // One undo step for both the style and, when converting, the text.
        document.undoManager().beginUndoGrouping();
        if (item.convert) document.convertToLineEndings(item.type);
        document.setLineEndingType(item.type);
        document.undoManager().endUndoGrouping();
        t->setSelection(t->selection());
    }));
}

}  // namespace

void registerDocumentCommands(Editor& editor) {
    editor.addCommand("encoding-menu", showEncodingMenu);
    editor.addCommand("line-ending-menu", showLineEndingMenu);
    editor.addCommand("check-disk", [](Editor& e) {
        for (size_t i = 0; i < e.tabCount(); ++i) e.tab(i).endTyping();
        VXRefreshMonitor::sharedMonitor().promptImmediately();
    });
}

}  // namespace vx::editor
