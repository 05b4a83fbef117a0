// A table-driven tokenizer: each ASCII code unit has a class, and the class picks the scanner.
#include "snippets/snippet_token.hpp"

#include <array>

namespace vx {
namespace {

enum class CharClass : uint8_t { Other, Digit, Letter, Dot, OrElse, Percent, LCurly, RCurly, Backquote, Quote, Slash, Backslash };

constexpr std::array<CharClass, 128> makeClassTable() {
    std::array<CharClass, 128> table{};
    for (auto& entry : table) entry = CharClass::Other;
    for (char c = '0'; c <= '9'; ++c) table[c] = CharClass::Digit;
    for (char c = 'a'; c <= 'z'; ++c) table[c] = CharClass::Letter;
    for (char c = 'A'; c <= 'Z'; ++c) table[c] = CharClass::Letter;
    table['_'] = CharClass::Letter;
    table['.'] = CharClass::Dot;
    table[':'] = CharClass::OrElse;
    table['='] = CharClass::OrElse;
    table['%'] = CharClass::Percent;
    table['{'] = CharClass::LCurly;
    table['}'] = CharClass::RCurly;
    table['`'] = CharClass::Backquote;
    table['"'] = CharClass::Quote;
    table['/'] = CharClass::Slash;
    table['\\'] = CharClass::Backslash;
    return table;
}

constexpr std::array<CharClass, 128> kClassOf = makeClassTable();

CharClass classAt(std::u16string_view text, size_t position) {
    if (position >= text.size()) return CharClass::Other;
    char16_t unit = text[position];
    return unit < 128 ? kClassOf[unit] : CharClass::Other;
}

bool hasUnit(std::u16string_view text, size_t position, char16_t unit) {
    return position < text.size() && text[position] == unit;
}

// The end of a complete shell token starting at `start`, or 0 when the candidate fails.
size_t shellTokenEnd(std::u16string_view text, size_t start) {
    size_t position = start + 1;
    while (position < text.size() && text[position] != u'`' && text[position] != u'"') ++position;
    if (!hasUnit(text, position, u'`')) return 0;
    ++position;
    if (hasUnit(text, position, u'`')) ++position;  // a backquote right after the closing one joins the token
    return position;
}

}  // namespace

SnippetToken nextSnippetToken(std::u16string_view text, uint32_t position) {
    using enum SnippetTokenKind;
    if (position >= text.size()) return {End, static_cast<uint32_t>(text.size()), 0};
    auto token = [position](SnippetTokenKind kind, size_t end) {
        return SnippetToken{kind, position, static_cast<uint32_t>(end - position)};
    };
    size_t next = position + 1;
    switch (classAt(text, position)) {
    case CharClass::OrElse: return token(OrElse, next);
    case CharClass::RCurly: return token(RCurly, next);
    case CharClass::Quote: return token(Quote, next);
    case CharClass::Slash: return token(Slash, next);
    case CharClass::Percent: return hasUnit(text, next, u'{') ? token(PercentLCurly, next + 1) : token(Char, next);
    case CharClass::Digit:
        while (classAt(text, next) == CharClass::Digit) ++next;
        return token(Numeric, next);
    case CharClass::Letter:
        while (next < text.size()) {
            CharClass c = classAt(text, next);
            if (c != CharClass::Letter && c != CharClass::Digit && c != CharClass::Dot) break;
            ++next;
        }
        return token(Ident, next);
    case CharClass::Backquote:
        if (size_t end = shellTokenEnd(text, position)) return token(Shell, end);
        return token(Char, next);
    case CharClass::Backslash:
        if (hasUnit(text, next, u'"')) return token(EscapedQuote, next + 1);
        if (hasUnit(text, next, u'\\')) return token(EscapedBackslash, next + 1);
        if (hasUnit(text, next, u'/')) return token(EscapedSlash, next + 1);
        return token(Char, next);
    default: return token(Char, next);
    }
}

std::u16string_view tokenTextInContext(const SnippetToken& token, std::u16string_view source, TextContext context) {
    using enum SnippetTokenKind;
    switch (token.kind) {
    case EscapedQuote:
        if (context == TextContext::Quoted) return u"\"";
        break;
    case EscapedBackslash:
        if (context == TextContext::Quoted) return u"\\";
        break;
    case EscapedSlash:
        if (context == TextContext::Regex) return u"/";
        break;
    default: break;
    }
    return token.textIn(source);
}

std::u16string_view shellTokenScript(const SnippetToken& token, std::u16string_view source) {
    std::u16string_view text = token.textIn(source);
    size_t closing = text.find(u'`', 1);
    return closing == std::u16string_view::npos ? std::u16string_view{} : text.substr(1, closing - 1);
}

}  // namespace vx
