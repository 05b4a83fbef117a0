// Indentation detection and the highlighting gate; see tabdetection.hpp for what they answer.
#include "document/tabdetection.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vx {
namespace {

constexpr unsigned short kTab = 9, kLineFeed = 10, kCarriageReturn = 13, kSpace = 32;

// Only this many space-indented lines take part in the width vote: the vote compares every pair,
// so the cap bounds it at about half a million divisor computations.
constexpr size_t kMaxKeptCounts = 1000;
constexpr unsigned kSmallGcdLimit = 32;

constexpr unsigned euclid(unsigned a, unsigned b) {
    while (b != 0) {
        unsigned r = a % b;
        a = b;
        b = r;
    }
    return a;
}

// Indentation counts are nearly always small, so their divisors come from a table.
constexpr auto kSmallGcd = [] {
    std::array<std::array<unsigned char, kSmallGcdLimit>, kSmallGcdLimit> table{};
    for (unsigned a = 0; a < kSmallGcdLimit; ++a)
        for (unsigned b = 0; b < kSmallGcdLimit; ++b) table[a][b] = static_cast<unsigned char>(euclid(a, b));
    return table;
}();

unsigned gcd(unsigned a, unsigned b) {
    if (a < kSmallGcdLimit && b < kSmallGcdLimit) return kSmallGcd[a][b];
    return euclid(a, b);
}

// The index of the next LF at or after `from`, or `length`. Both callers spend most of their time
// here, so it compares eight units at a time where the processor allows.
unsigned long nextLineFeed(const unsigned short* text, unsigned long from, unsigned long length) {
    unsigned long i = from;
#ifdef __SSE2__
    const __m128i lineFeeds = _mm_set1_epi16(kLineFeed);
    for (; i + 8 <= length; i += 8) {
        __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(units, lineFeeds));
        if (mask != 0) return i + unsigned(__builtin_ctz(unsigned(mask))) / 2;
    }
#endif
    while (i < length && text[i] != kLineFeed) ++i;
    return i;
}

uint16_t saturatingIncrement(uint16_t count) {
    return count == std::numeric_limits<uint16_t>::max() ? count : static_cast<uint16_t>(count + 1);
}

struct LineTally {
    size_t indented = 0, tabLines = 0, spaceLines = 0;
    std::vector<uint16_t> spaceCounts;  // one per space line, in text order
};

void tallyLine(LineTally& tally, uint16_t spaces, uint16_t tabs) {
    if (spaces == 0 && tabs == 0) return;
    ++tally.indented;
    if (spaces == 0) {
        ++tally.tabLines;
    } else if (tabs == 0) {
        ++tally.spaceLines;
        tally.spaceCounts.push_back(spaces);
    }
}

// Adds the lines of a text (or of a piece of one that ends at a line feed) to a tally.
void tallyLines(LineTally& tally, const unsigned short* text, unsigned long length) {
    unsigned long i = 0;
    while (i < length) {
        // The leading run of one line.
        uint16_t spaces = 0, tabs = 0;
        while (i < length && (text[i] == kSpace || text[i] == kTab)) {
            if (text[i] == kSpace) spaces = saturatingIncrement(spaces);
            else tabs = saturatingIncrement(tabs);
            ++i;
        }
        // A run that reaches the end of the text is a blank last line: no indentation.
        bool ignored = i == length || text[i] == kLineFeed || text[i] == kCarriageReturn || text[i] == '#' ||
                       text[i] == '/';
        if (!ignored) tallyLine(tally, spaces, tabs);
        i = nextLineFeed(text, i, length);
        if (i < length) ++i;  // past the LF
    }
}

// The width of one level: the divisor from 2 to 8 that most pairs of counts share.
int64_t voteWidth(const std::vector<uint16_t>& counts) {
    // Slot 8 is part of the choice but is never filled: a pair sharing 8 is as likely to be two
    // levels of 4, and widths above 7 are left to the settings.
    std::array<size_t, 9> histogram{};
    for (size_t i = 0; i < counts.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (counts[i] == 0 || counts[j] == 0) continue;
            unsigned divisor = gcd(counts[i], counts[j]);
            if (divisor >= 2 && divisor <= 7) ++histogram[divisor];
        }
    }
    int64_t width = 1;
    size_t best = 0;
    for (int64_t divisor = 2; divisor <= 8; ++divisor) {
        if (histogram[divisor] > best) {  // a tie keeps the smaller divisor
            best = histogram[divisor];
            width = divisor;
        }
    }
    return width;
}

double widthConfidence(const std::vector<uint16_t>& counts, int64_t width) {
    if (width < 2) return 0;
    size_t divisible = 0, oddMultiples = 0, rest = 0;
    for (uint16_t count : counts) {
        if (count % width != 0) {
            ++rest;
        } else {
            ++divisible;
            if (count % (2 * width) != 0) ++oddMultiples;
        }
    }
    if (divisible < 1 || divisible + rest < 1) return 0;
    double factor = 1;
    // Counts that are nearly all even multiples suggest the real width is twice as large.
    double oddShare = double(oddMultiples) / double(divisible);
    if (oddShare <= 0.1) factor = 10 * oddShare;
    return double(divisible) / double(divisible + rest) * factor;
}

}  // namespace

namespace {

TabDetectionResult decide(LineTally& tally) {
    TabDetectionResult result;  // undecided until a rule below decides
    if (tally.indented == 0) return result;

    double indented = double(tally.indented);
    double mixed = indented - double(tally.tabLines) - double(tally.spaceLines);
    if (mixed / indented > 0.1) return result;

    double tabShare = double(tally.tabLines) / indented;
    if (tabShare > 0.8) {
        result.undecided = 0;
        result.usesSpaces = 0;
        result.ratio = tabShare;
        return result;
    }
    if (double(tally.spaceLines) / double(tally.tabLines + tally.spaceLines) < 0.8) return result;

    result.undecided = 0;
    result.usesSpaces = 1;
    result.ratio = double(tally.spaceLines) / indented;
    // The vote and the confidence both look at the same first counts only.
    if (tally.spaceCounts.size() > kMaxKeptCounts) tally.spaceCounts.resize(kMaxKeptCounts);
    result.width = voteWidth(tally.spaceCounts);
    result.widthConfidence = widthConfidence(tally.spaceCounts, result.width);
    return result;
}

}  // namespace

TabDetectionResult detect(const unsigned short* text, unsigned long length) {
    LineTally tally;
    tallyLines(tally, text, length);
    return decide(tally);
}

TabDetectionResult detectInPieces(const std::function<std::u16string_view()>& nextPiece) {
    LineTally tally;
    for (std::u16string_view piece = nextPiece(); !piece.empty(); piece = nextPiece()) {
        tallyLines(tally, reinterpret_cast<const unsigned short*>(piece.data()), piece.size());
        // Only the first counts are ever looked at.
        if (tally.spaceCounts.size() > kMaxKeptCounts) tally.spaceCounts.resize(kMaxKeptCounts);
    }
    return decide(tally);
}

bool shouldHighlight(const unsigned short* text, unsigned long length) {
    if (length >= kHighlightLengthLimit) return false;
    // Lines are measured between LFs; every line after the first includes the LF before it.
    double longLineWeight = 0;
    size_t lines = 1;
    unsigned long lineStart = 0;
    auto measure = [&](unsigned long lineLength) {
        if (lineLength > 1024) longLineWeight += double(lineLength) / 1024.0;
    };
    for (unsigned long i = nextLineFeed(text, 0, length); i < length; i = nextLineFeed(text, i + 1, length)) {
        measure(i - lineStart);
        lineStart = i;  // the next line starts with this LF
        ++lines;
    }
    measure(length - lineStart);
    return !(longLineWeight * 4 > double(lines));
}

}  // namespace vx
