// VXHashTrie: a set of words that answers which of them occurs at a position of a line.
//
// A trie over UTF-16 units; each node keeps its children sorted by unit. Lookup walks the
// text from the position and remembers the last node that ends a word, so the answer is the
// longest word that occurs there. With case folding, ASCII letters compare without case
// (other characters compare exactly).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vx {

class VXHashTrie {
public:
    VXHashTrie(const std::vector<std::u16string>& words, bool caseInsensitive);

    // The length of the longest word that occurs at `position` of `text`, or nothing.
    std::optional<uint64_t> longestMatchAt(std::u16string_view text, uint64_t position) const;
    bool empty() const { return m_wordCount == 0; }
    size_t wordCount() const { return m_wordCount; }

private:
    struct Node {
        std::vector<std::pair<char16_t, uint32_t>> children;  // sorted by unit
        bool endsWord = false;
    };
    char16_t fold(char16_t c) const { return m_caseInsensitive && c >= u'A' && c <= u'Z' ? c + 32 : c; }
    uint32_t child(uint32_t node, char16_t unit) const;

    std::vector<Node> m_nodes;
    // The root's children by ASCII unit, for the first step of every lookup.
    std::array<uint32_t, 128> m_rootAscii{};
    size_t m_wordCount = 0;
    bool m_caseInsensitive;
};

}  // namespace vx
