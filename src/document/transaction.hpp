// Transaction: an edit of a whole text as a value, a walk over the old text that keeps, deletes
// and inserts:
//
//     old  "ab cd ef"        retain 3, delete 2, insert "XYZ", retain 3
//     new  "ab XYZ ef"
//
// A transaction knows the length of the text it applies to. It can be applied, inverted (given
// the text it was made for, whose deleted characters the inverse must put back), composed with
// the one that follows it, and positions and ranges can be carried through it. Undo stores
// transactions; carets and marks follow edits by mapping.
//
// Canonical form: neighbouring operations of one kind are merged, nothing is empty, and at one
// place an insertion comes before a deletion, so equal edits are equal values.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/range.hpp"

namespace vx {

// One replacement in old-text coordinates.
struct Replacement {
    Range range;
    std::u16string text;
    friend bool operator==(const Replacement&, const Replacement&) = default;
};

class Transaction {
public:
    enum class Kind : uint8_t { Retain, Delete, Insert };
    struct Operation {
        Kind kind;
        uint64_t length;     // Retain, Delete: units of the old text; Insert: text.size()
        std::u16string text; // Insert only
        friend bool operator==(const Operation&, const Operation&) = default;
    };
    // Where a position at the place of an insertion goes: before the inserted text or after it.
    enum class Assoc : uint8_t { Before, After };

    // The identity on a text of `length` units.
    explicit Transaction(uint64_t length = 0);
    // One replacement; the range must lie inside the text.
    static Transaction replacing(uint64_t length, Range range, std::u16string_view text);
    // Replacements in ascending order that do not overlap (two may touch).
    static Transaction fromReplacements(uint64_t length, const std::vector<Replacement>& replacements);

    // Building by hand, from the start of the old text; `finish` retains what is left.
    static Transaction empty() { return Transaction(0); }
    Transaction& retain(uint64_t length);
    Transaction& remove(uint64_t length);
    Transaction& insert(std::u16string_view text);

    const std::vector<Operation>& operations() const { return m_operations; }
    uint64_t lengthBefore() const { return m_lengthBefore; }
    uint64_t lengthAfter() const { return m_lengthAfter; }
    bool isIdentity() const;

    // The changes as replacements in old-text coordinates, ascending.
    std::vector<Replacement> replacements() const;
    std::u16string apply(std::u16string_view text) const;
    // Applies through `replace` (a range of the current text and its new text), first change first,
    // each range carried past the changes before it: the order a builder gathers in one batch.
    void applyInOrder(const std::function<void(Range, std::u16string_view)>& replace) const;

    // The transaction that undoes this one; `original` reads ranges of the text this one applies to.
    Transaction invert(const std::function<std::u16string(Range)>& original) const;
    Transaction invert(std::u16string_view original) const;
    // This one, then `next` (which applies to this one's result).
    Transaction compose(const Transaction& next) const;

    uint64_t mapPosition(uint64_t position, Assoc assoc = Assoc::After) const;
    // A range's ends carried through; a caret stays a caret. An empty range is taken After.
    Range mapRange(Range range) const;

    friend bool operator==(const Transaction&, const Transaction&) = default;

private:
    void push(Kind kind, uint64_t length, std::u16string_view text);

    std::vector<Operation> m_operations;
    uint64_t m_lengthBefore = 0;
    uint64_t m_lengthAfter = 0;
};

// The transaction of replacements made one after another, each given in the coordinates of the
// text as it is when it is made. Replacements in ascending order (each at or after the end of the
// one before, as one pass over ascending selections makes them) gather in a batch that becomes one
// transaction when one comes out of order, so 10,000 carets cost one composition, not 10,000.
// With `withInverse` the builder also keeps the transaction that undoes them, from the replaced
// texts it is given.
class TransactionBuilder {
public:
    explicit TransactionBuilder(uint64_t length = 0, bool withInverse = false);

    void replace(Range range, std::u16string_view text, std::u16string_view replaced = {});
    bool isEmpty() const { return m_batch.empty() && m_forward.isIdentity(); }
    // The length of the text now, after every replacement so far.
    uint64_t length() const;
    const Transaction& forward();
    const Transaction& inverse();

private:
    void flush();

    Transaction m_forward, m_inverse;
    bool m_withInverse;
    std::vector<Replacement> m_batch;       // in the coordinates of the text the batch began on
    std::vector<std::u16string> m_replaced; // what each replacement of the batch took out
    uint64_t m_batchLength = 0;             // the length of that text
    int64_t m_batchDelta = 0;               // the batch's change in length so far
    uint64_t m_batchEnd = 0;                // where its last replacement ends, in the current text
};

}  // namespace vx
