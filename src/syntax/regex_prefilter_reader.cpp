// Reading an expression into a prefilter (see regex_prefilter.hpp): what its matches begin with,
// the character before them, and its chain of runs and required characters.
#include "syntax/regex_prefilter.hpp"

#include <vector>

namespace vx {
namespace {

bool isAsciiLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

VXCharFilter single(char16_t c, bool caseInsensitive) {
    VXCharFilter set;
    if (c >= 128) {
        set.other = true;
        return set;
    }
    set.ascii[c] = true;
    if (caseInsensitive && isAsciiLetter(c)) {
        set.ascii[c ^ 0x20] = true;
        set.other = true;  // the Kelvin sign folds to "k", the long s to "s"
    }
    return set;
}

VXCharFilter range(char16_t from, char16_t to) {
    VXCharFilter set;
    for (char16_t c = from; c <= to && c < 128; ++c) set.ascii[c] = true;
    if (to >= 128) set.other = true;
    return set;
}

VXCharFilter operator|(VXCharFilter a, const VXCharFilter& b) {
    a.ascii |= b.ascii;
    a.other = a.other || b.other;
    return a;
}

// Everything outside the ASCII part of `set`; units beyond ASCII always stay possible.
VXCharFilter complement(const VXCharFilter& set) {
    VXCharFilter out;
    out.ascii = ~set.ascii;
    out.other = true;
    return out;
}

VXCharFilter wordCharacters() { return range(u'a', u'z') | range(u'A', u'Z') | range(u'0', u'9') | single(u'_', false); }

// The sets of the shorthand classes, with every non-ASCII unit allowed (Unicode letters,
// digits and spaces belong to them).
std::optional<VXCharFilter> shorthandClass(char16_t letter) {
    VXCharFilter set;
    switch (letter | 0x20) {
    case u'w': set = wordCharacters(); break;
    case u'd': set = range(u'0', u'9'); break;
    case u'h': set = range(u'0', u'9') | range(u'a', u'f') | range(u'A', u'F'); break;
    case u's': set = range(u'\t', u'\r') | single(u' ', false); break;
    default: return std::nullopt;
    }
    set.other = true;
    if (letter >= u'A' && letter <= u'Z') return complement(set);
    return set;
}

std::optional<char16_t> controlEscape(char16_t letter) {
    switch (letter) {
    case u't': return u'\t';
    case u'n': return u'\n';
    case u'r': return u'\r';
    case u'f': return u'\f';
    case u'v': return u'\v';
    case u'a': return u'\a';
    case u'e': return u'\x1B';
    default: return std::nullopt;
    }
}

// What a piece of expression can match: the units its matches begin with, whether it can
// match nothing, and whether it always matches exactly one character.
// `exact` when the ASCII part of `first` is exactly the ASCII characters a one-character piece
// matches (a look-behind that must not match relies on it).
struct Piece;
struct Info {
    VXCharFilter first;
    bool nullable = true;
    bool oneCharacter = false;
    bool exact = true;
    // Every unit the piece can consume, and whether its ASCII part is exactly that.
    VXCharFilter alphabet;
    bool alphabetExact = true;
    // A positive look-ahead (zero-width itself): what it looks at, whose pieces are `pieces`.
    bool lookAhead = false;
    VXCharFilter aheadFirst;
    bool aheadNullable = true;
    // A sequence's pieces in order (empty for alternatives of several branches).
    std::vector<Piece> pieces;
    bool isolatedOptions = false;  // "(?i)": the rest of the group is read under new options
    bool isolatedCaseInsensitive = false;
};

// One item of a sequence, as the chain of runs (VXRegexPrefilter::chain) sees it.
struct Piece {
    enum Kind { Transparent, Single, Run, LookAhead, Other } kind = Other;
    Info info;
};

Info consuming(const VXCharFilter& set, bool exact = true) {
    Info info;
    info.first = set;
    info.nullable = false;
    info.oneCharacter = true;
    info.exact = exact;
    info.alphabet = set;
    info.alphabetExact = exact;
    return info;
}
// Something that matches at least one character, of any kind and perhaps several (a letter
// beyond ASCII with case ignored: "ß" matches "ss").
Info anything() {
    Info info = consuming(VXCharFilter::everything(), false);
    info.oneCharacter = false;
    return info;
}
// An escape the analysis does not know: perhaps a test that matches nothing (\y), perhaps
// several characters (\R matches CR LF).
Info unknown() {
    Info info = anything();
    info.nullable = true;
    return info;
}
const Info kZeroWidth{};

bool disjointInAscii(const VXCharFilter& a, const VXCharFilter& b) { return (a.ascii & b.ascii).none(); }

class Analyzer {
public:
    Analyzer(std::u16string_view text, bool caseInsensitive) : m_text(text), m_caseInsensitive(caseInsensitive) {}

    std::optional<VXRegexPrefilter> run() {
        auto info = alternation(0, true);
        if (!info || m_failed || m_at != m_text.size() || info->nullable || info->first.isEverything()) return std::nullopt;
        VXRegexPrefilter filter;
        filter.first = info->first;
        if (!m_topLevelAlternation && m_leadingPrevious) {
            filter.constrainsPrevious = true;
            filter.previous = *m_leadingPrevious;
            filter.atLineStart = m_leadingAtLineStart;
        }
        if (!m_topLevelAlternation) buildChain(info->pieces, filter.chain);
        return filter;
    }

    // The pieces of the expression as runs and required characters: each run's members are
    // those of consecutive pieces that consume only units known exactly; a piece of one
    // character that no member of the run before it can be ends a stage, since a match must
    // have it exactly where the run ends. A positive look-ahead's pieces continue the chain
    // (and end it: what follows the look-ahead starts where it started).
    static void buildChain(const std::vector<Piece>& pieces, std::vector<VXRegexPrefilter::Stage>& chain) {
        std::vector<const Piece*> flat;
        for (const Piece& piece : pieces) {
            if (piece.kind == Piece::LookAhead && !piece.info.aheadNullable && !piece.info.pieces.empty()) {
                for (const Piece& inner : piece.info.pieces) flat.push_back(&inner);
                break;
            }
            flat.push_back(&piece);
            if (piece.kind == Piece::LookAhead && !piece.info.aheadNullable) break;
        }
        VXCharFilter run;
        for (const Piece* piece : flat) {
            if (chain.size() == VXRegexPrefilter::kMaxStages) return;
            const Info& info = piece->info;
            switch (piece->kind) {
            case Piece::Transparent:
                continue;
            case Piece::LookAhead:
                if (info.aheadNullable) continue;
                if (disjointInAscii(info.aheadFirst, run)) chain.push_back({run, info.aheadFirst, false});
                return;
            case Piece::Other:
                // Not a piece the chain can step over: its first unit ends the last stage.
                if (!info.nullable && disjointInAscii(info.first, run)) chain.push_back({run, info.first, false});
                return;
            case Piece::Run:
                if (!info.alphabetExact) return;
                run = run | info.alphabet;
                continue;
            case Piece::Single:
                if (chain.size() == VXRegexPrefilter::kMaxStages) return;
                if (disjointInAscii(info.first, run)) {
                    chain.push_back({run, info.first, true});
                    run = VXCharFilter();
                } else if (info.alphabetExact) {
                    run = run | info.alphabet;  // read as part of the run: weaker, still true
                } else {
                    return;
                }
                continue;
            }
        }
    }

private:
    static constexpr int kMaxDepth = 200;

    bool atEnd() const { return m_at >= m_text.size(); }
    char16_t peek(size_t ahead = 0) const { return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : 0; }
    std::nullopt_t fail() {
        m_failed = true;
        return std::nullopt;
    }

    // Branches separated by "|", up to a ")" or the end.
    std::optional<Info> alternation(int depth, bool topLevel) {
        if (depth > kMaxDepth) return fail();
        auto info = sequence(depth, topLevel);
        if (!info) return std::nullopt;
        while (peek() == u'|' && !atEnd()) {
            ++m_at;
            if (topLevel) m_topLevelAlternation = true;
            auto next = sequence(depth, false);
            if (!next) return std::nullopt;
            info->first = info->first | next->first;
            info->nullable = info->nullable || next->nullable;
            info->oneCharacter = info->oneCharacter && next->oneCharacter;
            info->exact = info->exact && next->exact;
            info->alphabet = info->alphabet | next->alphabet;
            info->alphabetExact = info->alphabetExact && next->alphabetExact;
            info->pieces.clear();
        }
        return info;
    }

    std::optional<Info> sequence(int depth, bool topLevel) {
        Info info;
        size_t items = 0;
        bool onlyItemIsOneCharacter = false;
        bool leading = topLevel;  // nothing that consumes seen yet at the expression's start
        while (!atEnd() && peek() != u'|' && peek() != u')') {
            bool lookBehind = false;
            auto item = atom(depth, lookBehind, leading);
            if (!item) return std::nullopt;
            const bool single = item->oneCharacter;
            const size_t afterAtom = m_at;
            Piece::Kind kind = Piece::Other;
            if (item->isolatedOptions) {
                // As the expression engine reads it: the rest of the group, alternatives
                // included, is one group under the new options.
                const bool saved = m_caseInsensitive;
                m_caseInsensitive = item->isolatedCaseInsensitive;
                item = alternation(depth + 1, false);
                m_caseInsensitive = saved;
                if (!item) return std::nullopt;
                item->oneCharacter = false;
                item->isolatedOptions = true;
            } else if (lookBehind && isQuantifier(peek())) {
                return fail();  // an optional look-behind constrains nothing
            } else if (!quantifiers(*item)) {
                return std::nullopt;
            }
            const bool quantified = m_at != afterAtom;
            ++items;
            onlyItemIsOneCharacter = item->oneCharacter;
            info.exact = info.exact && item->exact;
            info.alphabet = info.alphabet | item->alphabet;
            info.alphabetExact = info.alphabetExact && item->alphabetExact;
            if (item->lookAhead) kind = quantified ? Piece::Transparent : Piece::LookAhead;
            else if (lookBehind) kind = Piece::Transparent;
            else if (item->isolatedOptions) kind = Piece::Other;
            else if (item->oneCharacter) kind = Piece::Single;
            else if (single || item->alphabetExact) kind = Piece::Run;
            else if (item->nullable && item->first.ascii.none() && !item->first.other) kind = Piece::Transparent;
            info.pieces.push_back({kind, *item});
            if (info.nullable) info.first = info.first | item->first;
            info.nullable = info.nullable && item->nullable;
            const bool zeroWidth = item->nullable && !item->oneCharacter && item->first.ascii.none() && !item->first.other;
            if (!zeroWidth) leading = false;
        }
        info.oneCharacter = items == 1 && onlyItemIsOneCharacter;
        return info;
    }

    static bool isQuantifier(char16_t c) { return c == u'*' || c == u'+' || c == u'?' || c == u'{'; }

    // Quantifiers after an item: any that allows zero repetitions (or a "?" anywhere after
    // one, which the Ruby syntax may read as "optional") makes it nullable.
    bool quantifiers(Info& item) {
        for (;;) {
            const char16_t c = peek();
            if (atEnd()) return true;
            if (c == u'*' || c == u'?') {
                item.nullable = true;
                item.oneCharacter = false;
                ++m_at;
            } else if (c == u'+') {
                item.oneCharacter = false;
                ++m_at;
            } else if (c == u'{') {
                const auto minimum = interval();
                if (!minimum) return true;  // not an interval: a literal "{", read as an atom
                if (*minimum == 0) item.nullable = true;
                item.oneCharacter = false;
            } else {
                return true;
            }
        }
    }

    // "{n}", "{n,}", "{,m}" or "{n,m}": consumes it and answers n (0 when absent); nothing,
    // consuming nothing, when the brace does not begin an interval.
    std::optional<unsigned> interval() {
        size_t i = m_at + 1;
        unsigned minimum = 0;
        bool digitsBefore = false, comma = false, digitsAfter = false;
        while (i < m_text.size() && isDigit(m_text[i])) {
            minimum = minimum * 10 + (m_text[i] - u'0');
            if (minimum > 100000) return std::nullopt;
            digitsBefore = true;
            ++i;
        }
        if (i < m_text.size() && m_text[i] == u',') {
            comma = true;
            ++i;
            while (i < m_text.size() && isDigit(m_text[i])) {
                digitsAfter = true;
                ++i;
            }
        }
        if (i >= m_text.size() || m_text[i] != u'}') return std::nullopt;
        if (!digitsBefore && !(comma && digitsAfter)) return std::nullopt;
        m_at = i + 1;
        return minimum;
    }

    std::optional<Info> atom(int depth, bool& lookBehind, bool leading) {
        const char16_t c = peek();
        if (c == u'(') return group(depth, lookBehind, leading);
        ++m_at;
        switch (c) {
        case u'.': return consuming(VXCharFilter::everything());
        case u'^': case u'$': return kZeroWidth;
        case u'[': {
            auto set = characterClass();
            if (!set) return std::nullopt;
            return consuming(*set);
        }
        case u'\\': return escape();
        case u'*': case u'+': case u'?': return fail();  // nothing to repeat
        default: break;
        }
        if (c >= 0xD800 && c <= 0xDBFF && peek() >= 0xDC00 && peek() <= 0xDFFF) ++m_at;
        if (m_caseInsensitive && c >= 128) return anything();
        return consuming(single(c, m_caseInsensitive));
    }

    std::optional<Info> escape() {
        if (atEnd()) return fail();
        const char16_t c = m_text[m_at++];
        if (auto set = shorthandClass(c)) return consuming(*set);
        if (auto control = controlEscape(c)) return consuming(single(*control, false));
        switch (c) {
        case u'b': case u'B': case u'A': case u'z': case u'Z': case u'G': return kZeroWidth;
        case u'x': case u'u': {
            auto code = hexEscape(c);
            if (!code) return std::nullopt;
            if (m_caseInsensitive && *code >= 128) return anything();
            return consuming(single(static_cast<char16_t>(*code >= 128 ? 128 : *code), m_caseInsensitive));
        }
        default: break;
        }
        // Back-references, subexpression calls, \K and octal escapes: beyond the analysis.
        if (isDigit(c) || c == u'k' || c == u'g' || c == u'K') return fail();
        // Other letters (properties, \R, \X, \y, ...): beyond the analysis too, but only this
        // piece of the expression.
        if (isAsciiLetter(c)) return unknown();
        if (m_caseInsensitive && c >= 128) return anything();
        return consuming(single(c, m_caseInsensitive));
    }

    // After "\x" or "\u": the code point of "\x{H...}" or "\uHHHH" (a two-digit "\xHH"
    // names a byte, which UTF-16 expressions refuse).
    std::optional<uint32_t> hexEscape(char16_t kind) {
        auto hexValue = [](char16_t h) -> int {
            if (isDigit(h)) return h - u'0';
            if (h >= u'a' && h <= u'f') return h - u'a' + 10;
            if (h >= u'A' && h <= u'F') return h - u'A' + 10;
            return -1;
        };
        uint32_t code = 0;
        if (kind == u'x') {
            if (peek() != u'{') return fail();
            ++m_at;
            int digits = 0;
            while (!atEnd() && hexValue(peek()) >= 0 && digits < 8) {
                code = code * 16 + static_cast<uint32_t>(hexValue(m_text[m_at++]));
                ++digits;
            }
            if (digits == 0 || peek() != u'}') return fail();
            ++m_at;
            return code;
        }
        for (int digits = 0; digits < 4; ++digits) {
            if (atEnd() || hexValue(peek()) < 0) return fail();
            code = code * 16 + static_cast<uint32_t>(hexValue(m_text[m_at++]));
        }
        return code;
    }

    std::optional<Info> group(int depth, bool& lookBehind, bool leading) {
        ++m_at;  // "("
        if (peek() != u'?') return groupBody(depth);
        ++m_at;
        const char16_t kind = peek();
        if (kind == u':' || kind == u'>') {
            ++m_at;
            return groupBody(depth);
        }
        if (kind == u'=' || kind == u'!') {
            ++m_at;
            auto inner = groupBody(depth);
            if (!inner) return std::nullopt;
            if (kind == u'!') return kZeroWidth;
            Info ahead = kZeroWidth;
            ahead.lookAhead = true;
            ahead.aheadFirst = inner->first;
            ahead.aheadNullable = inner->nullable;
            ahead.pieces = std::move(inner->pieces);
            return ahead;
        }
        if (kind == u'#') {  // a comment
            while (!atEnd() && peek() != u')') ++m_at;
            if (atEnd()) return fail();
            ++m_at;
            // The engine drops a comment before reading on: a quantifier after it repeats
            // whatever came before the comment.
            if (isQuantifier(peek())) return fail();
            return kZeroWidth;
        }
        if (kind == u'<' && (peek(1) == u'=' || peek(1) == u'!')) {
            const bool negative = peek(1) == u'!';
            m_at += 2;
            auto inner = groupBody(depth);
            if (!inner) return std::nullopt;
            lookBehind = true;
            if (leading) recordLeadingLookBehind(*inner, negative);
            return kZeroWidth;
        }
        if (kind == u'<' || kind == u'\'') {  // a named group
            const char16_t close = kind == u'<' ? u'>' : u'\'';
            ++m_at;
            while (!atEnd() && peek() != close) ++m_at;
            if (atEnd()) return fail();
            ++m_at;
            return groupBody(depth);
        }
        // Options: (?i), (?-i), (?i:...), with "m" (dot matches a line break) allowed too.
        bool on = true, caseInsensitive = m_caseInsensitive;
        while (!atEnd() && peek() != u')' && peek() != u':') {
            const char16_t option = m_text[m_at++];
            if (option == u'-') on = false;
            else if (option == u'i') caseInsensitive = on;
            else if (option != u'm') return fail();  // free spacing and the rest: beyond the analysis
        }
        if (atEnd()) return fail();
        if (m_text[m_at++] == u')') {
            Info isolated = kZeroWidth;
            isolated.isolatedOptions = true;
            isolated.isolatedCaseInsensitive = caseInsensitive;
            return isolated;
        }
        const bool saved = m_caseInsensitive;
        m_caseInsensitive = caseInsensitive;
        auto inner = groupBody(depth);
        m_caseInsensitive = saved;
        return inner;
    }

    std::optional<Info> groupBody(int depth) {
        auto inner = alternation(depth + 1, false);
        if (!inner) return std::nullopt;
        if (peek() != u')' || atEnd()) return fail();
        ++m_at;
        return inner;
    }

    // A look-behind at the very start of the expression that tests one character tells what
    // the unit before a match can be.
    void recordLeadingLookBehind(const Info& inner, bool negative) {
        if (!inner.oneCharacter || (negative && !inner.exact)) return;
        VXCharFilter allowed = negative ? complement(inner.first) : inner.first;
        const bool atStart = negative;  // nothing before the line: "not x" holds, "x" does not
        if (m_leadingPrevious) {
            m_leadingPrevious->ascii &= allowed.ascii;
            m_leadingPrevious->other = m_leadingPrevious->other && allowed.other;
            m_leadingAtLineStart = m_leadingAtLineStart && atStart;
        } else {
            m_leadingPrevious = allowed;
            m_leadingAtLineStart = atStart;
        }
    }

    // After "[": the class's members, through its "]".
    std::optional<VXCharFilter> characterClass() {
        bool negated = false;
        if (peek() == u'^') {
            negated = true;
            ++m_at;
        }
        if (peek() == u']') return fail();  // a leading "]": read differently by different syntaxes
        VXCharFilter set;
        while (!atEnd() && peek() != u']') {
            if (peek() == u'&' && peek(1) == u'&') return fail();
            // POSIX brackets, and classes inside classes: Oniguruma reads nested negations in
            // ways a plain union and complement do not predict.
            if (peek() == u'[') return fail();
            std::optional<VXCharFilter> shorthand;
            auto from = classCharacter(shorthand);
            if (!from) {
                if (!shorthand) return std::nullopt;
                set = set | *shorthand;
                continue;
            }
            if (peek() == u'-' && m_at + 1 < m_text.size() && peek(1) != u']') {
                ++m_at;
                std::optional<VXCharFilter> notAllowed;
                auto to = classCharacter(notAllowed);
                if (!to || *to < *from) return fail();
                if (m_caseInsensitive && *to >= 128) return fail();
                const VXCharFilter members = range(static_cast<char16_t>(std::min<uint32_t>(*from, 0xFFFF)),
                                                   static_cast<char16_t>(std::min<uint32_t>(*to, 0xFFFF)));
                set = set | members;
                if (m_caseInsensitive)
                    for (char16_t c = 0; c < 128; ++c)
                        if (members.ascii[c]) set = set | single(c, true);
            } else {
                if (m_caseInsensitive && *from >= 128) return fail();
                set = set | single(static_cast<char16_t>(*from >= 128 ? 128 : *from), m_caseInsensitive);
            }
        }
        if (atEnd()) return fail();
        ++m_at;  // "]"
        if (!negated) return set;
        if (m_caseInsensitive) return fail();
        return complement(set);
    }

    // One member of a class: a code point, or (answering nothing) a shorthand class in
    // `shorthand`; nothing at all when beyond the analysis (m_failed is set then).
    std::optional<uint32_t> classCharacter(std::optional<VXCharFilter>& shorthand) {
        if (atEnd()) return fail();
        const char16_t c = m_text[m_at++];
        if (c >= 0xD800 && c <= 0xDBFF && peek() >= 0xDC00 && peek() <= 0xDFFF) {
            ++m_at;
            return 0x10000;
        }
        if (c != u'\\') return c;
        if (atEnd()) return fail();
        const char16_t e = m_text[m_at++];
        if (auto set = shorthandClass(e)) {
            if (m_caseInsensitive) return fail();
            shorthand = set;
            return std::nullopt;
        }
        if (auto control = controlEscape(e)) return *control;
        if (e == u'b') return u'\b';
        if (e == u'x' || e == u'u') return hexEscape(e);
        if (isAsciiLetter(e) || isDigit(e)) return fail();  // properties, octal, ...
        return e;
    }

    std::u16string_view m_text;
    size_t m_at = 0;
    bool m_caseInsensitive;
    bool m_failed = false;
    bool m_topLevelAlternation = false;
    std::optional<VXCharFilter> m_leadingPrevious;
    bool m_leadingAtLineStart = true;
};

}  // namespace

namespace {

// The expression without its top-level alternatives that are a bare "$", and whether it had
// any; nothing when every alternative is one.
std::optional<std::u16string> withoutLineEndAlternatives(std::u16string_view expression, bool& had) {
    std::vector<std::u16string_view> branches;
    int depth = 0;
    bool inClass = false;
    size_t start = 0;
    for (size_t i = 0; i < expression.size(); ++i) {
        const char16_t c = expression[i];
        if (c == u'\\') {
            ++i;  // the escaped unit is never structure
        } else if (inClass) {
            if (c == u']') inClass = false;
        } else if (c == u'[') {
            inClass = true;
        } else if (c == u'(') {
            ++depth;
        } else if (c == u')') {
            --depth;
        } else if (c == u'|' && depth == 0) {
            branches.push_back(expression.substr(start, i - start));
            start = i + 1;
        }
    }
    branches.push_back(expression.substr(start));
    std::u16string rest;
    size_t kept = 0;
    had = false;
    for (const auto& branch : branches) {
        if (branch == u"$") {
            had = true;
            continue;
        }
        if (kept++ > 0) rest += u'|';
        rest += branch;
    }
    if (!had || kept == 0) return std::nullopt;
    return rest;
}

}  // namespace

std::optional<VXRegexPrefilter> VXRegexPrefilterForExpression(std::u16string_view expression, bool caseInsensitive) {
    if (auto filter = Analyzer(expression, caseInsensitive).run()) return filter;
    // An end pattern that also closes at the line's end: the other alternatives are filtered
    // as usual and the line's end is always tried.
    bool hadLineEnd = false;
    const auto rest = withoutLineEndAlternatives(expression, hadLineEnd);
    if (!rest) return std::nullopt;
    auto filter = Analyzer(*rest, caseInsensitive).run();
    if (filter) filter->orLineEnd = true;
    return filter;
}

}  // namespace vx
