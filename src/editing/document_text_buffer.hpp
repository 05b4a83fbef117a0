// The TextBuffer of a document: its text storage, asked afresh on every call because reverting a
// document gives it a new storage. Every edit is an edit of that storage, so it reaches the
// document's edit hooks and, through them, the highlighter; a batch (one keystroke at many
// carets) reaches the highlighter as one.
#pragma once

#include "editing/text_buffer.hpp"
#include "document/single_file_document.hpp"

namespace vx {

class DocumentTextBuffer : public TextBuffer {
public:
    explicit DocumentTextBuffer(VXSingleFileDocument& document) : m_document(document) {}

    const VXTextStorage& storage() const { return m_document.contents(); }
    uint64_t length() const override { return storage().length(); }
    std::u16string substring(Range range) const override { return storage().substring(range); }
    char16_t characterAt(uint64_t offset) const override { return storage().characterAtIndex(offset); }
    uint64_t lineCount() const override { return storage().lineCount(); }
    uint64_t lineStart(uint64_t line) const override { return storage().lineRange(line).location; }
    uint64_t lineForOffset(uint64_t offset) const override { return storage().lineIndexForPosition(offset); }
    void replace(Range range, std::u16string_view text) override { m_document.contents().replaceCharactersInRange(range, text); }
    void beginBatch() override { m_document.beginEditBatch(); }
    void endBatch() override { m_document.endEditBatch(); }

private:
    VXSingleFileDocument& m_document;
};

}  // namespace vx
