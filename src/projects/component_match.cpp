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

// The match asks only whether the common subsequence reaches |query| (up to 3 bytes) or
// |query| - 1, which needs no table: the whole query is a subsequence, or the query without one
// of its bytes is. With prefix[i] the candidate length that the query's first i bytes need when
// matched greedily from the left, and suffix[i] the start that its bytes from i on need when
// matched greedily from the right, dropping byte i works exactly when prefix[i] <= suffix[i + 1].
// This is linear where the table is quadratic; it runs once per indexed path and keystroke.
template <class Char>
bool isMatch(std::basic_string_view<Char> candidate, std::basic_string_view<Char> query) {
    const size_t m = query.size(), n = candidate.size();
    if (n < m || m == 0) return false;
    constexpr size_t kUnreached = SIZE_MAX;
    std::array<size_t, 130> smallPrefix, smallSuffix;
    std::vector<size_t> largePrefix, largeSuffix;
    size_t* prefix = smallPrefix.data();
    size_t* suffix = smallSuffix.data();
    if (m + 1 > smallPrefix.size()) {
        largePrefix.resize(m + 1);
        largeSuffix.resize(m + 1);
        prefix = largePrefix.data();
        suffix = largeSuffix.data();
    }
    prefix[0] = 0;
    for (size_t i = 0, at = 0; i < m; ++i) {
        if (prefix[i] == kUnreached) {
            prefix[i + 1] = kUnreached;
            continue;
        }
        while (at < n && candidate[at] != query[i]) ++at;
        prefix[i + 1] = at < n ? ++at : kUnreached;
    }
    if (prefix[m] != kUnreached) return true;  // the whole query is there
    if (m <= 3) return false;
    suffix[m] = n;
    for (size_t i = m, at = n; i-- > 0;) {
        if (suffix[i + 1] == kUnreached) {
            suffix[i] = kUnreached;
            continue;
        }
        while (at > 0 && candidate[at - 1] != query[i]) --at;
        suffix[i] = at > 0 ? --at : kUnreached;
    }
    for (size_t i = 0; i < m; ++i)
        if (prefix[i] != kUnreached && suffix[i + 1] != kUnreached && prefix[i] <= suffix[i + 1]) return true;
    return false;
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
