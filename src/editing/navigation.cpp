#include "editing/navigation.hpp"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>

namespace vx {
namespace {

// Grapheme clusters are short; looking this far around the caret is enough and keeps a keystroke
// in a megabyte-long line cheap.
constexpr uint64_t kClusterWindow = 256;

icu::BreakIterator& characterBreaks() {
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        return std::unique_ptr<icu::BreakIterator>(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    }();
    return *iterator;
}

// The cluster boundary after (forward) or before `offset` within its line.
uint64_t clusterBoundary(const TextBuffer& text, uint64_t offset, bool forward) {
    uint64_t line = text.lineForOffset(offset);
    Range content = text.lineContentRange(line);
    uint64_t from = offset > content.location + kClusterWindow ? offset - kClusterWindow : content.location;
    uint64_t to = std::min(content.end(), offset + kClusterWindow);
    std::u16string window = text.substring({from, to - from});
    icu::UnicodeString string(false, window.data(), static_cast<int32_t>(window.size()));
    auto& breaks = characterBreaks();
    breaks.setText(string);
    auto local = static_cast<int32_t>(offset - from);
    int32_t result = forward ? breaks.following(local) : breaks.preceding(local);
    if (result == icu::BreakIterator::DONE) return forward ? to : from;
    return from + static_cast<uint64_t>(result);
}

char32_t codepointAt(const TextBuffer& text, uint64_t offset) {
    char16_t unit = text.characterAt(offset);
    if (unit >= 0xD800 && unit < 0xDC00 && offset + 1 < text.length()) {
        char16_t low = text.characterAt(offset + 1);
        if (low >= 0xDC00 && low < 0xE000) return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    }
    return unit;
}

enum class Kind { Blank, Word, Punctuation, LineBreak };

Kind kindAt(const TextBuffer& text, uint64_t offset) {
    char32_t c = codepointAt(text, offset);
    if (c == U'\n' || c == U'\r') return Kind::LineBreak;
    if (c == U' ' || c == U'\t') return Kind::Blank;
    return isWordCharacter(c) ? Kind::Word : Kind::Punctuation;
}

}  // namespace

bool isWordCharacter(char32_t c) {
    if (c < 0x80) return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z') || (c >= U'0' && c <= U'9') || c == U'_';
    return u_isalnum(static_cast<UChar32>(c)) || u_charType(static_cast<UChar32>(c)) == U_NON_SPACING_MARK;
}

uint64_t nextCaretPosition(const TextBuffer& text, uint64_t offset) {
    if (offset >= text.length()) return text.length();
    char16_t c = text.characterAt(offset);
    if (c == u'\r') return offset + 1 < text.length() && text.characterAt(offset + 1) == u'\n' ? offset + 2 : offset + 1;
    if (c == u'\n') return offset + 1;
    return clusterBoundary(text, offset, true);
}

uint64_t previousCaretPosition(const TextBuffer& text, uint64_t offset) {
    if (offset == 0) return 0;
    if (offset > text.length()) return text.length();
    char16_t c = text.characterAt(offset - 1);
    if (c == u'\n') return offset >= 2 && text.characterAt(offset - 2) == u'\r' ? offset - 2 : offset - 1;
    if (c == u'\r') return offset - 1;
    return clusterBoundary(text, offset, false);
}

uint64_t wordRight(const TextBuffer& text, uint64_t offset) {
    uint64_t length = text.length();
    if (offset >= length) return length;
    if (kindAt(text, offset) == Kind::LineBreak) return nextCaretPosition(text, offset);
    while (offset < length && kindAt(text, offset) == Kind::Blank) ++offset;
    if (offset >= length || kindAt(text, offset) == Kind::LineBreak) return offset;
    Kind run = kindAt(text, offset);
    while (offset < length && kindAt(text, offset) == run) offset = nextCaretPosition(text, offset);
    return offset;
}

uint64_t wordLeft(const TextBuffer& text, uint64_t offset) {
    if (offset == 0) return 0;
    uint64_t previous = previousCaretPosition(text, offset);
    if (kindAt(text, previous) == Kind::LineBreak) return previous;
    while (offset > 0 && kindAt(text, offset - 1) == Kind::Blank) --offset;
    if (offset == 0) return 0;
    previous = previousCaretPosition(text, offset);
    if (kindAt(text, previous) == Kind::LineBreak) return offset;
    Kind run = kindAt(text, previous);
    while (offset > 0) {
        previous = previousCaretPosition(text, offset);
        if (kindAt(text, previous) != run) break;
        offset = previous;
    }
    return offset;
}

uint64_t indentationLength(std::u16string_view line) {
    uint64_t length = 0;
    while (length < line.size() && (line[length] == u' ' || line[length] == u'\t')) ++length;
    return length;
}

}  // namespace vx
