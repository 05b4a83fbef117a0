// Edit distance with unit costs (insert, delete, substitute), over bytes or UTF-16 units: the
// quick-open scorer compares lower-cased path components, the symbol-list ranking folded names.
#pragma once

#include <algorithm>
#include <numeric>
#include <string_view>
#include <vector>

namespace vx {

template <class Char>
size_t editDistance(std::basic_string_view<Char> a, std::basic_string_view<Char> b) {
    if (a.empty()) return b.size();
    if (b.empty()) return a.size();
    std::vector<size_t> row(b.size() + 1);  // one row of the table, indexed by b
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace vx
