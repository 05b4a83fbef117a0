// Whole texts through the line highlighter, and the two checking formats of `vx highlight`.
//
//   scopes:  L0:                       events:  L0:
//            0-3 source.c storage.type.c        0 0 0 3 storage.type.c
//            3-4 source.c                       ...
//
// A text is split at LF, CRLF and CR; a text that ends with a line break has a last, empty
// line. Each line starts in the context the previous one ended in; the first starts in the
// language's root context.
#pragma once

#include <string>
#include <string_view>
#include <functional>
#include <vector>

#include "syntax/context.hpp"
#include "syntax/highlighter.hpp"
#include "syntax/ruleset.hpp"

namespace vx {

struct VXTextLine {
    uint64_t start = 0;          // document offset of the first character
    uint64_t contentLength = 0;  // without the line break
    uint64_t length = 0;         // with it
};
std::vector<VXTextLine> splitTextLines(std::u16string_view text);

struct VXHighlightedLine {
    VXTextLine line;
    VXContext startContext;
    std::vector<VXSyntaxZone> events;
};

// The context a document in this language starts in: its root zone.
VXContext rootContextForRuleset(const VXSyntaxRuleset& ruleset);

std::vector<VXHighlightedLine> highlightText(std::u16string_view text, const VXSyntaxRuleset& ruleset,
                                             VXSyntaxParseState* state = nullptr);

// A run of characters of one line under one scope stack (outermost first, starting with the
// root scope); columns in UTF-16 units within the line.
struct VXScopeRun {
    uint64_t start = 0, end = 0;
    std::vector<VXScope> scopes;
};
// The maximal runs of equal scope stacks of a line, covering its content.
std::vector<VXScopeRun> scopeRunsForLine(const VXHighlightedLine& line);
// The same runs handed to `visit` one by one, without keeping them (for long lines).
void forEachScopeRun(const VXHighlightedLine& line, const std::function<void(const VXScopeRun&)>& visit);
// The scope stack at a column of a line (at or past its content end: the stack there).
std::vector<VXScope> scopeStackAtColumn(const VXHighlightedLine& line, uint64_t column);

// The maximal runs of equal scope stacks on each line (columns in UTF-16 units within the line,
// stacks outermost first starting with the root scope), covering the content of each line.
std::string formatScopes(const std::vector<VXHighlightedLine>& lines);
// Each line's events: "<effective> <semantic> <location> <length> <scope>".
std::string formatEvents(const std::vector<VXHighlightedLine>& lines);
// The same for the n-th line alone, appended to `out` (a text highlighted as it streams).
void appendScopesForLine(std::string& out, uint64_t n, const VXHighlightedLine& line);
void appendEventsForLine(std::string& out, uint64_t n, const VXHighlightedLine& line);

}  // namespace vx
