// What the editing benchmarks put under a text view: a document's text storage as its text
// (reporting each replacement when asked, as the editor's tab does), a host without scopes and
// one cell per character.
#pragma once

#include <functional>
#include <string>

#include "document/single_file_document.hpp"
#include "editing/document_text_buffer.hpp"
#include "editing/text_view.hpp"

namespace vx::bench {

class StorageBuffer final : public DocumentTextBuffer {
public:
    using DocumentTextBuffer::DocumentTextBuffer;
    void replace(Range range, std::u16string_view text) override {
        DocumentTextBuffer::replace(range, text);
        if (onReplace) onReplace({range.location, text.size()}, static_cast<int64_t>(text.size()) - static_cast<int64_t>(range.length));
    }
    // Told of every replacement: where the new text lies and the change in length.
    std::function<void(Range, int64_t)> onReplace;
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
