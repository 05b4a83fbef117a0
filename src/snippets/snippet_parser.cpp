#include "snippets/snippet_parser.hpp"

#include <cstdlib>

#include "platform/unique_handle.hpp"
#include "snippets/snippet_builder.hpp"
#include "snippets/snippet_grammar.h"
#include "snippets/snippet_syntax.hpp"

// The entry points lemon generates from snippet_grammar.y.
void* VXNewSnippet_ParseAlloc(void* (*allocate)(size_t));
void VXNewSnippet_ParseFree(void* parser, void (*release)(void*));
void VXNewSnippet_Parse(void* parser, int tokenCode, vx::SnippetToken token, vx::syntax::ParseState* state);

namespace {

using vx::SnippetTokenKind;
static_assert(SNIPPET_TOKEN_OR_ELSE == int(SnippetTokenKind::OrElse) && SNIPPET_TOKEN_CHAR == int(SnippetTokenKind::Char) &&
                  SNIPPET_TOKEN_PERCENT_LCURLY == int(SnippetTokenKind::PercentLCurly) &&
                  SNIPPET_TOKEN_ESCAPED_SLASH == int(SnippetTokenKind::EscapedSlash),
              "the tokenizer's codes must be the grammar's");

void freeParser(void* parser) { VXNewSnippet_ParseFree(parser, std::free); }
using ParserHandle = vx::UniqueHandle<void*, freeParser>;

}  // namespace

namespace vx::syntax {

void Sequence::appendText(std::u16string_view text) {
    if (text.empty()) return;
    if (pieces.empty() || pieces.back().construct) pieces.emplace_back();
    pieces.back().text += text;
}

void Sequence::appendConstruct(const Construct* construct) { pieces.push_back({{}, construct}); }

int64_t constructNumber(std::u16string_view digits) {
    uint64_t value = 0;
    for (char16_t digit : digits) {
        value = value * 10 + static_cast<uint64_t>(digit - u'0');
        if (value > static_cast<uint64_t>(INT64_MAX)) return INT64_MAX;
    }
    return static_cast<int64_t>(value);
}

}  // namespace vx::syntax

vx::CompiledSnippet VXNewSnippetParserCompile(std::u16string_view text) {
    vx::syntax::ParseState state;
    state.source = text;
    if (text.size() < UINT32_MAX) {
        ParserHandle parser(VXNewSnippet_ParseAlloc(std::malloc));
        if (!parser) state.failed = true;
        for (uint32_t position = 0; !state.failed;) {
            vx::SnippetToken token = vx::nextSnippetToken(text, position);
            VXNewSnippet_Parse(parser.get(), static_cast<int>(token.kind), token, &state);
            if (token.kind == SnippetTokenKind::End) break;
            position = token.end();
        }
    }
    // A snippet that does not parse inserts as the text it is, with no constructs: the user gets
    // what was written rather than nothing or a half-parsed remainder.
    if (state.failed || !state.result || text.size() >= UINT32_MAX)
        return vx::CompiledSnippet{std::u16string(text), {}, true};
    return vx::buildCompiledSnippet(*state.result);
}
