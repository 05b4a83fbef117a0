#include "selectors/selectorbytecode_parser.hpp"

#include <algorithm>
#include <utility>
#include <vector>

namespace vx {

struct SBCParser {
    struct Token {
        SBCTokenCode code;
        VXScope scope;
    };
    std::vector<Token> tokens;
};

namespace {

// Deeper selectors than this do not compile: the parser's recursion and the interpreter's both
// follow the nesting, and nobody writes selectors anywhere near it.
constexpr int kMaxNesting = 256;

struct SyntaxError {};

// A compiled term and how deeply its code nests.
struct Fragment {
    sbc_code code;
    int depth = 1;
};

sbc_encoded_ instruction(sbci_routine fn) {
    sbc_encoded_ slot;
    slot.fn = fn;
    return slot;
}

// Appends the parts in order; each part is a routine or a fragment. The result nests one level
// deeper than its deepest fragment.
class Emitter {
public:
    Emitter& operator<<(sbci_routine fn) {
        m_result.code.push_back(instruction(fn));
        return *this;
    }
    Emitter& operator<<(const Fragment& fragment) {
        m_result.code.insert(m_result.code.end(), fragment.code.begin(), fragment.code.end());
        m_result.depth = std::max(m_result.depth, fragment.depth + 1);
        return *this;
    }
    Fragment take() {
        if (m_result.depth > kMaxNesting) throw SyntaxError{};
        return std::move(m_result);
    }

private:
    Fragment m_result;
};

class Parser {
public:
    explicit Parser(const std::vector<SBCParser::Token>& tokens) : m_tokens(tokens) {}

    sbc_code parseRoot() {
        if (peek() == SBC_END) return {instruction(sbci_false)};
        Fragment result = parseSelector();
        if (peek() != SBC_END) throw SyntaxError{};
        return std::move(result.code);
    }

private:
    SBCTokenCode peek() const { return m_next < m_tokens.size() ? m_tokens[m_next].code : SBC_END; }
    const SBCParser::Token& take() { return m_tokens[m_next++]; }
    void expect(SBCTokenCode code) {
        if (peek() != code) throw SyntaxError{};
        ++m_next;
    }

    // A , B  ->  branch A true B
    Fragment parseSelector() {
        Fragment result = parseOuter();
        while (peek() == SBC_COMMA) {
            ++m_next;
            Fragment next = parseOuter();
            result = (Emitter() << sbci_branch << result << sbci_true << next).take();
        }
        return result;
    }

    // A - B  ->  branch A (branch B false true) false
    Fragment parseOuter() {
        Fragment result = parseMiddle(0);
        while (peek() == SBC_MINUS) {
            ++m_next;
            Fragment excluded = parseMiddle(0);
            result = (Emitter() << sbci_branch << result << sbci_branch << excluded << sbci_false << sbci_true
                                << sbci_false)
                         .take();
        }
        return result;
    }

    static bool startsInner(SBCTokenCode code) {
        return code == SBC_SCOPE || code == SBC_STAR || code == SBC_EXCLAIM || code == SBC_L_PAREN;
    }

    // X Y (X the outer element, Y the rest of the chain)  ->  branch Y (pop X) false
    Fragment parseMiddle(int nesting) {
        enterNesting(nesting);
        Fragment outer = parseInner(nesting + 1);
        if (!startsInner(peek())) return outer;
        Fragment rest = parseMiddle(nesting + 1);
        return (Emitter() << sbci_branch << rest << sbci_pop << outer << sbci_false).take();
    }

    // A | B  ->  branch A true (branch B true false)
    // A & B  ->  branch A (branch B true false) false
    Fragment parseInner(int nesting) {
        Fragment result = parseUnary(nesting);
        while (peek() == SBC_BAR || peek() == SBC_AND) {
            bool isOr = take().code == SBC_BAR;
            Fragment right = parseUnary(nesting);
            Emitter both;
            if (isOr)
                both << sbci_branch << result << sbci_true << sbci_branch << right << sbci_true << sbci_false;
            else
                both << sbci_branch << result << sbci_branch << right << sbci_true << sbci_false << sbci_false;
            result = both.take();
        }
        return result;
    }

    Fragment parseUnary(int nesting) {
        enterNesting(nesting);
        switch (peek()) {
        case SBC_STAR:
            ++m_next;
            return (Emitter() << sbci_true).take();
        case SBC_SCOPE: {
            Fragment match = (Emitter() << sbci_match).take();
            sbc_encoded_ operand;
            operand.type = sbc_encoded_::kScopeOperand;
            operand.scope = take().scope;
            match.code.push_back(operand);
            return match;
        }
        case SBC_EXCLAIM: {  // ! A  ->  branch A false true
            ++m_next;
            Fragment negated = parseUnary(nesting + 1);
            return (Emitter() << sbci_branch << negated << sbci_false << sbci_true).take();
        }
        case SBC_L_PAREN: {
            ++m_next;
            Fragment inner = parseInner(nesting + 1);
            expect(SBC_R_PAREN);
            return inner;
        }
        default:
            throw SyntaxError{};
        }
    }

    static void enterNesting(int nesting) {
        if (nesting > kMaxNesting) throw SyntaxError{};
    }

    const std::vector<SBCParser::Token>& m_tokens;
    size_t m_next = 0;
};

}  // namespace

SBCParserPtr SBC_ParseAlloc() { return SBCParserPtr(std::make_unique<SBCParser>().release()); }

void SBC_ParseFree(SBCParser* parser) { std::unique_ptr<SBCParser> owned(parser); }

void SBC_Parse(SBCParser* parser, SBCTokenCode code, VXScope scope, SBCParseResult* result) {
    if (code != SBC_END) {
        parser->tokens.push_back({code, scope});
        return;
    }
    try {
        sbc_code built = Parser(parser->tokens).parseRoot();
        if (result) *result = {std::move(built), false};
    } catch (const SyntaxError&) {
        if (result) *result = {{}, true};
    }
    parser->tokens.clear();
}

}  // namespace vx
