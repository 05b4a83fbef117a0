#include "app/editor/highlighting.hpp"

#include <algorithm>
#include <string_view>

#include "syntax/document_highlighter.hpp"
#include "syntax/zone_walk.hpp"
#include "syntax/zone_definition.hpp"

namespace vx::editor {
namespace {

using tui::Color;

struct ScopeColor {
    std::string_view prefix;
    Color color;
    uint8_t attributes;
};

// The first prefix that matches a scope, looking from the innermost scope outwards, decides.
constexpr ScopeColor kScopeColors[] = {
    {"comment", Color::rgb(0x7f, 0x84, 0x8e), tui::kItalic},
    {"string.regexp", Color::rgb(0xd1, 0x9a, 0x66), 0},
    {"string", Color::rgb(0x98, 0xc3, 0x79), 0},
    {"constant.character.escape", Color::rgb(0x56, 0xb6, 0xc2), 0},
    {"constant", Color::rgb(0xd1, 0x9a, 0x66), 0},
    {"keyword.operator", Color::rgb(0x56, 0xb6, 0xc2), 0},
    {"keyword", Color::rgb(0xc6, 0x78, 0xdd), 0},
    {"storage", Color::rgb(0xc6, 0x78, 0xdd), 0},
    {"entity.name.function", Color::rgb(0x61, 0xaf, 0xef), 0},
    {"entity.name.tag", Color::rgb(0xe0, 0x6c, 0x75), 0},
    {"entity.other.attribute-name", Color::rgb(0xd1, 0x9a, 0x66), 0},
    {"entity.name", Color::rgb(0xe5, 0xc0, 0x7b), 0},
    {"support.function", Color::rgb(0x61, 0xaf, 0xef), 0},
    {"support", Color::rgb(0x56, 0xb6, 0xc2), 0},
    {"variable.parameter", Color::rgb(0xe5, 0xc0, 0x7b), tui::kItalic},
    {"variable", Color::rgb(0xe0, 0x6c, 0x75), 0},
    {"meta.preprocessor", Color::rgb(0xc6, 0x78, 0xdd), 0},
    {"markup.heading", Color::rgb(0xe0, 0x6c, 0x75), tui::kBold},
    {"markup.bold", Color{}, tui::kBold},
    {"markup.italic", Color{}, tui::kItalic},
    {"invalid", Color::rgb(0xff, 0x50, 0x50), tui::kUnderline},
};

bool hasComponentPrefix(std::string_view scope, std::string_view prefix) {
    return scope.starts_with(prefix) && (scope.size() == prefix.size() || scope[prefix.size()] == '.');
}


}  // namespace

tui::Style BasicScopeStyler::styleFor(const VXContext& context, const tui::Style& base) const {
    for (size_t i = context.size(); i-- > 0;) {
        std::string_view name = context[i].scope.stringRepresentation();
        for (const auto& entry : kScopeColors) {
            if (!hasComponentPrefix(name, entry.prefix)) continue;
            tui::Style style = base;
            if (!entry.color.isDefault()) style.foreground = entry.color;
            style.attributes |= entry.attributes;
            return style;
        }
    }
    return base;
}

TabHighlighter::TabHighlighter(const VXSyntaxRuleset& ruleset) : m_ruleset(ruleset) {
    m_checkpoints.push_back(rootContextForRuleset(ruleset));
}

void TabHighlighter::invalidateFrom(uint64_t line) {
    // The checkpoint at or before the line stays: it is the start of a line the edit did not reach.
    size_t keep = static_cast<size_t>(line / kCheckpointInterval) + 1;
    if (m_checkpoints.size() > keep) m_checkpoints.resize(keep);
    if (m_next && m_next->first > line) m_next.reset();
}

VXContext TabHighlighter::parseLine(const TextBuffer& text, uint64_t line, const VXContext& start,
                                    std::vector<VXSyntaxZone>& events) {
    uint64_t begin = text.lineStart(line);
    uint64_t end = line + 1 < text.lineCount() ? text.lineStart(line + 1) : text.length();
    std::u16string units = text.substring({begin, end - begin});
    uint64_t content = text.lineContentRange(line).length;
    const VXSyntaxLine subject{units, content, begin};
    events.clear();
    return VXSyntaxParseLine(start, subject, events, m_ruleset, &m_state);
}

bool TabHighlighter::advance(const TextBuffer& text, uint64_t target, std::chrono::microseconds budget) {
    target = std::min(target, text.lineCount() - 1);
    auto deadline = std::chrono::steady_clock::now() + budget;
    std::vector<VXSyntaxZone> events;
    // The checkpoint that serves `target` is known once knownThrough() + interval > target.
    while (knownThrough() + kCheckpointInterval <= target) {
        uint64_t line = knownThrough();
        VXContext context = m_checkpoints.back();
        for (uint64_t stop = line + kCheckpointInterval; line < stop; ++line) context = parseLine(text, line, context, events);
        m_checkpoints.push_back(std::move(context));
        if (std::chrono::steady_clock::now() >= deadline) break;
    }
    return knownThrough() + kCheckpointInterval > target;
}

VXContext TabHighlighter::contextForLine(const TextBuffer& text, uint64_t line) {
    advance(text, line, std::chrono::hours(1));
    uint64_t from = line / kCheckpointInterval * kCheckpointInterval;
    if (m_next && m_next->first == line) return m_next->second;
    VXContext context = m_checkpoints[from / kCheckpointInterval];
    std::vector<VXSyntaxZone> events;
    for (uint64_t l = from; l < line; ++l) context = parseLine(text, l, context, events);
    return context;
}

std::optional<std::vector<StyledRun>> TabHighlighter::runsForLine(const TextBuffer& text, uint64_t line,
                                                                 const ScopeStyler& styler, const tui::Style& base) {
    if (line >= text.lineCount() || !isWithinReach(line)) return std::nullopt;
    VXContext start = contextForLine(text, line);
    std::vector<VXSyntaxZone> events;
    m_next.emplace(line + 1, parseLine(text, line, start, events));

    VXLineZoneStack stack(start);
    std::vector<StyledRun> runs;
    VXWalkLineZones(stack, events, text.lineStart(line), text.lineContentRange(line).length,
                    [&](uint64_t from, uint64_t to, const VXLineZoneStack& open) {
                        tui::Style style = styler.styleFor(open.context(), base);
                        if (!runs.empty() && runs.back().end == from && runs.back().style == style)
                            runs.back().end = to;
                        else
                            runs.push_back({from, to, style});
                    });
    return runs;
}

VXContext TabHighlighter::contextAt(const TextBuffer& text, uint64_t offset) {
    uint64_t line = text.lineForOffset(offset);
    VXContext start = contextForLine(text, line);
    std::vector<VXSyntaxZone> events;
    parseLine(text, line, start, events);
    Range content = text.lineContentRange(line);
    uint64_t column = std::min(offset, content.end()) - content.location;
    VXLineZoneStack stack(start);
    // At the line's end, the zones open over its last character (a zone that the line break
    // closes is still open there); an empty line has only those it started with.
    VXContext found = stack.context();
    bool done = false;
    VXWalkLineZones(stack, events, content.location, content.length,
                    [&](uint64_t from, uint64_t to, const VXLineZoneStack& open) {
                        if (done) return;
                        if ((from <= column && column < to) || to == content.length) found = open.context();
                        done = from <= column && column < to;
                    });
    return found;
}

}  // namespace vx::editor
