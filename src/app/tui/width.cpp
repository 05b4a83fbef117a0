#include "app/tui/width.hpp"

#include <unicode/uchar.h>

#include "app/tui/utf8.hpp"

namespace vx::tui {

int codepointWidth(char32_t c) {
    if (c >= 0x20 && c < 0x7f) return 1;
    if (c < 0x20 || (c >= 0x7f && c < 0xa0)) return 0;
    if (c == 0x00AD) return 1;  // the soft hyphen is shown where it stands
    auto cp = static_cast<UChar32>(c);
    // Hangul medial vowels and final consonants join the syllable before them.
    if (c >= 0x1160 && c < 0x1200) return 0;
    switch (u_charType(cp)) {
        case U_NON_SPACING_MARK:
        case U_ENCLOSING_MARK:
        case U_FORMAT_CHAR:
            return 0;
        default:
            break;
    }
    if (u_hasBinaryProperty(cp, UCHAR_EMOJI_PRESENTATION)) return 2;
    switch (u_getIntPropertyValue(cp, UCHAR_EAST_ASIAN_WIDTH)) {
        case U_EA_WIDE:
        case U_EA_FULLWIDTH:
            return 2;
        default:
            return 1;
    }
}

}  // namespace vx::tui

namespace vx::tui {

int stringWidth(std::string_view text) {
    int width = 0;
    for (size_t i = 0; i < text.size();) width += codepointWidth(decodeUtf8(text, i));
    return width;
}

}  // namespace vx::tui
