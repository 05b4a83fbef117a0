// Oniguruma expressions over UTF-16LE text, owned by RAII types.
//
// Definitions compile their expressions once, when the definition is built, with the Ruby
// syntax and the options multiline (dot matches the line break), negate-single-line and
// capture-group; ignore-case and extended (free-spacing) when the pattern asks. A compiled
// expression is immutable and may be matched from several threads at once, each with its own
// region. Positions here are UTF-16 code units relative to the subject's start.
#pragma once

#include <oniguruma.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/unique_handle.hpp"

namespace vx {

inline void freeOnigRegion(OnigRegion* region) { onig_region_free(region, 1); }
using OnigRegexPtr = UniqueHandle<OnigRegex, onig_free>;
using OnigRegionPtr = UniqueHandle<OnigRegion*, freeOnigRegion>;
using OnigRegSetPtr = UniqueHandle<OnigRegSet*, onig_regset_free>;

// A region for one thread's matches; allocated once and reused.
OnigRegionPtr makeRegion();

struct VXRegexOptions {
    bool caseInsensitive = false;
    bool freeSpacing = false;
};

// The option bits every definition expression is compiled with.
OnigOptionType regexCompileOptions(VXRegexOptions options);

class VXRegex {
public:
    // Compiles; nothing when the expression is empty or does not compile (the reason is logged).
    static std::shared_ptr<const VXRegex> compile(std::u16string_view pattern, VXRegexOptions options = {});
    // The raw compiled handle, for callers that put a private copy into a regex set.
    static OnigRegexPtr compileHandle(std::u16string_view pattern, VXRegexOptions options);

    // Anchored: the length of the match that starts exactly at `at`, or nothing.
    std::optional<uint64_t> matchAt(std::u16string_view subject, uint64_t at, OnigRegion* region) const;
    // Unanchored: the leftmost match that starts at or after `from` (up to the subject's end,
    // inclusive); the region holds it. Answers the match's start, or nothing.
    std::optional<uint64_t> search(std::u16string_view subject, uint64_t from, OnigRegion* region) const;
    // The group number of a named group (the last one when several share the name), or -1.
    int groupNumberForName(std::string_view name, OnigRegion* region) const;
    int groupCount() const;
    OnigRegex handle() const { return m_regex.get(); }

    explicit VXRegex(OnigRegexPtr regex) : m_regex(std::move(regex)) {}

private:
    OnigRegexPtr m_regex;
};

// Bytes for Oniguruma: UTF-16 code units are handed over as they are (little-endian host).
inline const OnigUChar* onigBytes(const char16_t* text) { return reinterpret_cast<const OnigUChar*>(text); }

// The (location, length) of group `group` in a region, in UTF-16 units; nothing when the group
// did not take part in the match.
std::optional<std::pair<uint64_t, uint64_t>> regionGroup(const OnigRegion* region, int group);

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
