// The ranking of symbol lists (jump to definition, the symbol panels): names close to the query,
// of the same case, beginning or ending with it, and of a preferred category come first.
//
//     score = L + 0.75 x caseScore + anchorScore + 1.5 x categoryScore
//     L            1 - lev(query, name) / (longest name - |query|), 1 for an exact match
//     caseScore    2^-(differing cases) where the name holds the query ignoring case, else 0
//     anchorScore  1 equal, 0.75 starts with the query, 0.25 ends with it, else 0 (ignoring case)
//     category     the item's priority / 7
//
// Lengths and positions count UTF-16 units.
#pragma once

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace vx {

struct SmartSortEntry {
    std::string name;
    std::optional<double> priorityval;
};

// Every entry's score for the query, in the entries' order.
std::vector<double> smartcmpScores(const std::string& query, const std::vector<SmartSortEntry>& entries);

// The order of the entries by score, best first; equal scores by the names' plain (case-sensitive)
// comparison, ascending. Answers indexes into `entries`; `scores` receives the scores when given.
std::vector<size_t> smartSortOrder(const std::string& query, const std::vector<SmartSortEntry>& entries,
                                   std::vector<double>* scores = nullptr);

// Items of any type with a name (and a priority, when `priorityOf` gives one), in ranked order.
template <class Item, class NameOf, class PriorityOf>
std::vector<Item> smartSort(const std::string& query, std::vector<Item> items, NameOf nameOf, PriorityOf priorityOf) {
    std::vector<SmartSortEntry> entries;
    entries.reserve(items.size());
    for (const auto& item : items) entries.push_back({std::string(nameOf(item)), priorityOf(item)});
    std::vector<Item> sorted;
    sorted.reserve(items.size());
    for (size_t i : smartSortOrder(query, entries)) sorted.push_back(std::move(items[i]));
    return sorted;
}

template <class Item, class NameOf>
std::vector<Item> smartSort(const std::string& query, std::vector<Item> items, NameOf nameOf) {
    return smartSort(query, std::move(items), nameOf, [](const Item&) { return std::optional<double>(); });
}

}  // namespace vx
