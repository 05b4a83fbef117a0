// What the editing benchmarks put under a text view: a document's text storage as its text
// (reporting each replacement when asked, as the editor's tab does), a host without scopes and
// one cell per character.
#pragma once

#include <functional>
#include <string>

#include "document/single_file_document.hpp"
#include "editing/text_view.hpp"

namespace vx::bench {

class StorageBuffer final : public TextBuffer {
public:
    explicit StorageBuffer(VXSingleFileDocument& document) : m_document(document) {}
    const VXTextStorage& storage() const { return m_document.contents(); }
    uint64_t length() const override { return storage().length(); }
    std::u16string substring(Range range) const override { return storage().substring(range); }
    char16_t characterAt(uint64_t offset) const override { return storage().characterAtIndex(offset); }
    uint64_t lineCount() const override { return storage().lineCount(); }
    uint64_t lineStart(uint64_t line) const override { return storage().lineRange(line).location; }
    uint64_t lineForOffset(uint64_t offset) const override { return storage().lineIndexForPosition(offset); }
    void replace(Range range, std::u16string_view text) override {
        m_document.contents().replaceCharactersInRange(range, text);
        if (onReplace) onReplace({range.location, text.size()}, static_cast<int64_t>(text.size()) - static_cast<int64_t>(range.length));
    }
    // Told of every replacement: where the new text lies and the change in length.
    std::function<void(Range, int64_t)> onReplace;

private:
    VXSingleFileDocument& m_document;
};

class Host final : public TextViewHost {
public:
    VXContext scopeContextAt(uint64_t) override { return {}; }
    std::u16string lineBreak() override { return u"\n"; }
};

class Columns final : public ColumnWidths {
public:
    uint64_t columnForOffset(std::u16string_view, uint64_t offset, int) const override { return offset; }
    uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int, bool) const override {
        return std::min<uint64_t>(column, line.size());
    }
};

}  // namespace vx::bench
