// VXTextStorage: a document's text and its attributes, with the edit notifications the rest of the
// editor hangs off.
//
// Every change goes through replaceCharactersInRange / setAttributes / addAttribute and is reported
// with `edited`: the characters flag with the old range and the change in length (new length minus
// old), or the attributes flag with the range and 0. Edits made between beginEditing and endEditing
// are gathered and processed once at endEditing; otherwise each edit is processed at once.
// Processing calls the delegate's textStorageWillProcessEditing and textStorageDidProcessEditing
// with editedMask, editedRange (in the new text) and changeInLength set, and with the character
// changes as one transaction over the text as it was before them (editedTransaction).
//
// Threads: the main thread edits; background readers (highlighting, indexing) take the dispatch
// group with waitAndEnter and give it back with leave. An edit takes the group the same way, so a
// reader never sees a half-made change, and gives it back before the delegate runs (the delegate
// may wait for background readers).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "document/chunked_text.hpp"
#include "document/text_attributes.hpp"
#include "document/transaction.hpp"
#include "platform/dispatch.hpp"
#include "platform/range.hpp"

namespace vx {

class VXTextStorage;

enum EditedMask : unsigned {
    kTextStorageEditedAttributes = 1,
    kTextStorageEditedCharacters = 2,
};

class TextStorageDelegate {
public:
    virtual void textStorageWillProcessEditing(VXTextStorage& storage) = 0;
    virtual void textStorageDidProcessEditing(VXTextStorage& storage) = 0;

protected:
    ~TextStorageDelegate() = default;
};

class VXTextStorage {
public:
    VXTextStorage() = default;
    explicit VXTextStorage(std::u16string_view text, const TextAttributes& attributes = {});
    VXTextStorage(const VXTextStorage&) = delete;
    VXTextStorage& operator=(const VXTextStorage&) = delete;

    // --- reading ---
    uint64_t length() const { return m_text.length(); }
    std::u16string string() const { return m_text.substring({0, m_text.length()}); }
    std::u16string substring(Range range) const { return m_text.substring(range); }
    char16_t characterAtIndex(uint64_t index) const { return m_text.at(index); }
    // The pieces that make up `range`, in order, without copying.
    void forEachSegment(Range range, const std::function<void(std::u16string_view)>& visit) const {
        m_text.forEachSegment(range, visit);
    }

    // Lines end with LF, CR or CR LF. A text of n line breaks has n + 1 lines (the last may be empty).
    uint64_t lineCount() const { return m_text.lineBreakCount() + 1; }
    // The line's range including its line break.
    Range lineRange(uint64_t line) const;
    // The line's range without its line break.
    Range lineContentsRange(uint64_t line) const;
    uint64_t lineIndexForPosition(uint64_t position) const { return m_text.lineIndexForPosition(position); }

    // The attributes at an index (index < length) and, optionally, the run of equal attributes around it.
    const TextAttributes& attributesAtIndex(uint64_t index, Range* effectiveRange = nullptr) const;

    // --- changing ---
    // The new characters take the attributes of the first replaced character, or with nothing
    // replaced, of the character before (after, at the start).
    void replaceCharactersInRange(Range range, std::u16string_view text);
    void setAttributes(const TextAttributes& attributes, Range range);
    void addAttribute(const std::string& name, const PropertyValue& value, Range range);

    void beginEditing();
    void endEditing();
    bool isBlocked() const { return m_batchDepth > 0; }

    unsigned editedMask() const { return m_editedMask; }
    Range editedRange() const { return m_editedRange; }
    int64_t changeInLength() const { return m_changeInLength; }
    // The characters changed by the edits being processed; the identity when only attributes changed.
    const Transaction& editedTransaction() const;
    // Makes the changes of `change` (a transaction over the text as it is now), last first, as one
    // batch of edits: only the changed characters are replaced, so what follows the text elsewhere
    // (selections, highlighted lines) moves with the rest.
    void applyTransaction(const Transaction& change);

    // --- background readers ---
    DispatchGroup& dgroup() { return m_group; }
    void waitAndEnter() { m_group.waitAndEnter(); }
    void leave() { m_group.leave(); }
    void blockUntilEdited() { m_group.wait(); }

    TextStorageDelegate* vx_delegate() const { return m_delegate; }
    void setVx_delegate(TextStorageDelegate* delegate) { m_delegate = delegate; }

    // How many chunks the text is kept in (for tests and measurements).
    size_t chunkCount() const { return m_text.chunkCount(); }

private:
    friend class TextStorageLoader;
    void takeGroup();
    void releaseGroup();
    void processEditing();
    void edited(unsigned mask, Range oldRange, int64_t changeInLength);

    ChunkedText m_text;
    TextAttributeTable m_attributes;
    DispatchGroup m_group;
    TextStorageDelegate* m_delegate = nullptr;
    int m_batchDepth = 0;
    unsigned m_editedMask = 0;
    Range m_editedRange;
    int64_t m_changeInLength = 0;
    // The character changes since the last processing; built on first use.
    mutable std::optional<TransactionBuilder> m_changes;
};

// Fills a new storage quickly, before anyone observes it (used by the file reader).
class TextStorageLoader {
public:
    explicit TextStorageLoader(VXTextStorage& storage) : m_storage(storage) {}
    void reserve(uint64_t units) { m_storage.m_text.reserve(units); }
    void append(std::u16string_view units) { m_storage.m_text.append(units, 0); }

private:
    VXTextStorage& m_storage;
};

}  // namespace vx
