// Any bytes as a JSON snippet collection: either refused, or written as a snippets file that
// reads back with exactly as many snippets as the conversion says it wrote, each one parsing.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "selfml/sfonode.hpp"
#include "snippets/snippet_collection.hpp"
#include "snippets/snippet_parser.hpp"
#include "platform/unicode.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view json(reinterpret_cast<const char*>(data), size);
    vx::SnippetCollectionConversion result = vx::convertSnippetCollection(json, "source.c");
    if (!result.error.empty()) return 0;
    vx::SFONodePtr root = vx::SFONode::nodeFromString(result.selfml);
    const auto snippets = root->extract("snippet");
    if (snippets.size() != result.converted) std::abort();
    for (const auto& snippet : snippets) {
        auto text = snippet->valueForKey("text");
        if (!text || VXNewSnippetParserCompile(vx::utf16FromUtf8(*text)).failed) std::abort();
    }
    return 0;
}
