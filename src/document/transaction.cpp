#include "document/transaction.hpp"

#include <algorithm>

#include "platform/log.hpp"

namespace vx {

Transaction::Transaction(uint64_t length) {
    retain(length);
}

Transaction Transaction::replacing(uint64_t length, Range range, std::u16string_view text) {
    VX_ASSERT(range.end() <= length);
    Transaction t = empty();
    t.retain(range.location).insert(text).remove(range.length).retain(length - range.end());
    return t;
}

Transaction Transaction::fromReplacements(uint64_t length, const std::vector<Replacement>& replacements) {
    Transaction t = empty();
    uint64_t at = 0;
    for (const auto& r : replacements) {
        VX_ASSERT(r.range.location >= at && r.range.end() <= length);
        t.retain(r.range.location - at).insert(r.text).remove(r.range.length);
        at = r.range.end();
    }
    t.retain(length - at);
    return t;
}

void Transaction::push(Kind kind, uint64_t length, std::u16string_view text) {
    if (length == 0) return;
    if (kind != Kind::Insert) m_lengthBefore += length;
    if (kind != Kind::Delete) m_lengthAfter += length;
    if (!m_operations.empty() && m_operations.back().kind == kind) {
        m_operations.back().length += length;
        m_operations.back().text += text;
        return;
    }
    // An insertion right after a deletion goes before it: one canonical order for one change.
    if (kind == Kind::Insert && !m_operations.empty() && m_operations.back().kind == Kind::Delete) {
        Operation deletion = std::move(m_operations.back());
        m_operations.pop_back();
        if (!m_operations.empty() && m_operations.back().kind == Kind::Insert) {
            m_operations.back().length += length;
            m_operations.back().text += text;
        } else {
            m_operations.push_back({Kind::Insert, length, std::u16string(text)});
        }
        m_operations.push_back(std::move(deletion));
        return;
    }
    m_operations.push_back({kind, length, kind == Kind::Insert ? std::u16string(text) : std::u16string()});
}

Transaction& Transaction::retain(uint64_t length) {
    push(Kind::Retain, length, {});
    return *this;
}

Transaction& Transaction::remove(uint64_t length) {
    push(Kind::Delete, length, {});
    return *this;
}

Transaction& Transaction::insert(std::u16string_view text) {
    push(Kind::Insert, text.size(), text);
    return *this;
}

bool Transaction::isIdentity() const {
    return std::all_of(m_operations.begin(), m_operations.end(), [](const Operation& o) { return o.kind == Kind::Retain; });
}

std::vector<Replacement> Transaction::replacements() const {
    std::vector<Replacement> out;
    uint64_t at = 0;
    bool open = false;  // the last replacement ends where `at` is and may still grow
    for (const auto& op : m_operations) {
        if (op.kind == Kind::Retain) {
            at += op.length;
            open = false;
            continue;
        }
        if (!open) out.push_back({{at, 0}, {}});
        open = true;
        if (op.kind == Kind::Insert) {
            out.back().text += op.text;
        } else {
            out.back().range.length += op.length;
            at += op.length;
        }
    }
    return out;
}

std::u16string Transaction::apply(std::u16string_view text) const {
    VX_ASSERT(text.size() == m_lengthBefore);
    std::u16string out;
    out.reserve(m_lengthAfter);
    uint64_t at = 0;
    for (const auto& op : m_operations) {
        switch (op.kind) {
            case Kind::Retain: out.append(text.substr(at, op.length)); at += op.length; break;
            case Kind::Delete: at += op.length; break;
            case Kind::Insert: out += op.text; break;
        }
    }
    return out;
}

void Transaction::applyInOrder(const std::function<void(Range, std::u16string_view)>& replace) const {
    int64_t delta = 0;
    for (const Replacement& change : replacements()) {
        replace({static_cast<uint64_t>(static_cast<int64_t>(change.range.location) + delta), change.range.length}, change.text);
        delta += static_cast<int64_t>(change.text.size()) - static_cast<int64_t>(change.range.length);
    }
}

Transaction Transaction::invert(const std::function<std::u16string(Range)>& original) const {
    Transaction out = empty();
    uint64_t at = 0;
    for (const auto& op : m_operations) {
        switch (op.kind) {
            case Kind::Retain: out.retain(op.length); at += op.length; break;
            case Kind::Delete: out.insert(original({at, op.length})); at += op.length; break;
            case Kind::Insert: out.remove(op.length); break;
        }
    }
    return out;
}

Transaction Transaction::invert(std::u16string_view original) const {
    return invert([original](Range r) { return std::u16string(original.substr(r.location, r.length)); });
}

Transaction Transaction::compose(const Transaction& next) const {
    VX_ASSERT(m_lengthAfter == next.m_lengthBefore);
    Transaction out = empty();
    const auto& a = m_operations;
    const auto& b = next.m_operations;
    size_t i = 0, j = 0;
    uint64_t aUsed = 0, bUsed = 0;  // how much of a[i] and b[j] is consumed
    while (i < a.size() || j < b.size()) {
        if (j < b.size() && b[j].kind == Kind::Insert) {
            out.insert(b[j].text);
            ++j;
            continue;
        }
        if (i < a.size() && a[i].kind == Kind::Delete) {
            out.remove(a[i].length);
            ++i;
            continue;
        }
        VX_ASSERT(i < a.size() && j < b.size());
        uint64_t n = std::min(a[i].length - aUsed, b[j].length - bUsed);
        if (a[i].kind == Kind::Retain) {
            if (b[j].kind == Kind::Retain) out.retain(n);
            else out.remove(n);
        } else if (b[j].kind == Kind::Retain) {  // a inserts, b keeps part of it
            out.insert(std::u16string_view(a[i].text).substr(aUsed, n));
        }  // a inserts and b deletes it: nothing remains
        aUsed += n;
        bUsed += n;
        if (aUsed == a[i].length) ++i, aUsed = 0;
        if (bUsed == b[j].length) ++j, bUsed = 0;
    }
    return out;
}

uint64_t Transaction::mapPosition(uint64_t position, Assoc assoc) const {
    uint64_t oldAt = 0, newAt = 0;
    for (const auto& op : m_operations) {
        switch (op.kind) {
            case Kind::Retain:
                if (position < oldAt + op.length) return newAt + (position - oldAt);
                oldAt += op.length;
                newAt += op.length;
                break;
            case Kind::Delete:
                if (position < oldAt + op.length) return newAt;
                oldAt += op.length;
                break;
            case Kind::Insert:
                if (position == oldAt && assoc == Assoc::Before) return newAt;
                newAt += op.length;
                break;
        }
    }
    return newAt + (position > oldAt ? position - oldAt : 0);
}

Range Transaction::mapRange(Range range) const {
    if (range.length == 0) {
        uint64_t at = mapPosition(range.location, Assoc::After);
        return {at, 0};
    }
    // The ends keep to the selected text: the start after an insertion at it, the end before one.
    uint64_t start = mapPosition(range.location, Assoc::After);
    uint64_t end = mapPosition(range.end(), Assoc::Before);
    return {start, end > start ? end - start : 0};
}

// --- building ---

TransactionBuilder::TransactionBuilder(uint64_t length, bool withInverse)
    : m_forward(length), m_inverse(withInverse ? length : 0), m_withInverse(withInverse) {}

uint64_t TransactionBuilder::length() const {
    return m_batch.empty() ? m_forward.lengthAfter() : static_cast<uint64_t>(static_cast<int64_t>(m_batchLength) + m_batchDelta);
}

void TransactionBuilder::replace(Range range, std::u16string_view text, std::u16string_view replaced) {
    if (!m_batch.empty() && range.location < m_batchEnd) flush();
    if (m_batch.empty()) {
        m_batchLength = m_forward.lengthAfter();
        m_batchDelta = 0;
    }
    VX_ASSERT(range.end() <= length());
    const Range original{static_cast<uint64_t>(static_cast<int64_t>(range.location) - m_batchDelta), range.length};
    m_batch.push_back({original, std::u16string(text)});
    if (m_withInverse) m_replaced.emplace_back(replaced);
    m_batchDelta += static_cast<int64_t>(text.size()) - static_cast<int64_t>(range.length);
    m_batchEnd = range.location + text.size();
}

void TransactionBuilder::flush() {
    if (m_batch.empty()) return;
    Transaction change = Transaction::fromReplacements(m_batchLength, m_batch);
    if (m_withInverse) {
        // A deletion of the transaction covers one replaced range or several that touch.
        size_t next = 0;
        Transaction back = change.invert([&](Range range) {
            std::u16string old;
            while (next < m_batch.size() && m_batch[next].range.end() <= range.end()) {
                if (m_batch[next].range.location >= range.location) old += m_replaced[next];
                ++next;
            }
            return old;
        });
        m_inverse = back.compose(m_inverse);
    }
    m_forward = m_forward.isIdentity() && m_forward.lengthBefore() == m_batchLength ? std::move(change) : m_forward.compose(change);
    m_batch.clear();
    m_replaced.clear();
}

const Transaction& TransactionBuilder::forward() {
    flush();
    return m_forward;
}

const Transaction& TransactionBuilder::inverse() {
    VX_ASSERT(m_withInverse);
    flush();
    return m_inverse;
}

}  // namespace vx
