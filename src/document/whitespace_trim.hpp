// Trimming trailing whitespace on save.
//
// Stripping removes the spaces and tabs just before each line break, on lines that hold something
// other than spaces, tabs and line breaks (amount 1), or on every line (amount 2). The text before
// the caret keeps the end of its last line (the caret may stand right after spaces the user just
// typed); the text after the selection has its last line stripped too; the selection itself is
// never touched.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/range.hpp"

namespace vx {

// Texts (and the parts around the selection) longer than this are left alone.
inline constexpr uint64_t kTrimLimit = 1'048'576;

// Strips one text, working on its UTF-8 bytes; a text longer than kTrimLimit comes back unchanged.
std::u16string stripTrailingWhitespace(std::u16string_view text, bool keepEnd, int64_t amount);

struct TrimPlan {
    std::u16string text;  // the whole new text
    Range selection;      // the selection moved left by what was removed before it
};

// The trim of a whole text around a selection; nothing when the trim does not apply or changes nothing.
std::optional<TrimPlan> planTrailingWhitespaceTrim(std::u16string_view text, Range selection, int64_t amount);

}  // namespace vx
