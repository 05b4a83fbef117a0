// Whether a path component is a candidate for a query component: the query's bytes must appear
// in the component in order, with one byte allowed to be missing once the query is four bytes or
// longer (a typo such as "mian" still finds "main").
//
//     componentIsMatch("main", "mian")  true   (common subsequence "man": 3 of 4 bytes)
//     componentIsMatch("abc", "acb")    false  (3 bytes: none may be missing)
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vx {

// The length of the longest common subsequence of two byte strings (exact byte equality). The
// table's cells are 16 bits wide: lengths beyond 65535 saturate.
size_t cpp_longestCommonSubsequence(std::string_view a, std::string_view b);
bool componentIsMatch(std::string_view candidateComponent, std::string_view queryComponent);

// The same two over UTF-16 text, for callers that hold strings rather than index bytes.
size_t longestCommonSubsequence(std::u16string_view a, std::u16string_view b);
bool componentIsMatch(std::u16string_view candidateComponent, std::u16string_view queryComponent);

// How one candidate path compares with a query path outside the search loop: the components are
// matched right to left with the search's rule.
struct PathComparison {
    bool matched = false;                // every query component was placed
    bool matchesLastComponent = false;   // the last query component matched the last path component
    double componentMatchFraction = 0;   // matched query components / query components
};
PathComparison compareCandidatePath(const std::vector<std::string_view>& candidateComponents,
                                    const std::vector<std::string_view>& queryComponents);

}  // namespace vx
