// How quick open ranks a path that matched a query. Each query component is paired with a path
// component (SubstringFinder), and each pair scores c = W + 1/(G + 1) + 1/(D + 1) in [0, 3]:
//
//     W  the word-start walk: 1.0 when the query runs along word starts ("vc" in "ViewController"),
//        0.75 when it matched in some other way, 0.5 x (matched share) when it fell short
//     G  the gappiness: how many component bytes lie between the query's bytes (0 for a substring)
//     D  the edit distance between the component and the query component
//
// The pairs' scores are combined by a geometric mean that counts the file name twice; recency of
// modification and shallow depth add to it:
//
//     score = (prod(c/3) x c_last)^(1/(n+1)) + sqrt(1/R) + 1/depth,   R = log10(age in seconds) + 1
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vx {

// Which path component each query component is placed in, as (query index, path index) pairs in
// query order; nothing when the query cannot be placed. A placement puts every query component,
// right to left, into a distinct path component (also taken right to left, in order) as an ordered
// subsequence with no byte missing. Both sides are expected lower-cased.
std::optional<std::vector<std::pair<size_t, size_t>>> SubstringFinder(const std::vector<std::string_view>& queryComponents,
                                                                      const std::vector<std::string_view>& pathComponents);

// The smallest total number of component bytes skipped between consecutive matched query bytes,
// over every way of finding the query in order in the component; nothing when it is not there.
std::optional<size_t> findMinimalGappiness(std::string_view component, std::string_view query);

// Edit distance with unit costs, byte by byte.
size_t levenshteinDistance(std::string_view a, std::string_view b);

// W above. `component` is the path component in its own case (its case marks word starts inside
// camelCase names), `lowerComponent` the same lower-cased, `query` lower-cased.
double wordStartWalk(std::string_view component, std::string_view lowerComponent, std::string_view query);

// c above for one pair.
double componentScore(std::string_view component, std::string_view lowerComponent, std::string_view query);

// The recency term's R for a file last modified `ageSeconds` ago. Ages below one second (a clock
// set back, a file from the future) count as one second, so R never drops below 1.
double recencyFactor(double ageSeconds);

// The score of a candidate whose placement was found; `modifiedAge` is nothing when the file
// could not be examined (R is then 6).
double quickOpenScore(const std::vector<std::string_view>& queryComponents,
                      const std::vector<std::string_view>& pathComponents,
                      const std::vector<std::string_view>& lowerPathComponents,
                      const std::vector<std::pair<size_t, size_t>>& placement, std::optional<double> modifiedAge);

}  // namespace vx
