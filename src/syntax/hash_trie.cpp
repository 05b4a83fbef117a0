#include "syntax/hash_trie.hpp"

#include <algorithm>

namespace vx {
namespace {
constexpr uint32_t kNone = 0;  // node 0 is the root, never anyone's child
}

VXHashTrie::VXHashTrie(const std::vector<std::u16string>& words, bool caseInsensitive)
    : m_caseInsensitive(caseInsensitive) {
    m_nodes.emplace_back();
    for (const auto& word : words) {
        if (word.empty()) continue;
        uint32_t node = 0;
        for (char16_t raw : word) {
            const char16_t unit = fold(raw);
            auto& children = m_nodes[node].children;
            auto it = std::lower_bound(children.begin(), children.end(), unit,
                                       [](const auto& entry, char16_t u) { return entry.first < u; });
            if (it != children.end() && it->first == unit) {
                node = it->second;
                continue;
            }
            const auto next = static_cast<uint32_t>(m_nodes.size());
            children.insert(it, {unit, next});
            m_nodes.emplace_back();  // may move the vector `children` lives in: not used after this
            node = next;
        }
        if (!m_nodes[node].endsWord) ++m_wordCount;
        m_nodes[node].endsWord = true;
    }
    for (const auto& [unit, node] : m_nodes[0].children)
        if (unit < 128) m_rootAscii[unit] = node;
}

uint32_t VXHashTrie::child(uint32_t node, char16_t unit) const {
    const auto& children = m_nodes[node].children;
    auto it = std::lower_bound(children.begin(), children.end(), unit,
                               [](const auto& entry, char16_t u) { return entry.first < u; });
    return it != children.end() && it->first == unit ? it->second : kNone;
}

std::optional<uint64_t> VXHashTrie::longestMatchAt(std::u16string_view text, uint64_t position) const {
    std::optional<uint64_t> longest;
    uint32_t node = 0;
    for (uint64_t i = position; i < text.size(); ++i) {
        const char16_t unit = fold(text[i]);
        node = node == 0 && unit < 128 ? m_rootAscii[unit] : child(node, unit);
        if (node == kNone) break;
        if (m_nodes[node].endsWord) longest = i + 1 - position;
    }
    return longest;
}

}  // namespace vx
