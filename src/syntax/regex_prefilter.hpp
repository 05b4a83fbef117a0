// What an expression's matches must start with, read from the expression's text.
//
// Oniguruma searches expressions that begin with a character class or a look-behind by trying a
// match at every position of the subject, which costs tens of nanoseconds per position even
// where the first character rules a match out. Most grammar expressions begin with something
// narrow (a digit, a quote, an upper-case letter, a look-behind for "."), so a scan that skips
// positions whose character, or the character before them, cannot begin a match, and tries the
// expression only at the rest, finds the same leftmost match several times faster.
//
// The analysis is conservative: whatever it does not understand (back-references, Unicode
// properties, conditionals, free-spacing mode, case folding outside ASCII) widens the answer
// to "anything", so that a filter never rejects a position where the expression matches.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vx {

// A set of UTF-16 code units: each ASCII unit on its own, everything else as one member.
struct VXCharFilter {
    std::bitset<128> ascii;
    bool other = false;

    bool contains(char16_t c) const { return c < 128 ? ascii[c] : other; }
    bool isEverything() const { return other && ascii.all(); }
    bool meets(const VXCharFilter& set) const { return (ascii & set.ascii).any() || (other && set.other); }
    // The units of a text.
    static VXCharFilter of(std::u16string_view text) {
        VXCharFilter units;
        for (char16_t c : text) {
            if (c < 128) units.ascii[c] = true;
            else units.other = true;
        }
        return units;
    }
    static VXCharFilter everything() {
        VXCharFilter all;
        all.ascii.set();
        all.other = true;
        return all;
    }
};

struct VXRegexPrefilter {
    // The units a match can begin with.
    VXCharFilter first = VXCharFilter::everything();
    // The units the one before a match can be, and whether a match can begin a line.
    bool constrainsPrevious = false;
    VXCharFilter previous = VXCharFilter::everything();
    bool atLineStart = true;

    // After the first unit, the expression as stages: a run of units (known exactly in ASCII)
    // and then one unit that no member of the run can be. From a match's start, the first
    // unit outside the run must be one of `required`; the next stage starts after it when
    // `continues`. A unit beyond ASCII where a stage looks stops the check (it may belong to
    // the run or not).
    struct Stage {
        VXCharFilter run;
        VXCharFilter required;
        bool continues = false;
    };
    std::vector<Stage> chain;
    static constexpr size_t kMaxStages = 4;

    // The expression is an alternation one of whose branches is a bare "$" (an end pattern
    // like `(")|$` that also closes its zone at the line's end). The other branches are
    // described above; the empty match of "$" can only be before an LF or at the text's end,
    // and is looked for there whatever the other branches require.
    bool orLineEnd = false;

    // What each stage found for the last run it stepped over, so that scanning a long run
    // costs its length once: arriving anywhere in [from, runEnd] leads to the same answer.
    // Valid for one text only.
    struct Memo {
        struct Run {
            uint64_t from = 1;
            uint64_t runEnd = 0;
            bool admitted = false;
        };
        std::array<Run, kMaxStages> stages;
    };

    // Whether a match may begin at `position` of `text` (positions inside the text only).
    bool admits(std::u16string_view text, uint64_t position, Memo* memo = nullptr) const {
        if (!first.contains(text[position])) return false;
        if (constrainsPrevious && !(position == 0 ? atLineStart : previous.contains(text[position - 1]))) return false;
        return chain.empty() || chainAdmits(text, position, memo);
    }
    bool chainAdmits(std::u16string_view text, uint64_t position, Memo* memo) const;

    // Whether a text holding the units `present` (and no others) can hold a match: one of the
    // first units, and one of each stage's required ones, must be among them. Lets a search
    // pass over a line at once.
    bool mayMatchIn(const VXCharFilter& present) const;
    // Whether skipping positions this way is likely to beat the expression engine's own
    // search: a first character that is common in source text (most letters) with nothing
    // known of the character before lets through nearly every position.
    bool worthScanning() const;

    // Requires a match to begin a word: the unit before it is not an ASCII letter, digit or
    // "_" (or there is none).
    void requireWordStart();
};

// The prefilter of an expression compiled with the Ruby syntax (and ignore-case when asked);
// nothing when the expression can match an empty text (other than by a top-level "$"
// alternative, see `orLineEnd`), or is beyond the analysis.
std::optional<VXRegexPrefilter> VXRegexPrefilterForExpression(std::u16string_view expression, bool caseInsensitive);

}  // namespace vx
