// A TextBuffer over a plain string with a line-start table, for untitled tabs until the
// document's text storage backs every tab.
#pragma once

#include <vector>

#include "app/editor/text_buffer.hpp"

namespace vx::editor {

class MemoryTextBuffer final : public TextBuffer {
public:
    explicit MemoryTextBuffer(std::u16string text = {});

    uint64_t length() const override { return m_text.size(); }
    std::u16string substring(Range range) const override { return m_text.substr(range.location, range.length); }
    char16_t characterAt(uint64_t offset) const override { return m_text[offset]; }
    uint64_t lineCount() const override { return m_lineStarts.size(); }
    uint64_t lineStart(uint64_t line) const override { return m_lineStarts[line]; }
    uint64_t lineForOffset(uint64_t offset) const override;
    void replace(Range range, std::u16string_view text) override;

private:
    void reindex();
    std::u16string m_text;
    std::vector<uint64_t> m_lineStarts;
};

}  // namespace vx::editor
