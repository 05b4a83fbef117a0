#include "document/line_endings.hpp"

namespace vx {

void NewlineCounter::add(std::u16string_view units) {
    for (char16_t unit : units) {
        if (unit == u'\r') {
            m_lastWasCR = true;
            ++m_cr;
            continue;
        }
        if (unit == u'\n') {
            if (m_lastWasCR) {
                if (m_cr > 0) --m_cr;
                ++m_crlf;
            } else {
                ++m_lf;
            }
        }
        m_lastWasCR = false;
    }
}

NewlineType NewlineCounter::result() const {
    const int kinds = (m_lf > 0) + (m_crlf > 0) + (m_cr > 0);
    if (kinds > 1) return NewlineType::Mixed;
    if (m_crlf > 0) return NewlineType::CRLF;
    if (m_cr > 0) return NewlineType::CR;
    return NewlineType::LF;
}

NewlineType detectNewlineType(std::u16string_view text) {
    NewlineCounter counter;
    counter.add(text);
    return counter.result();
}

std::u16string_view newlineString(NewlineType type) {
    switch (type) {
    case NewlineType::CRLF:
        return u"\r\n";
    case NewlineType::CR:
        return u"\r";
    default:
        return u"\n";
    }
}

std::u16string convertToLineEndings(std::u16string_view text, NewlineType type) {
    const std::u16string_view newline = newlineString(type);
    std::u16string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit == u'\r') {
            if (i + 1 < text.size() && text[i + 1] == u'\n') ++i;
            result += newline;
        } else if (unit == u'\n') {
            result += newline;
        } else {
            result += unit;
        }
    }
    return result;
}

}  // namespace vx
