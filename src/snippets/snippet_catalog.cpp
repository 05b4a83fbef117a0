#include "snippets/snippet_catalog.hpp"

#include <algorithm>
#include <filesystem>

#include "platform/paths.hpp"
#include "platform/unicode.hpp"
#include "selfml/sfonode.hpp"

namespace vx {

const VXSnippetCatalog& VXSnippetCatalog::sharedCatalog() {
    static const VXSnippetCatalog catalog = [] {
        VXSnippetCatalog loaded;
        // The user's first: between equally good matches the earlier snippet wins, and a snippet
        // of your own with a bundled one's trigger and scope should replace it.
        loaded.loadTruffleDirectories({userTrufflesDirectory(), bundledTrufflesDirectory()});
        return loaded;
    }();
    return catalog;
}

void VXSnippetCatalog::loadTruffleDirectories(const std::vector<std::string>& directories) {
    namespace fs = std::filesystem;
    std::error_code error;
    for (const auto& root : directories) {
        if (!fs::is_directory(root, error)) continue;
        std::vector<fs::path> truffles;
        for (const auto& entry : fs::directory_iterator(root, error)) truffles.push_back(entry.path());
        std::sort(truffles.begin(), truffles.end());
        for (const auto& truffle : truffles) {
            const fs::path folder = truffle / "Snippets";
            if (!fs::is_directory(folder, error)) continue;
            std::vector<fs::path> files;
            for (const auto& entry : fs::directory_iterator(folder, error))
                if (entry.path().extension() == ".selfml" && entry.is_regular_file(error)) files.push_back(entry.path());
            std::sort(files.begin(), files.end());
            for (const auto& file : files) loadFile(file.string());
        }
    }
}

size_t VXSnippetCatalog::loadFile(const std::string& path) {
    SFONodePtr root = SFONode::nodeWithContentsOfFile(path);
    const std::string fileScope = root->valueForKey("scope").value_or("");
    size_t added = 0;
    for (const SFONodePtr& node : root->extract("snippet")) {
        auto text = node->valueForKey("text");
        if (!text) continue;
        VXSnippetItem item;
        item.text = utf16FromUtf8(*text);
        item.trigger = utf16FromUtf8(node->valueForKey("trigger").value_or(""));
        item.name = node->valueForKey("name").value_or(node->valueForKey("trigger").value_or("snippet"));
        item.scope = node->valueForKey("scope").value_or(fileScope);
        item.path = path;
        item.selector = VXSelector::compileString(item.scope);
        m_snippets.push_back(std::move(item));
        ++added;
    }
    return added;
}

const VXSnippetItem* VXSnippetCatalog::snippetForTrigger(std::u16string_view trigger, const VXContext& context) const {
    if (trigger.empty()) return nullptr;
    std::vector<const VXSnippetItem*> candidates;
    for (const auto& item : m_snippets)
        if (item.trigger == trigger) candidates.push_back(&item);
    auto best = bestItemInArray(candidates, [](const VXSnippetItem* item) { return item->selector; }, context);
    return best ? *best : nullptr;
}

std::vector<const VXSnippetItem*> VXSnippetCatalog::snippetsForContext(const VXContext& context) const {
    const ContextScopes stack(context);
    std::vector<const VXSnippetItem*> out;
    for (const auto& item : m_snippets)
        if (item.selector->operateOnScopeStack(stack.scopes()) > 0) out.push_back(&item);
    std::stable_sort(out.begin(), out.end(), [](const VXSnippetItem* a, const VXSnippetItem* b) { return a->name < b->name; });
    return out;
}

}  // namespace vx
