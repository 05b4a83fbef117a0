#include "projects/smart_sort.hpp"

#include <unicode/uchar.h>

#include <cmath>

#include "platform/unicode.hpp"
#include "projects/edit_distance.hpp"

namespace vx {
namespace {

char16_t foldUnit(char16_t unit) { return static_cast<char16_t>(u_tolower(unit)); }

std::u16string lowered(std::u16string_view text) {
    std::u16string out(text);
    for (auto& unit : out) unit = foldUnit(unit);
    return out;
}

double caseScore(std::u16string_view query, std::u16string_view lowerQuery, std::u16string_view name,
                 std::u16string_view lowerName) {
    const size_t at = lowerName.find(lowerQuery);
    if (at == std::u16string_view::npos) return 0;
    int differing = 0;
    for (size_t i = 0; i < query.size(); ++i)
        if (query[i] != name[at + i]) ++differing;
    return std::pow(2.0, -differing);
}

double anchorScore(std::u16string_view lowerQuery, std::u16string_view lowerName) {
    if (lowerName == lowerQuery) return 1.0;
    if (lowerName.starts_with(lowerQuery)) return 0.75;
    if (lowerName.ends_with(lowerQuery)) return 0.25;
    return 0;
}

}  // namespace

std::vector<double> smartcmpScores(const std::string& query, const std::vector<SmartSortEntry>& entries) {
    const std::u16string q = utf16FromUtf8(query);
    const std::u16string lowerQuery = lowered(q);
    std::vector<std::u16string> names;
    names.reserve(entries.size());
    size_t longest = 1;
    for (const auto& entry : entries) {
        names.push_back(utf16FromUtf8(entry.name));
        longest = std::max(longest, names.back().size());
    }
    // The divisor is the unsigned difference: a query longer than every name wraps it to a huge
    // number, which leaves L close to 1. A query exactly as long as the longest name would divide
    // by zero; it divides by 1 instead.
    size_t divisor = longest - q.size();
    if (divisor == 0) divisor = 1;
    std::vector<double> scores;
    scores.reserve(entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        const std::u16string lowerName = lowered(names[i]);
        // Positions compare ignoring case: both sides are folded.
        const size_t lev = editDistance<char16_t>(lowerQuery, lowerName);
        const double closeness = lev == 0 ? 1.0 : 1.0 - static_cast<double>(lev) / static_cast<double>(divisor);
        const double category = entries[i].priorityval ? *entries[i].priorityval / 7.0 : 0.0;
        scores.push_back(closeness + 0.75 * caseScore(q, lowerQuery, names[i], lowerName) +
                         anchorScore(lowerQuery, lowerName) + 1.5 * category);
    }
    return scores;
}

std::vector<size_t> smartSortOrder(const std::string& query, const std::vector<SmartSortEntry>& entries,
                                   std::vector<double>* scoresOut) {
    const std::vector<double> scores = smartcmpScores(query, entries);
    std::vector<std::u16string> names;
    names.reserve(entries.size());
    for (const auto& entry : entries) names.push_back(utf16FromUtf8(entry.name));
    std::vector<size_t> order(entries.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        if (scores[a] != scores[b]) return scores[a] > scores[b];
        return names[a] < names[b];
    });
    if (scoresOut) *scoresOut = scores;
    return order;
}

}  // namespace vx
