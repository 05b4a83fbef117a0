#include "document/text_storage.hpp"

#include "platform/log.hpp"

namespace vx {

VXTextStorage::VXTextStorage(std::u16string_view text, const TextAttributes& attributes) {
    m_text.append(text, m_attributes.intern(attributes));
}

Range VXTextStorage::lineRange(uint64_t line) const {
    const uint64_t start = m_text.lineStart(line);
    const uint64_t end = line >= m_text.lineBreakCount() ? m_text.length() : m_text.lineStart(line + 1);
    return {start, end - start};
}

Range VXTextStorage::lineContentsRange(uint64_t line) const {
    Range range = lineRange(line);
    if (range.length > 0 && line < m_text.lineBreakCount()) {
        const char16_t last = m_text.at(range.end() - 1);
        range.length -= (last == u'\n' && range.length > 1 && m_text.at(range.end() - 2) == u'\r') ? 2 : 1;
    }
    return range;
}

const TextAttributes& VXTextStorage::attributesAtIndex(uint64_t index, Range* effectiveRange) const {
    return m_attributes[m_text.attributesAt(index, effectiveRange)];
}

void VXTextStorage::takeGroup() {
    if (m_batchDepth == 0) m_group.waitAndEnter();
}

void VXTextStorage::releaseGroup() {
    if (m_batchDepth == 0) m_group.leave();
}

void VXTextStorage::replaceCharactersInRange(Range range, std::u16string_view text) {
    VX_ASSERT(range.end() <= length());
    if (!m_changes) m_changes.emplace(length());
    m_changes->replace(range, text);
    takeGroup();
    m_text.replace(range, text, ChunkedText::kInherit);
    releaseGroup();
    edited(kTextStorageEditedCharacters, range, static_cast<int64_t>(text.size()) - static_cast<int64_t>(range.length));
}

void VXTextStorage::setAttributes(const TextAttributes& attributes, Range range) {
    VX_ASSERT(range.end() <= length());
    takeGroup();
    const uint32_t id = m_attributes.intern(attributes);
    m_text.changeAttributes(range, [id](uint32_t) { return id; });
    releaseGroup();
    edited(kTextStorageEditedAttributes, range, 0);
}

void VXTextStorage::addAttribute(const std::string& name, const PropertyValue& value, Range range) {
    VX_ASSERT(range.end() <= length());
    takeGroup();
    m_text.changeAttributes(range, [&](uint32_t old) {
        TextAttributes merged = m_attributes[old];
        merged.insert_or_assign(name, value);
        return m_attributes.intern(merged);
    });
    releaseGroup();
    edited(kTextStorageEditedAttributes, range, 0);
}

const Transaction& VXTextStorage::editedTransaction() const {
    if (!m_changes) m_changes.emplace(length());
    return m_changes->forward();
}

void VXTextStorage::applyTransaction(const Transaction& change) {
    VX_ASSERT(change.lengthBefore() == length());
    if (change.isIdentity()) return;
    beginEditing();
    change.applyInOrder([this](Range range, std::u16string_view text) { replaceCharactersInRange(range, text); });
    endEditing();
}

void VXTextStorage::beginEditing() {
    if (m_batchDepth == 0) m_group.waitAndEnter();
    ++m_batchDepth;
}

void VXTextStorage::endEditing() {
    VX_ASSERT(m_batchDepth > 0);
    if (--m_batchDepth > 0) return;
    m_group.leave();
    if (m_editedMask) processEditing();
}

void VXTextStorage::edited(unsigned mask, Range oldRange, int64_t changeInLength) {
    const uint64_t newEnd = static_cast<uint64_t>(static_cast<int64_t>(oldRange.end()) + changeInLength);
    if (m_editedMask == 0) {
        m_editedRange = {oldRange.location, newEnd - oldRange.location};
        m_changeInLength = changeInLength;
    } else {
        // Carry the range gathered so far into the new text's coordinates, then join the two.
        auto carry = [&](uint64_t position) -> uint64_t {
            if (position <= oldRange.location) return position;
            if (position >= oldRange.end()) return static_cast<uint64_t>(static_cast<int64_t>(position) + changeInLength);
            return std::min(position, newEnd);
        };
        const uint64_t from = std::min(carry(m_editedRange.location), oldRange.location);
        const uint64_t to = std::max(carry(m_editedRange.end()), newEnd);
        m_editedRange = {from, to - from};
        m_changeInLength += changeInLength;
    }
    m_editedMask |= mask;
    if (m_batchDepth == 0) processEditing();
}

void VXTextStorage::processEditing() {
    if (m_delegate) {
        m_delegate->textStorageWillProcessEditing(*this);
        m_delegate->textStorageDidProcessEditing(*this);
    }
    m_editedMask = 0;
    m_editedRange = {};
    m_changeInLength = 0;
    m_changes.reset();
}

}  // namespace vx
