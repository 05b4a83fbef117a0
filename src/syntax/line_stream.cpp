#include "syntax/line_stream.hpp"

#include "platform/log.hpp"

namespace vx {

VXLineStreamHighlighter::VXLineStreamHighlighter(const VXSyntaxRuleset& ruleset, LineHandler onLine)
    : m_ruleset(ruleset), m_onLine(std::move(onLine)), m_context(rootContextForRuleset(ruleset)) {}

void VXLineStreamHighlighter::emit(std::u16string_view text, uint64_t contentLength) {
    m_line.line = {m_offset, contentLength, text.size()};
    m_line.startContext = m_context;
    m_line.events.clear();
    const VXSyntaxLine subject{text, contentLength, m_offset};
    m_context = VXSyntaxParseLine(m_context, subject, m_line.events, m_ruleset, &m_state);
    m_onLine(m_line, text);
    m_offset += text.size();
    ++m_lines;
}

void VXLineStreamHighlighter::append(std::u16string_view text) {
    VX_ASSERT(!m_finished);
    size_t from = 0;  // the first character of `text` not yet part of a highlighted line
    // A CR kept from the last piece: with an LF it is a CR LF break, else a break of its own.
    if (!m_pending.empty() && m_pending.back() == u'\r' && !text.empty()) {
        if (text[0] == u'\n') {
            m_pending += u'\n';
            from = 1;
        }
        emit(m_pending, m_pending.size() - (from == 1 ? 2 : 1));
        m_pending.clear();
    }
    for (size_t i = from; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c != u'\n' && c != u'\r') continue;
        if (c == u'\r' && i + 1 == text.size()) break;  // the next piece says which break this is
        const size_t end = i + 1 + (c == u'\r' && text[i + 1] == u'\n' ? 1 : 0);
        if (m_pending.empty()) {
            emit(text.substr(from, end - from), i - from);
        } else {
            const uint64_t contentLength = m_pending.size() + (i - from);
            m_pending.append(text.substr(from, end - from));
            emit(m_pending, contentLength);
            m_pending.clear();
        }
        from = end;
        i = end - 1;
    }
    m_pending.append(text.substr(from));
}

void VXLineStreamHighlighter::finish() {
    VX_ASSERT(!m_finished);
    m_finished = true;
    if (!m_pending.empty() && m_pending.back() == u'\r') {
        emit(m_pending, m_pending.size() - 1);
        m_pending.clear();
    }
    emit(m_pending, m_pending.size());
    m_pending.clear();
}

}  // namespace vx
