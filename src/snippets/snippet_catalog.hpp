// The snippets of the truffles, and the choice among them at a place in a document.
//
//     <truffles>/<Truffle>/Snippets/<any name>.selfml
//         (scope [source.c, source.c++])                    where the file's snippets apply
//         (snippet (name [for loop]) (trigger for)          one snippet; (scope ...) of its own
//             (text [for (...) {                            is optional and replaces the file's
//         	%{0}
//         }]))
//
// One file holds any number of snippets. A snippet without a text is skipped; one without a
// trigger is inserted by name only. The user's truffles are read first, then the bundled ones;
// files in name order within a folder, snippets in file order. Among the snippets that fit, the
// best-match rule of scope selectors chooses, ties going to the one read first (so a snippet of
// your own replaces a bundled one with the same trigger and scope).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "selectors/selector.hpp"
#include "syntax/context.hpp"

namespace vx {

struct VXSnippetItem {
    std::string name;
    std::u16string trigger;
    std::string scope;  // the selector's text
    std::u16string text;
    std::string path;   // the file it came from
    const VXSelector* selector = nullptr;
};

class VXSnippetCatalog {
public:
    // The user's and the bundled truffles, read once.
    static const VXSnippetCatalog& sharedCatalog();

    void loadTruffleDirectories(const std::vector<std::string>& directories);
    // Reads one snippets file; answers how many snippets it added.
    size_t loadFile(const std::string& path);

    const std::vector<VXSnippetItem>& allSnippets() const { return m_snippets; }
    // The best snippet with this trigger at the context, or null.
    const VXSnippetItem* snippetForTrigger(std::u16string_view trigger, const VXContext& context) const;
    // Every snippet whose selector matches the context, by name.
    std::vector<const VXSnippetItem*> snippetsForContext(const VXContext& context) const;

private:
    std::vector<VXSnippetItem> m_snippets;
};

}  // namespace vx
