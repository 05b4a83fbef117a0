// What the editing operations need from a text: UTF-16 units with a line index and replacement.
// A document's text storage provides it; front ends never keep a copy of the text.
//
// Lines end at LF, CR or CRLF; a line's content excludes its break. Offsets and lengths are
// UTF-16 code units, as everywhere in the engine.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/range.hpp"

namespace vx {

class TextBuffer {
public:
    virtual ~TextBuffer() = default;

    virtual uint64_t length() const = 0;
    virtual std::u16string substring(Range range) const = 0;
    virtual char16_t characterAt(uint64_t offset) const = 0;
    // At least 1: an empty text, or one ending in a line break, has an empty last line.
    virtual uint64_t lineCount() const = 0;
    virtual uint64_t lineStart(uint64_t line) const = 0;
    virtual uint64_t lineForOffset(uint64_t offset) const = 0;
    virtual void replace(Range range, std::u16string_view text) = 0;
    // Replacements between these two belong to one edit (a keystroke at many carets): a text that
    // others follow may let them do their work once, at the end. Nested pairs count as one.
    virtual void beginBatch() {}
    virtual void endBatch() {}

    // The line's text without its line break.
    Range lineContentRange(uint64_t line) const {
        uint64_t start = lineStart(line);
        uint64_t end = line + 1 < lineCount() ? lineStart(line + 1) : length();
        if (end > start && characterAt(end - 1) == u'\n') --end;
        if (end > start && characterAt(end - 1) == u'\r') --end;
        return {start, end - start};
    }
    std::u16string lineText(uint64_t line) const { return substring(lineContentRange(line)); }
    std::u16string text() const { return substring({0, length()}); }
};

// Holds a text's batch open for a scope.
class TextBatch {
public:
    explicit TextBatch(TextBuffer& text) : m_text(text) { m_text.beginBatch(); }
    ~TextBatch() { m_text.endBatch(); }
    TextBatch(const TextBatch&) = delete;
    TextBatch& operator=(const TextBatch&) = delete;

private:
    TextBuffer& m_text;
};

}  // namespace vx
