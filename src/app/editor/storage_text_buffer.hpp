// The TextBuffer of a tab: the document's text storage, so every edit the editor makes is an edit
// of the storage and reaches whatever observes it (the highlighter, the document).
#pragma once

#include <memory>

#include "app/editor/text_buffer.hpp"
#include "document/text_storage.hpp"

namespace vx::editor {

class StorageTextBuffer final : public TextBuffer {
public:
    // Uses a storage someone else owns (a document's contents).
    explicit StorageTextBuffer(VXTextStorage& storage) : m_storage(&storage) {}
    // Owns a new storage holding `text` (an untitled tab, a test).
    explicit StorageTextBuffer(std::u16string_view text)
        : m_owned(std::make_unique<VXTextStorage>(text)), m_storage(m_owned.get()) {}

    VXTextStorage& storage() { return *m_storage; }

    uint64_t length() const override { return m_storage->length(); }
    std::u16string substring(Range range) const override { return m_storage->substring(range); }
    char16_t characterAt(uint64_t offset) const override { return m_storage->characterAtIndex(offset); }
    uint64_t lineCount() const override { return m_storage->lineCount(); }
    uint64_t lineStart(uint64_t line) const override { return m_storage->lineRange(line).location; }
    uint64_t lineForOffset(uint64_t offset) const override { return m_storage->lineIndexForPosition(offset); }
    void replace(Range range, std::u16string_view text) override { m_storage->replaceCharactersInRange(range, text); }

private:
    std::unique_ptr<VXTextStorage> m_owned;
    VXTextStorage* m_storage;
};

}  // namespace vx::editor
