// Measuring, normalizing and shifting the leading whitespace of lines. Text recipes, snippets and
// the typing aids build on these; all work on UTF-16 text and count columns with the document's
// tab size (a tab moves to the next multiple of it).
//
//     "\t  x"  indentation "\t  "   raw length 3   width 6 with tab size 4
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "document/indentation_context.hpp"

namespace vx {

// Number of leading spaces and tabs.
size_t rawIndentationLength(std::u16string_view line);

// The leading run of spaces and tabs; the whole string when it is all whitespace (so that a
// line of, say, no-break spaces counts as nothing but indentation).
std::u16string_view indentation(std::u16string_view line);

// The line with its indentation replaced by `newIndentation`.
std::u16string stringBySettingIndentation(std::u16string_view line, std::u16string_view newIndentation);

// The column the leading run reaches; stops at the first character that is not a space or tab.
uint64_t indentationLengthInSpacesWithContext(std::u16string_view line, const VXIndentationContext& context);

// An indentation string rewritten in the context's style: tabs expanded to spaces, anything else
// dropped, then (with soft tabs off) each full level of spaces turned back into a tab.
std::u16string normalizeIndentationUsingContext(std::u16string_view indentation, const VXIndentationContext& context);
std::u16string lineByNormalizingIndentationUsingContext(std::u16string_view line, const VXIndentationContext& context);

// Shifts a line by one level: n > 0 adds a `tabString` in front, n < 0 removes one level's worth
// of columns (the character that straddles the new edge becomes spaces), n == 0 copies.
std::u16string indentBy(std::u16string_view line, int64_t n, const VXIndentationContext& context);

// Answers how many units at the start of a line's content (after its indentation) are a prefix
// to drop, for instance a comment marker that `prependString` replaces; 0 keeps the content.
using LinePrefixMatcher = std::function<size_t(std::u16string_view content)>;

// Re-indents a block of lines (separated by LF; a CR before it stays with its line) that is
// about to be inserted at an indented position. The common leading whitespace of the non-blank
// lines (their literal common prefix) is removed; the indentation left on each line is
// normalized into `context`; every line after the first gets `indentationToAdd` in front (the
// first continues the line at the insertion point, which is indented already); `prependString`
// goes between a line's indentation and its content, after `prefix` removed what it matches.
// Blank lines keep no trailing whitespace.
std::u16string stringByHomogenizingIndentationInto(std::u16string_view block, const VXIndentationContext& context,
                                                   std::u16string_view indentationToAdd,
                                                   const LinePrefixMatcher& prefix = {},
                                                   std::u16string_view prependString = {});

}  // namespace vx
