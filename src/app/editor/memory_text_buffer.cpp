#include "app/editor/memory_text_buffer.hpp"

#include <algorithm>

namespace vx::editor {

MemoryTextBuffer::MemoryTextBuffer(std::u16string text) : m_text(std::move(text)) {
    reindex();
}

uint64_t MemoryTextBuffer::lineForOffset(uint64_t offset) const {
    auto after = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
    return static_cast<uint64_t>(after - m_lineStarts.begin()) - 1;
}

void MemoryTextBuffer::replace(Range range, std::u16string_view text) {
    m_text.replace(range.location, range.length, text);
    reindex();
}

void MemoryTextBuffer::reindex() {
    m_lineStarts.assign(1, 0);
    for (size_t i = 0; i < m_text.size(); ++i) {
        if (m_text[i] == u'\r' && i + 1 < m_text.size() && m_text[i + 1] == u'\n') ++i;
        if (m_text[i] == u'\n' || m_text[i] == u'\r') m_lineStarts.push_back(i + 1);
    }
}

}  // namespace vx::editor
