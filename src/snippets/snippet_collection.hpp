// Snippet collections of other editors brought over as a snippets file of a truffle.
//
// The collection is JSON, one entry per snippet, as editors of the dollar-sign family keep it:
//
//     { "For loop": { "prefix": "for", "body": ["for (${1:i}) {", "\t$0", "}"],
//                     "description": "A for loop", "scope": "javascript,typescript" } }
//
// "prefix" (a string or a list: one snippet per trigger) and "body" (a string or a list of
// lines) are needed; "description" becomes a comment; "scope" names languages by their usual
// identifiers and becomes the snippet's scope selector when one of them is a language known
// here. Bodies are converted from the dollar-sign syntax; an entry that cannot be converted is
// left out, and the reason is reported.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vx {

struct SnippetCollectionConversion {
    std::string selfml;                 // the snippets file
    size_t converted = 0;               // snippets written
    std::vector<std::string> skipped;   // "name: reason", one per entry left out
    std::vector<std::string> notes;     // entries written with a change ("name: what")
    std::string error;                  // set when the text is not such a collection at all
};

// `scope` is the selector of the whole file (the language the collection is for); empty for
// everywhere.
SnippetCollectionConversion convertSnippetCollection(std::string_view json, std::string_view scope);

}  // namespace vx
