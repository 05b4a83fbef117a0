#include "selectors/selectorbytecode_tokenizer.hpp"

#include <array>
#include <cstdint>

namespace vx {
namespace {

enum ByteClass : uint8_t { Scope, Blank, Minus, Comma, Bar, And, Exclaim, Star, LParen, RParen, End };

constexpr std::array<ByteClass, 256> makeClasses() {
    std::array<ByteClass, 256> classes{};
    for (ByteClass& c : classes) c = Scope;
    for (unsigned char b : {' ', '\t', '\n', '\v', '\f', '\r'}) classes[b] = Blank;
    classes['-'] = Minus;
    classes[','] = Comma;
    classes['|'] = Bar;
    classes['&'] = And;
    classes['!'] = Exclaim;
    classes['*'] = Star;
    classes['('] = LParen;
    classes[')'] = RParen;
    return classes;
}

constexpr std::array<ByteClass, 256> kClasses = makeClasses();

// The token each single-byte operator class stands for.
constexpr SBCTokenCode operatorToken(ByteClass c) {
    switch (c) {
    case Comma: return SBC_COMMA;
    case Bar: return SBC_BAR;
    case And: return SBC_AND;
    case Exclaim: return SBC_EXCLAIM;
    case Star: return SBC_STAR;
    case LParen: return SBC_L_PAREN;
    case RParen: return SBC_R_PAREN;
    default: return SBC_END;
    }
}

}  // namespace

std::vector<SBCToken> SBCTokenize(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    auto classAt = [&](size_t i) { return i < text.size() ? kClasses[static_cast<unsigned char>(text[i])] : End; };

    std::vector<SBCToken> tokens;
    size_t i = 0;
    while (true) {
        while (classAt(i) == Blank) ++i;
        ByteClass c = classAt(i);
        if (c == End) break;
        if (c == Minus) {
            ByteClass next = classAt(i + 1);
            if (next == Blank) {
                if (i == 0 || classAt(i - 1) != Blank) break;  // "-" glued to what precedes it
                tokens.push_back({SBC_MINUS, text.substr(i, 1)});
                ++i;
                continue;
            }
            if (next != Scope && next != Minus && next != End) break;  // "-" before an operator
        }
        if (c == Scope || c == Minus) {
            size_t start = i;
            while (classAt(i) == Scope || classAt(i) == Minus) ++i;
            tokens.push_back({SBC_SCOPE, text.substr(start, i - start)});
            continue;
        }
        tokens.push_back({operatorToken(c), text.substr(i, 1)});
        ++i;
    }
    return tokens;
}

}  // namespace vx
