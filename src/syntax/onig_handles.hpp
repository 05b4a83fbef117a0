// Oniguruma itself, for the few files that call it. Its header defines names that clash with
// the C library's POSIX <regex.h>, so it is included here only, never from a public header.
#pragma once

#include <oniguruma.h>

#include <string_view>

#include "platform/unique_handle.hpp"
#include "syntax/regex.hpp"

namespace vx {

using OnigRegexPtr = UniqueHandle<OnigRegex, onig_free>;

struct VXRegex::Handle {
    OnigRegexPtr regex;
};

inline OnigRegion* onigRegion(VXRegexRegion* region) { return reinterpret_cast<OnigRegion*>(region); }
inline const OnigRegion* onigRegion(const VXRegexRegion* region) { return reinterpret_cast<const OnigRegion*>(region); }
inline OnigRegSet* onigSet(VXRegexSet* set) { return reinterpret_cast<OnigRegSet*>(set); }
inline VXRegexSet* vxSet(OnigRegSet* set) { return reinterpret_cast<VXRegexSet*>(set); }

// Bytes for Oniguruma: UTF-16 code units are handed over as they are (little-endian host).
inline const OnigUChar* onigBytes(const char16_t* text) { return reinterpret_cast<const OnigUChar*>(text); }

// The option bits every definition expression is compiled with.
OnigOptionType regexCompileOptions(VXRegexOptions options);
// A compiled expression of our own, for a regex set (which takes ownership of what it holds).
OnigRegexPtr compileOnigRegex(std::u16string_view pattern, VXRegexOptions options);

}  // namespace vx
