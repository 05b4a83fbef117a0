// Finding a query in a text in slices. A search of a large text reads a bounded number of
// positions per step, through a window of the text at a time (never a copy of the whole), so
// that a front end can run it between frames and drop it as soon as the user types again.
//
// Lower-case query letters match either case; a capital in the query makes the search exact.
// Forward, the search runs from `from` to the end, then wraps round from the start back to
// `from`; backward, from just before `from` to the start, then from the end back to `from`.
#pragma once

#include <cstdint>
#include <string>

#include "editing/text_buffer.hpp"

namespace vx::editing {

class TextSearch {
public:
    enum class Status { Searching, Found, NotFound };

    TextSearch(std::u16string query, bool forward, uint64_t from);

    // Tries up to `positions` more positions of `text` (the same text at every step).
    Status step(const TextBuffer& text, uint64_t positions);
    Status status() const { return m_status; }
    uint64_t foundAt() const { return m_found; }
    uint64_t length() const { return m_query.size(); }
    // Whether the match lies beyond the wrap (before the start, searching forward).
    bool wrapped() const { return m_wrapped; }

private:
    // One stretch of positions, walked up or down: [low, high], next to try at `next`.
    struct Pass {
        uint64_t low = 0, high = 0;
        bool ascending = true;
        bool empty = true;
    };
    void begin(const TextBuffer& text);
    bool scan(const TextBuffer& text, uint64_t& positions);

    std::u16string m_query;  // folded when the search ignores case
    bool m_folding;
    bool m_forward;
    uint64_t m_from;
    bool m_begun = false;
    Pass m_passes[2];
    int m_pass = 0;
    uint64_t m_next = 0;
    Status m_status = Status::Searching;
    uint64_t m_found = 0;
    bool m_wrapped = false;
};

}  // namespace vx::editing
