// Line-ending styles: which one a text uses and converting a text to one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vx {

enum class NewlineType : uint32_t { LF = 1, CRLF = 2, CR = 3, Mixed = 4 };

// Counts line breaks unit by unit (a CR counts as CR until an LF follows it, which turns it into
// one CRLF). LF only, or no line breaks at all, is LF; one kind alone is that kind; two kinds or
// more are Mixed.
class NewlineCounter {
public:
    void add(std::u16string_view units);
    NewlineType result() const;
    uint64_t lf() const { return m_lf; }
    uint64_t cr() const { return m_cr; }
    uint64_t crlf() const { return m_crlf; }

private:
    bool m_lastWasCR = false;
    uint64_t m_cr = 0, m_crlf = 0, m_lf = 0;
};

NewlineType detectNewlineType(std::u16string_view text);

// The line break a style writes (LF for Mixed, which is not a style one converts to).
std::u16string_view newlineString(NewlineType type);

// The text with every line break (LF, CR or CR LF) replaced by the style's.
std::u16string convertToLineEndings(std::u16string_view text, NewlineType type);

}  // namespace vx
