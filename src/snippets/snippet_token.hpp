// The snippet tokenizer: twelve tokens over UTF-16 code units, longest match first.
//
//     def %{1="foo"}(%{2}):      IDENT CHAR PERCENT_LCURLY NUMERIC OR_ELSE QUOTE IDENT QUOTE
//                                RCURLY CHAR PERCENT_LCURLY NUMERIC RCURLY CHAR OR_ELSE
//
// A candidate that cannot be finished (a backquote with no closing backquote before the next
// double quote or the end) falls back to a single CHAR for its first code unit.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vx {

// The numbers are the token codes the grammar is generated with (snippet_grammar.y checks them).
enum class SnippetTokenKind : uint8_t {
    End = 0,
    OrElse = 1,          // ":" or "="
    PercentLCurly = 2,   // "%{"
    RCurly = 3,          // "}"
    Numeric = 4,         // decimal digits
    Shell = 5,           // `command`
    Quote = 6,           // "
    Ident = 7,           // letter or _, then letters, digits, _ and .
    Slash = 8,           // /
    EscapedQuote = 9,    // \"
    EscapedBackslash = 10,
    EscapedSlash = 11,   // \/
    Char = 12,           // anything else, one code unit
};

// Trivial, because the generated parser keeps tokens in a union.
struct SnippetToken {
    SnippetTokenKind kind;
    uint32_t location;  // in UTF-16 code units
    uint32_t length;

    uint32_t end() const { return location + length; }
    std::u16string_view textIn(std::u16string_view source) const { return source.substr(location, length); }
};

// The token that starts at `position` (an End token at or past the end of the text).
SnippetToken nextSnippetToken(std::u16string_view text, uint32_t position);

// Where a token's text ends up: the three contexts treat escapes differently, so that only
// quoted strings unescape quote and backslash, and only regex parts unescape the slash (the
// regular-expression engine still sees its own escapes).
enum class TextContext { TopLevel, Quoted, Regex };

// The text a verbatim token stands for in a context.
std::u16string_view tokenTextInContext(const SnippetToken& token, std::u16string_view source, TextContext context);

// The command of a Shell token: what lies between the opening and the closing backquote.
std::u16string_view shellTokenScript(const SnippetToken& token, std::u16string_view source);

}  // namespace vx
