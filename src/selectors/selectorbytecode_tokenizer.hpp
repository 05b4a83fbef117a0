// The selector tokenizer: bytes of selector text to the parser's token codes.
//
// Blanks separate tokens. A scope is a maximal run of bytes other than blanks and ",|&!*()".
// A "-" is an ordinary scope byte ("meta.tag-name", "a -x" is "a" then "-x") except when it
// stands alone between blanks ("a - b"), where it is the exclusion operator. A "-" that starts a
// token and is followed by a blank (without a blank before it) or by an operator byte stops the
// tokenizer: the tokens read so far are the whole input. Text ends at its first NUL byte.
#pragma once

#include <string_view>
#include <vector>

namespace vx {

// Token codes, in the parser's numbering; 0 ends the input.
enum SBCTokenCode : int {
    SBC_END = 0,
    SBC_COMMA = 1,
    SBC_MINUS = 2,
    SBC_JUXTAPOSITION = 3,  // never produced: gives the descendant rule its precedence
    SBC_BAR = 4,
    SBC_AND = 5,
    SBC_EXCLAIM = 6,
    SBC_STAR = 7,
    SBC_SCOPE = 8,
    SBC_L_PAREN = 9,
    SBC_R_PAREN = 10,
};

struct SBCToken {
    SBCTokenCode code = SBC_END;
    std::string_view text;  // the token's bytes, a view into the tokenized text
};

// The tokens of text up to its end or to where the tokenizer stops; no end token is appended.
std::vector<SBCToken> SBCTokenize(std::string_view text);

}  // namespace vx
