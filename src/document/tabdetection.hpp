// Indentation detection over a document's text, and the gate that keeps highlighting off for
// texts it would choke on.
//
// `detect` reads the leading whitespace of every line and answers whether the text indents with
// tabs or with spaces and, for spaces, the most likely width of one level:
//
//     def f():                 (spaces 0)    ignored: not indented
//         if x:                (spaces 4)    space line, count 4
//             return 1         (spaces 8)    space line, count 8
//     \t# comment              ignored: its first other character is "#"
//
// Lines whose first character after the leading run is LF, CR, "#" or "/" are skipped, so blank
// lines and comment blocks (whose continuation lines are often aligned one column off) do not vote.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace vx {

struct TabDetectionResult {
    uint32_t undecided = 1;       // 1 when the text gives no verdict
    uint32_t usesSpaces = 0;      // 0 tabs, 1 spaces
    double ratio = 0;             // share of indented lines using the winning character
    int64_t width = 0;            // detected width of one level (spaces only); 1 when none stood out
    double widthConfidence = 0;   // how well `width` fits the space counts (spaces only)

    friend bool operator==(const TabDetectionResult&, const TabDetectionResult&) = default;
};

// Both read UTF-16 code units; neither keeps the pointer.
TabDetectionResult detect(const unsigned short* text, unsigned long length);
bool shouldHighlight(const unsigned short* text, unsigned long length);

// The same over a text handed over in pieces (an empty piece ends it); every piece but the last
// ends with a line feed, so that no line is split. Large documents are read this way, a block of
// lines at a time, instead of being copied whole.
TabDetectionResult detectInPieces(const std::function<std::u16string_view()>& nextPiece);

inline TabDetectionResult detect(std::u16string_view text) {
    return detect(reinterpret_cast<const unsigned short*>(text.data()), text.size());
}
inline bool shouldHighlight(std::u16string_view text) {
    return shouldHighlight(reinterpret_cast<const unsigned short*>(text.data()), text.size());
}

// Texts of this many UTF-16 units or more are never highlighted.
inline constexpr unsigned long kHighlightLengthLimit = 2'097'152;

}  // namespace vx
