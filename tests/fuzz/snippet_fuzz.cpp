// Compile any text as a snippet and check what every compiled snippet promises: placed
// constructs lie inside the expanded text, come in text order, and sit inside their parent.
// The same bytes read as a dollar-syntax snippet must either fail to convert or convert to a
// snippet that parses. Expanding a compiled snippet (line breaks and tabs made a document's,
// variables resolved, shell commands left alone) keeps every living field inside the text and
// inside the field that encloses it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

#include "snippets/dollar_converter.hpp"
#include "snippets/snippet_expansion.hpp"
#include "snippets/snippet_parser.hpp"
#include "platform/unicode.hpp"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

void checkCompiled(const vx::CompiledSnippet& snippet) {
    if (snippet.failed) {
        check(snippet.constructs.empty());
        return;
    }
    std::map<const vx::SNConstruct*, size_t> indexOf;
    uint64_t lastLocation = 0;
    for (const auto& construct : snippet.constructs) {
        const vx::Range range = construct->range;
        check(construct->isPlaced());
        check(range.end() <= snippet.string.size());
        check(range.location >= lastLocation);
        lastLocation = range.location;
        if (auto parent = construct->parentConstruct()) {
            check(indexOf.contains(parent.get()));  // a parent comes before what it holds
            check(parent->range.location <= range.location && range.end() <= parent->range.end());
        }
        indexOf[construct.get()] = indexOf.size();
    }
}

void checkExpanded(const vx::CompiledSnippet& snippet) {
    vx::SnippetLayout layout{u"\r\n", u"\t ", 3, true};
    vx::SnippetExpansion expansion = vx::expandSnippet(snippet, vx::SnippetEnvironment{}, layout);
    check(!expansion.fields.empty() && expansion.fields[0].range == (vx::Range{0, expansion.text.size()}));
    for (const auto& field : expansion.fields) {
        if (!field.alive) continue;
        check(field.range.end() <= expansion.text.size());
        if (field.parent < 0) continue;
        const auto& parent = expansion.fields[static_cast<size_t>(field.parent)];
        check(!parent.alive || (parent.range.location <= field.range.location && field.range.end() <= parent.range.end()));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // As UTF-16 code units, so that lone surrogates and every unit value reach the tokenizer.
    std::u16string units(size / 2, u'\0');
    for (size_t i = 0; i + 1 < size; i += 2) units[i / 2] = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
    checkCompiled(VXNewSnippetParserCompile(units));

    // As UTF-8 text, the way snippets are written.
    std::u16string text = vx::utf16FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    vx::CompiledSnippet compiledText = VXNewSnippetParserCompile(text);
    checkCompiled(compiledText);
    checkExpanded(compiledText);
    vx::SnippetConversion converted = vx::convertDollarSnippet(text);
    if (converted.ok) {
        vx::CompiledSnippet compiled = VXNewSnippetParserCompile(converted.text);
        check(!compiled.failed);
        checkCompiled(compiled);
    }
    return 0;
}
