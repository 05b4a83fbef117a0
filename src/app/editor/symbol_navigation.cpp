#include "app/editor/symbol_navigation.hpp"

#include <filesystem>
#include <map>
#include <memory>

#include "app/editor/editor.hpp"
#include "app/editor/files.hpp"
#include "app/editor/symbol_panel.hpp"
#include "intelligence/index_paths.hpp"
#include "intelligence/indexing_controller.hpp"
#include "intelligence/kind_map.hpp"
#include "platform/run_loop.hpp"
#include "platform/unicode.hpp"
#include "projects/project.hpp"
#include "projects/project_root.hpp"

namespace vx::editor {
namespace {

// The folder of the project a file belongs to: the project quick open would use for it (see
// VXProjectManager::getOrCreateProjectForURL), so both look at the same files.
std::string projectRootForFile(const std::string& file) {
    if (auto project = VXProjectManager::sharedManager().getOrCreateProjectForURL(file)) return project->directoryURL;
    bool strong = false;
    return detectProjectURLForURL(file, strong);
}

// The projects of this editor's files and their index controllers, made on first use.
class SymbolNavigator {
public:
    SymbolNavigator() : m_news(std::make_shared<uint64_t>(0)) {}

    // The controller of the project that holds `path` (an untitled text belongs to the current
    // folder's project).
    VXXIndexingController& controllerFor(const std::string& path) {
        const std::string file = path.empty() ? std::filesystem::current_path().string() + "/untitled" : path;
        const std::string root = projectRootForFile(file);
        auto& controller = m_controllers[root];
        if (!controller) {
            controller = std::make_unique<VXXIndexingController>(root, VXDefaultIndexPathForDirectory(root));
            // The indexer answers on its own thread; the count moves on the main thread, where
            // the panels look at it before they draw.
            std::weak_ptr<uint64_t> news = m_news;
            controller->setReplyHandler([news](const VXBurrowerMessage&) {
                RunLoop::main().performBlock([news] {
                    if (auto counter = news.lock()) ++*counter;
                });
            });
        }
        return *controller;
    }

    // Sends the tab's current text to the indexer.
    VXXIndexingController& noteDocument(Tab& tab) {
        auto& controller = controllerFor(tab.path());
        VXIndexedDocument document;
        document.path = tab.path().empty() ? std::string() : VXStandardizedPath(tab.path());
        document.contents = utf8FromUtf16(tab.text().text());
        document.ctagsLanguage = tab.document().language().name;
        controller.documentDidChange(document);
        return controller;
    }

    std::shared_ptr<const uint64_t> news() const { return m_news; }

private:
    std::map<std::string, std::unique_ptr<VXXIndexingController>> m_controllers;
    std::shared_ptr<uint64_t> m_news;
};

// Opens the symbol's file (or shows its tab) and puts the caret on the symbol's name.
void goToSymbol(Editor& editor, const VXSymbol& symbol) {
    if (!symbol.path.empty() && (!editor.activeTab() || VXStandardizedPath(editor.activeTab()->path()) != symbol.path))
        if (!openFile(editor, symbol.path)) return;
    Tab* tab = editor.activeTab();
    if (!tab) return;
    const auto& text = tab->text();
    const uint64_t line = std::min<uint64_t>(symbol.rangeLine > 0 ? static_cast<uint64_t>(symbol.rangeLine - 1) : 0,
                                             text.lineCount() > 0 ? text.lineCount() - 1 : 0);
    const uint64_t start = text.lineStart(line);
    const uint64_t lineLength = text.lineContentRange(line).length;
    const uint64_t column = std::min<uint64_t>(static_cast<uint64_t>(std::max<int64_t>(symbol.rangeColumn, 0)), lineLength);
    const uint64_t length = std::min<uint64_t>(static_cast<uint64_t>(std::max<int64_t>(symbol.rangeLength, 0)), lineLength - column);
    tab->setSelection({start + column, start + column + length});
    editor.revealCaret();
}

bool isWordUnit(char16_t c) { return c == u'_' || c == u'$' || (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c > 0x7F; }

// The identifier the caret is in or just after.
std::string wordAtCaret(Tab& tab) {
    const auto& text = tab.text();
    const uint64_t caret = tab.selection().caret;
    const uint64_t line = text.lineForOffset(caret);
    const uint64_t lineStart = text.lineStart(line);
    const std::u16string content = text.lineText(line);
    size_t begin = static_cast<size_t>(caret - lineStart), end = begin;
    while (begin > 0 && isWordUnit(content[begin - 1])) --begin;
    while (end < content.size() && isWordUnit(content[end])) ++end;
    return utf8FromUtf16(std::u16string_view(content).substr(begin, end - begin));
}

template <class Keep>
std::vector<VXSymbol> keeping(std::vector<VXSymbol> symbols, Keep keep) {
    std::erase_if(symbols, [&](const VXSymbol& s) { return !keep(s.typeCode); });
    return symbols;
}

}  // namespace

void registerSymbolCommands(Editor& editor) {
    auto navigator = std::make_shared<SymbolNavigator>();

    editor.addCommand("go-to-symbol", [navigator](Editor& e) {
        Tab* tab = e.activeTab();
        if (!tab) return;
        auto& controller = navigator->noteDocument(*tab);
        VXXMainDatabase* index = &controller.database();
        const std::string path = tab->path().empty() ? std::string() : VXStandardizedPath(tab->path());
        auto source = [index, path](const std::string& query) { return rankSymbols(query, index->symbolsOfFile(path)); };
        e.showModal(std::make_unique<SymbolPanel>("Go to symbol", source, navigator->news(), goToSymbol, false));
    });

    editor.addCommand("go-to-definition", [navigator](Editor& e) {
        Tab* tab = e.activeTab();
        if (!tab) return;
        const std::string word = wordAtCaret(*tab);
        if (word.empty()) {
            e.showError("No name at the caret");
            return;
        }
        auto& controller = navigator->noteDocument(*tab);
        auto found = keeping(controller.database().symbolsNamed(word),
                             [](const std::string& type) { return !VXTypeCodeIsHiddenFromJumpToDefinition(type); });
        if (found.empty()) {
            e.showError("No definition of " + word + " in the project's index");
        } else if (found.size() == 1) {
            goToSymbol(e, found.front());
        } else {
            auto source = [found](const std::string& query) { return rankSymbols(query, found); };
            e.showModal(std::make_unique<SymbolPanel>("Definitions of " + word, source, nullptr, goToSymbol, true,
                                                      controller.directoryPath()));
        }
    });

    editor.addCommand("go-to-project-symbol", [navigator](Editor& e) {
        Tab* tab = e.activeTab();
        VXXIndexingController& controller = tab ? navigator->noteDocument(*tab) : navigator->controllerFor("");
        VXXMainDatabase* index = &controller.database();
        auto source = [index](const std::string& query) -> std::vector<VXSymbol> {
            if (query.empty()) return {};
            return rankSymbols(query, keeping(index->symbolsWithPrefix(query),
                                              [](const std::string& type) { return !VXTypeCodeIsHiddenFromSymbolList(type); }));
        };
        e.showModal(std::make_unique<SymbolPanel>("Go to symbol in project", source, navigator->news(), goToSymbol, true,
                                                  controller.directoryPath()));
    });
}

}  // namespace vx::editor
