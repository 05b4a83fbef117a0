#include "projects/quick_open_score.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "projects/edit_distance.hpp"

namespace vx {
namespace {

bool isSubsequence(std::string_view needle, std::string_view haystack) {
    size_t at = 0;
    for (char c : needle) {
        at = haystack.find(c, at);
        if (at == std::string_view::npos) return false;
        ++at;
    }
    return true;
}

bool isLetterOrDigit(unsigned char c) {
    // Bytes of multi-byte characters count as letters: a name in another script is one word.
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c >= 0x80;
}

}  // namespace

std::optional<std::vector<std::pair<size_t, size_t>>> SubstringFinder(const std::vector<std::string_view>& query,
                                                                      const std::vector<std::string_view>& path) {
    std::vector<std::pair<size_t, size_t>> placement;
    placement.reserve(query.size());
    size_t p = path.size();
    // Taking the rightmost component that holds each query component leaves the most room for the
    // ones to its left, so this finds a placement whenever one exists.
    for (size_t q = query.size(); q-- > 0;) {
        while (p > 0 && !isSubsequence(query[q], path[p - 1])) --p;
        if (p == 0) return std::nullopt;
        placement.emplace_back(q, --p);
    }
    std::reverse(placement.begin(), placement.end());
    return placement;
}

std::optional<size_t> findMinimalGappiness(std::string_view component, std::string_view query) {
    if (query.empty()) return 0;
    const size_t n = component.size();
    constexpr size_t kNone = std::numeric_limits<size_t>::max();
    // best[i]: the least gap with the query so far matched ending at component byte i.
    std::vector<size_t> best(n, kNone), next(n, kNone);
    for (size_t i = 0; i < n; ++i)
        if (component[i] == query[0]) best[i] = 0;
    for (size_t j = 1; j < query.size(); ++j) {
        // Running minimum of best[k] - k over k < i, kept shifted by n to stay unsigned.
        size_t runningMin = kNone;
        for (size_t i = 0; i < n; ++i) {
            next[i] = kNone;
            if (runningMin != kNone && component[i] == query[j]) next[i] = runningMin - n + i - 1;
            if (best[i] != kNone) runningMin = std::min(runningMin, best[i] + n - i);
        }
        best.swap(next);
    }
    const size_t least = *std::min_element(best.begin(), best.end());
    if (least == kNone) return std::nullopt;
    return least;
}

size_t levenshteinDistance(std::string_view a, std::string_view b) { return editDistance(a, b); }

double wordStartWalk(std::string_view component, std::string_view lower, std::string_view query) {
    if (query.empty()) return 0.75;
    // When lower-casing changed the length (some non-ASCII letters do), case cannot mark word
    // starts byte for byte; the separators still do.
    const std::string_view cased = component.size() == lower.size() ? component : lower;
    auto isWordStart = [&](size_t i) {
        if (i == 0) return true;
        const unsigned char before = static_cast<unsigned char>(cased[i - 1]);
        const unsigned char at = static_cast<unsigned char>(cased[i]);
        if (!isLetterOrDigit(before)) return true;
        return at >= 'A' && at <= 'Z' && before >= 'a' && before <= 'z';
    };
    bool aligned = true;
    size_t position = 0;    // the next component byte the walk may use
    bool haveMatch = false; // whether a query byte has matched yet
    size_t matched = 0;
    for (char q : query) {
        size_t found = std::string_view::npos;
        if (haveMatch && position < lower.size() && lower[position] == q) {
            found = position;  // continues the run it is in
        } else {
            for (size_t i = position; i < lower.size(); ++i)
                if (lower[i] == q && isWordStart(i)) {
                    found = i;
                    break;
                }
            if (found == std::string_view::npos) {
                found = lower.find(q, position);
                if (found == std::string_view::npos) break;
                aligned = false;
            }
        }
        haveMatch = true;
        position = found + 1;
        ++matched;
    }
    if (matched == query.size()) return aligned ? 1.0 : 0.75;
    return 0.5 * static_cast<double>(matched) / static_cast<double>(query.size());
}

double componentScore(std::string_view component, std::string_view lower, std::string_view query) {
    const double w = wordStartWalk(component, lower, query);
    const std::optional<size_t> gap = findMinimalGappiness(lower, query);
    const double g = gap ? static_cast<double>(*gap) : static_cast<double>(query.size() + 2);
    const double d = static_cast<double>(lower.empty() ? query.size() : levenshteinDistance(lower, query));
    return w + 1.0 / (g + 1.0) + 1.0 / (d + 1.0);
}

double recencyFactor(double ageSeconds) { return std::log10(std::max(ageSeconds, 1.0)) + 1.0; }

double quickOpenScore(const std::vector<std::string_view>& query, const std::vector<std::string_view>& path,
                      const std::vector<std::string_view>& lowerPath, const std::vector<std::pair<size_t, size_t>>& placement,
                      std::optional<double> modifiedAge) {
    const double recency = modifiedAge ? recencyFactor(*modifiedAge) : 6.0;
    double product = 1.0, last = 0.0;
    // In query order, so the last pair is the one the file name took.
    for (auto [q, p] : placement) {
        last = componentScore(path[p], lowerPath[p], query[q]);
        product *= last / 3.0;
    }
    const size_t n = placement.size();
    const double closeness = n > 0 ? std::pow(product * last, 1.0 / static_cast<double>(n + 1)) : 0.0;
    const double depth = path.empty() ? 1.0 : static_cast<double>(path.size());
    return closeness + std::sqrt(1.0 / recency) + 1.0 / depth;
}

}  // namespace vx
