#include "projects/component_match.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vx {
namespace {

template <class Char>
size_t lcsLength(std::basic_string_view<Char> a, std::basic_string_view<Char> b) {
    if (a.empty() || b.empty()) return 0;
    // One row of the table, indexed by b; short queries use the stack.
    std::array<uint16_t, 128> small{};
    std::vector<uint16_t> large;
    uint16_t* row = small.data();
    if (b.size() + 1 > small.size()) {
        large.assign(b.size() + 1, 0);
        row = large.data();
    }
    for (Char ca : a) {
        uint16_t diagonal = 0;  // row[j - 1] of the previous pass
        for (size_t j = 1; j <= b.size(); ++j) {
            const uint16_t above = row[j];
            if (ca == b[j - 1])
                row[j] = diagonal == UINT16_MAX ? UINT16_MAX : static_cast<uint16_t>(diagonal + 1);
            else if (row[j - 1] > row[j])
                row[j] = row[j - 1];
            diagonal = above;
        }
    }
    return row[b.size()];
}

template <class Char>
bool isMatch(std::basic_string_view<Char> candidate, std::basic_string_view<Char> query) {
    if (candidate.size() < query.size()) return false;
    const size_t common = lcsLength(candidate, query);
    if (common == 0) return false;
    if (query.size() <= 3) return common >= query.size();
    return common + 1 >= query.size();
}

}  // namespace

size_t cpp_longestCommonSubsequence(std::string_view a, std::string_view b) { return lcsLength(a, b); }
bool componentIsMatch(std::string_view candidate, std::string_view query) { return isMatch(candidate, query); }
size_t longestCommonSubsequence(std::u16string_view a, std::u16string_view b) { return lcsLength(a, b); }
bool componentIsMatch(std::u16string_view candidate, std::u16string_view query) { return isMatch(candidate, query); }

PathComparison compareCandidatePath(const std::vector<std::string_view>& candidate,
                                    const std::vector<std::string_view>& query) {
    PathComparison result;
    if (candidate.empty() || query.empty()) return result;
    size_t p = candidate.size(), q = query.size(), count = 0;
    result.matchesLastComponent = componentIsMatch(candidate[p - 1], query[q - 1]);
    if (result.matchesLastComponent) {
        ++count;
        --p;
        --q;
    }
    while (p > 0 && q > 0) {
        if (componentIsMatch(candidate[p - 1], query[q - 1])) {
            ++count;
            --q;
        }
        --p;
    }
    result.matched = q == 0;
    result.componentMatchFraction = static_cast<double>(count) / static_cast<double>(query.size());
    return result;
}

}  // namespace vx
