#include "syntax/document_highlighter.hpp"
#include "syntax/zone_walk.hpp"

#include <algorithm>
#include <charconv>

namespace vx {

std::vector<VXTextLine> splitTextLines(std::u16string_view text) {
    std::vector<VXTextLine> lines;
    uint64_t start = 0;
    for (uint64_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c != u'\n' && c != u'\r') continue;
        uint64_t end = i + 1;
        if (c == u'\r' && end < text.size() && text[end] == u'\n') ++end;
        lines.push_back({start, i - start, end - start});
        start = end;
        i = end - 1;
    }
    lines.push_back({start, text.size() - start, text.size() - start});
    return lines;
}

VXContext rootContextForRuleset(const VXSyntaxRuleset& ruleset) {
    return VXContext::defaultContextForDocument(ruleset.scope, ruleset.rootDefinition());
}

std::vector<VXHighlightedLine> highlightText(std::u16string_view text, const VXSyntaxRuleset& ruleset,
                                             VXSyntaxParseState* givenState) {
    std::vector<VXHighlightedLine> out;
    VXSyntaxParseState localState;
    VXSyntaxParseState& state = givenState ? *givenState : localState;
    VXContext context = rootContextForRuleset(ruleset);
    for (const VXTextLine& line : splitTextLines(text)) {
        VXHighlightedLine highlighted{line, context, {}};
        const VXSyntaxLine subject{text.substr(line.start, line.length), line.contentLength, line.start};
        context = VXSyntaxParseLine(context, subject, highlighted.events, ruleset, &state);
        out.push_back(std::move(highlighted));
    }
    return out;
}


namespace {

// Walks a line's events and hands each maximal run of one scope stack to `visit`; `until`
// limits the columns covered (the content end, or one past a column).
template <class Visit>
void walkScopeRuns(const VXHighlightedLine& line, uint64_t until, Visit&& visit) {
    VXLineZoneStack stack(line.startContext);
    VXScopeRun pending;
    bool hasPending = false;
    std::vector<VXScope> scopes;
    const uint64_t column = VXWalkLineZones(stack, line.events, line.line.start, until,
                                            [&](uint64_t from, uint64_t to, const VXLineZoneStack& open) {
                                                open.scopesInto(scopes);
                                                if (hasPending && pending.end == from && pending.scopes == scopes) {
                                                    pending.end = to;
                                                    return;
                                                }
                                                if (hasPending) visit(pending);
                                                pending.start = from;
                                                pending.end = to;
                                                pending.scopes.swap(scopes);
                                                hasPending = true;
                                            });
    if (hasPending) visit(pending);
    if (!hasPending || pending.end < until) visit(VXScopeRun{column, until, stack.scopes()});
}

std::vector<VXScopeRun> scopeRuns(const VXHighlightedLine& line, uint64_t until) {
    std::vector<VXScopeRun> runs;
    walkScopeRuns(line, until, [&](const VXScopeRun& run) { runs.push_back(run); });
    return runs;
}

}  // namespace

std::vector<VXScopeRun> scopeRunsForLine(const VXHighlightedLine& line) {
    std::vector<VXScopeRun> runs = scopeRuns(line, line.line.contentLength);
    if (line.line.contentLength == 0) runs.clear();  // an empty line has no characters to cover
    return runs;
}

void forEachScopeRun(const VXHighlightedLine& line, const std::function<void(const VXScopeRun&)>& visit) {
    if (line.line.contentLength == 0) return;  // an empty line has no characters to cover
    walkScopeRuns(line, line.line.contentLength, visit);
}

std::vector<VXScope> scopeStackAtColumn(const VXHighlightedLine& line, uint64_t column) {
    // The stack over the character at `column`: runs up to one past it, the last run is its own.
    return scopeRuns(line, column + 1).back().scopes;
}

void appendScopesForLine(std::string& out, uint64_t n, const VXHighlightedLine& line) {
    out += "L" + std::to_string(n) + ":\n";
    forEachScopeRun(line, [&](const VXScopeRun& run) {
        out += std::to_string(run.start) + "-" + std::to_string(run.end);
        for (const VXScope& scope : run.scopes) (out += " ") += scope.stringRepresentation();
        out += "\n";
    });
}

void appendEventsForLine(std::string& out, uint64_t n, const VXHighlightedLine& line) {
    char number[24];
    auto append = [&](uint64_t value, char after) {
        const auto end = std::to_chars(number, number + sizeof number, value).ptr;
        out.append(number, end);
        out += after;
    };
    out += 'L';
    append(n, ':');
    out += '\n';
    for (const VXSyntaxZone& zone : line.events) {
        append(zone.effectiveType, ' ');
        append(zone.semanticType, ' ');
        append(zone.range.location, ' ');
        append(zone.range.length, ' ');
        out += zone.scope.stringRepresentation();
        out += '\n';
    }
}

std::string formatScopes(const std::vector<VXHighlightedLine>& lines) {
    std::string out;
    for (size_t n = 0; n < lines.size(); ++n) appendScopesForLine(out, n, lines[n]);
    return out;
}

std::string formatEvents(const std::vector<VXHighlightedLine>& lines) {
    std::string out;
    size_t events = 0;
    for (const auto& line : lines) events += line.events.size();
    out.reserve(lines.size() * 8 + events * 40);
    for (size_t n = 0; n < lines.size(); ++n) appendEventsForLine(out, n, lines[n]);
    return out;
}

}  // namespace vx
