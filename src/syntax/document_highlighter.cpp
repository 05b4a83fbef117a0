#include "syntax/document_highlighter.hpp"

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

// The scope stack through one line, from its events.
class ScopeStack {
public:
    struct Entry {
        VXScope scope;
        const VXSyntaxZoneDefinition* definition;
        VXSXZoneSemanticType semantic;
    };
    void push(const VXSyntaxZone& zone) { m_entries.push_back({zone.scope, zone.definition, zone.semanticType}); }
    void pop(const VXSyntaxZone& zone) {
        // The entry this event closes: the innermost with the same origin. Captures that cross
        // (possible with look-around groups) close the right one even when it is not on top.
        for (size_t i = m_entries.size(); i-- > 0;) {
            const Entry& e = m_entries[i];
            if (e.scope == zone.scope && e.definition == zone.definition && e.semantic == zone.semanticType) {
                m_entries.erase(m_entries.begin() + static_cast<ptrdiff_t>(i));
                return;
            }
        }
    }
    std::vector<VXScope> scopes() const {
        std::vector<VXScope> out;
        out.reserve(m_entries.size());
        for (const Entry& e : m_entries) out.push_back(e.scope);
        return out;
    }

private:
    std::vector<Entry> m_entries;
};

}  // namespace

namespace {

// Walks a line's events; `until` limits the columns covered (the content end, or one past a column).
std::vector<VXScopeRun> scopeRuns(const VXHighlightedLine& line, uint64_t until) {
    ScopeStack stack;
    for (const VXSyntaxZone& zone : line.startContext) {
        stack.push(zone);
        if (zone.definition && !zone.definition->innerScope.isNil()) {
            VXSyntaxZone inner = zone;
            inner.scope = zone.definition->innerScope;
            inner.semanticType = VXSXZoneSemanticTypeInner;
            stack.push(inner);
        }
    }
    std::vector<VXScopeRun> runs;
    uint64_t column = 0;
    auto advanceTo = [&](uint64_t to) {
        to = std::min(to, until);
        if (to <= column) return;
        std::vector<VXScope> scopes = stack.scopes();
        if (!runs.empty() && runs.back().end == column && runs.back().scopes == scopes) runs.back().end = to;
        else runs.push_back({column, to, std::move(scopes)});
        column = to;
    };
    const uint64_t base = line.line.start;
    auto relative = [&](uint64_t location) { return location < base ? 0 : location - base; };
    for (const VXSyntaxZone& zone : line.events) {
        advanceTo(relative(zone.range.location));
        switch (zone.effectiveType) {
        case VXSXZoneEffectiveTypeStart: stack.push(zone); break;
        case VXSXZoneEffectiveTypeEnd: stack.pop(zone); break;
        case VXSXZoneEffectiveTypeWhole:
            stack.push(zone);
            advanceTo(relative(zone.range.end()));
            stack.pop(zone);
            break;
        }
    }
    advanceTo(until);
    if (runs.empty() || runs.back().end < until) runs.push_back({column, until, stack.scopes()});
    return runs;
}

}  // namespace

std::vector<VXScopeRun> scopeRunsForLine(const VXHighlightedLine& line) {
    std::vector<VXScopeRun> runs = scopeRuns(line, line.line.contentLength);
    if (line.line.contentLength == 0) runs.clear();  // an empty line has no characters to cover
    return runs;
}

std::vector<VXScope> scopeStackAtColumn(const VXHighlightedLine& line, uint64_t column) {
    // The stack over the character at `column`: runs up to one past it, the last run is its own.
    return scopeRuns(line, column + 1).back().scopes;
}

std::string formatScopes(const std::vector<VXHighlightedLine>& lines) {
    std::string out;
    for (size_t n = 0; n < lines.size(); ++n) {
        out += "L" + std::to_string(n) + ":\n";
        for (const VXScopeRun& run : scopeRunsForLine(lines[n])) {
            out += std::to_string(run.start) + "-" + std::to_string(run.end);
            for (const VXScope& scope : run.scopes) (out += " ") += scope.stringRepresentation();
            out += "\n";
        }
    }
    return out;
}

std::string formatEvents(const std::vector<VXHighlightedLine>& lines) {
    std::string out;
    size_t events = 0;
    for (const auto& line : lines) events += line.events.size();
    out.reserve(lines.size() * 8 + events * 40);
    char number[24];
    auto append = [&](uint64_t value, char after) {
        const auto end = std::to_chars(number, number + sizeof number, value).ptr;
        out.append(number, end);
        out += after;
    };
    for (size_t n = 0; n < lines.size(); ++n) {
        out += 'L';
        append(n, ':');
        out += '\n';
        for (const VXSyntaxZone& zone : lines[n].events) {
            append(zone.effectiveType, ' ');
            append(zone.semanticType, ' ');
            append(zone.range.location, ' ');
            append(zone.range.length, ' ');
            out += zone.scope.stringRepresentation();
            out += '\n';
        }
    }
    return out;
}

}  // namespace vx
