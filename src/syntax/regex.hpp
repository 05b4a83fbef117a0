// Oniguruma expressions over UTF-16LE text, owned by RAII types.
//
// Definitions compile their expressions once, when the definition is built, with the Ruby
// syntax and the options multiline (dot matches the line break), negate-single-line and
// capture-group; ignore-case and extended (free-spacing) when the pattern asks. A compiled
// expression is immutable and may be matched from several threads at once, each with its own
// region. Positions here are UTF-16 code units relative to the subject's start.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vx {

// Oniguruma's region (the groups of one match) and regex set, opaque outside the files that
// call Oniguruma (see onig_handles.hpp): its header cannot share a translation unit with the
// C library's POSIX <regex.h>, which other code (GoogleTest among it) includes.
struct VXRegexRegion;
struct VXRegexSet;

struct VXRegexRegionDeleter {
    void operator()(VXRegexRegion* region) const;
};
using VXRegexRegionPtr = std::unique_ptr<VXRegexRegion, VXRegexRegionDeleter>;
struct VXRegexSetDeleter {
    void operator()(VXRegexSet* set) const;
};
using VXRegexSetPtr = std::unique_ptr<VXRegexSet, VXRegexSetDeleter>;

// A region for one thread's matches; allocated once and reused.
VXRegexRegionPtr makeRegion();

struct VXRegexOptions {
    bool caseInsensitive = false;
    bool freeSpacing = false;
};

class VXRegex {
public:
    // Compiles; nothing when the expression is empty or does not compile (the reason is logged).
    static std::shared_ptr<const VXRegex> compile(std::u16string_view pattern, VXRegexOptions options = {});

    // Anchored: the length of the match that starts exactly at `at`, or nothing.
    std::optional<uint64_t> matchAt(std::u16string_view subject, uint64_t at, VXRegexRegion* region) const;
    // Unanchored: the leftmost match that starts in [from, lastStart] (lastStart at most the
    // subject's length); the region holds it. Answers the match's start, or nothing.
    std::optional<uint64_t> search(std::u16string_view subject, uint64_t from, uint64_t lastStart,
                                   VXRegexRegion* region) const;
    // The group number of a named group (the last one when several share the name), or -1.
    int groupNumberForName(std::string_view name, VXRegexRegion* region) const;
    int groupCount() const;

    struct Handle;  // owns the compiled expression (onig_handles.hpp)
    explicit VXRegex(std::unique_ptr<Handle> handle);
    ~VXRegex();
    VXRegex(const VXRegex&) = delete;
    VXRegex& operator=(const VXRegex&) = delete;

private:
    std::unique_ptr<Handle> m_handle;
};

// The (location, length) of group `group` in a region, in UTF-16 units; nothing when the group
// did not take part in the match.
std::optional<std::pair<uint64_t, uint64_t>> regionGroup(const VXRegexRegion* region, int group);

// A backslash before each of $ ( ) * + . ? [ \ ^ | and before nothing else.
std::u16string VXEscapeRegex(std::u16string_view text);

// True when the expression holds a backslash followed by a decimal digit (an escaped backslash
// does not count).
bool regexHasBackrefs(std::u16string_view pattern);

// Replaces each backslash-digit reference with the escaped text of that group of the start
// match; a group that did not take part becomes the empty string. `groupText(n)` answers the
// text of group n, or nothing.
template <class GroupText>
std::u16string VXExpandBackrefsInRegex(std::u16string_view pattern, GroupText&& groupText) {
    std::u16string out;
    out.reserve(pattern.size());
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char16_t c = pattern[i];
        if (c == u'\\' && i + 1 < pattern.size()) {
            const char16_t next = pattern[i + 1];
            if (next >= u'0' && next <= u'9') {
                std::optional<std::u16string> text = groupText(static_cast<int>(next - u'0'));
                if (text) out += VXEscapeRegex(*text);
                ++i;
                continue;
            }
            out += c;
            out += next;
            ++i;
            continue;
        }
        out += c;
    }
    return out;
}

}  // namespace vx
