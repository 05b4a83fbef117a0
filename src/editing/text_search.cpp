#include "editing/text_search.hpp"

#include <algorithm>

namespace vx::editing {
namespace {

char16_t foldCase(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; }

bool matchesAt(std::u16string_view window, size_t at, std::u16string_view query, bool folding) {
    for (size_t i = 0; i < query.size(); ++i) {
        const char16_t c = window[at + i];
        if (c != query[i] && !(folding && foldCase(c) == query[i])) return false;
    }
    return true;
}

// The positions read per window: large enough to make the copy cheap per position, small enough
// to keep a step's memory flat.
constexpr uint64_t kWindow = 1 << 16;

}  // namespace

TextSearch::TextSearch(std::u16string query, bool forward, uint64_t from)
    : m_query(std::move(query)), m_forward(forward), m_from(from) {
    m_folding = std::none_of(m_query.begin(), m_query.end(), [](char16_t c) { return c >= u'A' && c <= u'Z'; });
    if (m_folding) std::transform(m_query.begin(), m_query.end(), m_query.begin(), foldCase);
    if (m_query.empty()) m_status = Status::NotFound;
}

void TextSearch::begin(const TextBuffer& text) {
    m_begun = true;
    const uint64_t size = text.length();
    if (m_query.size() > size) {
        m_status = Status::NotFound;
        return;
    }
    const uint64_t last = size - m_query.size();  // the last position a match can start at
    const uint64_t from = std::min(m_from, size);
    auto pass = [](uint64_t low, uint64_t high, bool ascending) {
        Pass p;
        p.low = low;
        p.high = high;
        p.ascending = ascending;
        p.empty = low > high;
        return p;
    };
    if (m_forward) {
        m_passes[0] = from <= last ? pass(from, last, true) : Pass{};
        m_passes[1] = pass(0, std::min(from, last), true);
    } else {
        const uint64_t before = std::min(from, last + 1);  // positions below it come first
        m_passes[0] = before > 0 ? pass(0, before - 1, false) : Pass{};
        m_passes[1] = pass(from, last, false);
    }
    m_pass = 0;
    m_next = m_passes[0].ascending ? m_passes[0].low : m_passes[0].high;
}

TextSearch::Status TextSearch::step(const TextBuffer& text, uint64_t positions) {
    if (!m_begun) begin(text);
    while (m_status == Status::Searching && positions > 0) {
        if (scan(text, positions)) break;
        if (m_pass == 1) {
            m_status = Status::NotFound;
            break;
        }
        m_pass = 1;
        m_next = m_passes[1].ascending ? m_passes[1].low : m_passes[1].high;
    }
    return m_status;
}

// Scans the current pass within the allowance; true when it found the query or must stop for the
// allowance, false when the pass is exhausted.
bool TextSearch::scan(const TextBuffer& text, uint64_t& positions) {
    const Pass& pass = m_passes[m_pass];
    if (pass.empty) return false;
    const uint64_t q = m_query.size();
    while (positions > 0) {
        if (pass.ascending ? m_next > pass.high : m_next < pass.low || m_next > pass.high) return false;
        // The window's first position and count, in the walk's direction.
        const uint64_t remaining = pass.ascending ? pass.high - m_next + 1 : m_next - pass.low + 1;
        const uint64_t count = std::min({remaining, positions, kWindow});
        const uint64_t first = pass.ascending ? m_next : m_next - count + 1;
        const std::u16string window = text.substring({first, count + q - 1});
        for (uint64_t k = 0; k < count; ++k) {
            const uint64_t i = pass.ascending ? k : count - 1 - k;
            if (matchesAt(window, i, m_query, m_folding)) {
                m_found = first + i;
                m_wrapped = m_pass == 1;
                m_status = Status::Found;
                return true;
            }
        }
        positions -= count;
        if (pass.ascending) {
            m_next += count;
        } else {
            if (first == 0) return false;  // the walk down reached the start
            m_next = first - 1;
        }
    }
    return true;
}

}  // namespace vx::editing
