#include "syntax/highlighter.hpp"

#include <algorithm>

#include "platform/log.hpp"

namespace vx {
namespace {

Range documentRange(const VXSyntaxLine& line, uint64_t position, uint64_t length) {
    return {line.documentOffset + position, length};
}

uint32_t innermostIndex(VXSyntaxZoneStack& stack) {
    return stack.empty() ? VXSyntaxZone::kNoParent : static_cast<uint32_t>(stack.size() - 1);
}

const VXSyntaxPatternRegexDefinition* backrefEndPattern(const VXSyntaxZoneDefinition& definition) {
    const VXSyntaxPatternDefinition* end = definition.endPattern.get();
    if (!end || end->patternType() != VXSyntaxPatternDefinition::Regex) return nullptr;
    const auto* regex = static_cast<const VXSyntaxPatternRegexDefinition*>(end);
    return regex->hasBackrefs ? regex : nullptr;
}

// The leftmost position at or after `from`, up to the content end, where the innermost zone's
// end matches; kNotFound when there is none on the rest of the line.
uint64_t findEnd(VXSyntaxZoneStack& stack, const VXSyntaxLine& line, uint64_t from, VXSyntaxParseState& state) {
    VXSyntaxOpenZone& open = stack.top();
    const VXSyntaxZoneDefinition& definition = *open.zone.definition;
    uint64_t found = kNotFound;
    if (!backrefEndPattern(definition)) {
        if (definition.endPattern->searchable()) {
            found = state.searches.nextMatch(*definition.endPattern, line, from, state.region());
        } else {
            for (uint64_t p = from; p <= line.contentLength && found == kNotFound; p = VXSyntaxNextCharacter(line.text, p))
                if (VXSyntaxParseAttemptEnd(stack, line, p, state.region())) found = p;
        }
    } else if (open.endSearchedFrom <= from && (open.endFoundAt == kNotFound || open.endFoundAt >= from)) {
        found = open.endFoundAt;
    } else {
        const auto& instance = open.zone.endPattern;
        if (instance && instance->search) {
            found = instance->search->search(line.text, from, line.text.size(), state.region()).value_or(kNotFound);
        } else if (instance && instance->anchored) {
            for (uint64_t p = from; p <= line.contentLength && found == kNotFound; p = VXSyntaxNextCharacter(line.text, p))
                if (VXSyntaxParseAttemptEnd(stack, line, p, state.region())) found = p;
        }
        open.endSearchedFrom = from;
        open.endFoundAt = found;
    }
    return found <= line.contentLength ? found : kNotFound;
}

struct NextEvent {
    enum Kind { None, End, Candidate } kind = None;
    uint64_t position = 0;
    size_t index = 0;
};

// What happens next from `position`: the innermost zone's end, or a candidate (the end wins
// at the same position), or nothing on the rest of the line.
NextEvent findNextEvent(VXSyntaxZoneStack& stack, const VXCandidateSet& set, const VXSyntaxLine& line,
                        uint64_t position, VXSyntaxParseState& state) {
    const bool hasEnd = !stack.empty() && stack.top().zone.definition && stack.top().zone.definition->isStartEnd();
    const uint64_t end = hasEnd ? findEnd(stack, line, position, state) : kNotFound;
    if (end == position) return {NextEvent::End, end, 0};
    const auto candidate = set.search(line, position, state.searches, state.region());
    if (candidate && candidate->position < end) return {NextEvent::Candidate, candidate->position, candidate->index};
    if (end != kNotFound) return {NextEvent::End, end, 0};
    return {};
}

}  // namespace

// --- state ------------------------------------------------------------------------------

VXSyntaxParseState::VXSyntaxParseState() : m_region(makeRegion()) {}

// --- the building blocks ----------------------------------------------------------------

std::optional<uint64_t> VXSyntaxParseHasMatch(const VXSyntaxZoneDefinition& definition, const VXSyntaxZone* zone,
                                              VXSXMatchPatternType patternType, const VXSyntaxLine& line,
                                              uint64_t position, VXRegexRegion* region) {
    const VXSyntaxPatternDefinition* pattern = definition.pattern(patternType);
    if (!pattern) return std::nullopt;
    const VXRegex* instance = nullptr;
    if (patternType == VXSXMatchPatternTypeEnd && backrefEndPattern(definition)) {
        if (!zone || !zone->endPattern || !zone->endPattern->anchored) return std::nullopt;
        instance = zone->endPattern->anchored.get();
    }
    return pattern->matchAt(line, position, region, instance);
}

std::optional<uint64_t> VXSyntaxParseAttemptEnd(VXSyntaxZoneStack& stack, const VXSyntaxLine& line, uint64_t position,
                                                VXRegexRegion* region) {
    if (stack.empty()) return std::nullopt;
    const VXSyntaxZone& zone = stack.top().zone;
    if (!zone.definition || !zone.definition->isStartEnd()) return std::nullopt;
    return VXSyntaxParseHasMatch(*zone.definition, &zone, VXSXMatchPatternTypeEnd, line, position, region);
}

std::optional<VXSyntaxMatch> VXSyntaxParseZonesForLine(std::span<const VXSyntaxZoneDefinition* const> definitions,
                                                       const VXSyntaxRuleset* base, const VXSyntaxLine& line,
                                                       uint64_t position,
                                                       std::vector<const VXSyntaxZoneDefinition*>& visited,
                                                       VXRegexRegion* region) {
    for (const VXSyntaxZoneDefinition* definition : definitions) {
        if (std::find(visited.begin(), visited.end(), definition) != visited.end()) continue;
        if (definition->isGroup()) {
            visited.push_back(definition);
            const auto subzones = definition->subzonesForBase(base);
            if (auto match = VXSyntaxParseZonesForLine(subzones, base, line, position, visited, region)) return match;
            continue;
        }
        const auto type = definition->isStartEnd() ? VXSXMatchPatternTypeStart : VXSXMatchPatternTypeMain;
        if (auto length = VXSyntaxParseHasMatch(*definition, nullptr, type, line, position, region))
            return VXSyntaxMatch{definition, *length};
    }
    return std::nullopt;
}

const VXSyntaxZoneDefinition& VXSyntaxCandidateOwner(VXSyntaxZoneStack& stack, const VXSyntaxRuleset& ruleset) {
    if (!stack.empty() && stack.top().zone.definition) return *stack.top().zone.definition;
    return *ruleset.rootDefinition();
}

void VXSyntaxLoadStack(const VXContext& context, VXSyntaxZoneStack& stack) {
    for (const VXSyntaxZone& zone : context) VXSA_Add(stack, VXSyntaxOpenZone{zone});
}

VXContext VXSyntaxContextFromStack(VXSyntaxZoneStack& stack) {
    VXContext context;
    stack.forEachFromBottom([&](VXSyntaxOpenZone& open) { context.push(open.zone); });
    return context;
}

uint64_t VXSyntaxPositionAfterMatch(const VXSyntaxLine& line, uint64_t position, uint64_t length, int& emptyMatches) {
    if (length > 0) {
        emptyMatches = 0;
        return position + length;
    }
    // An empty match may be found again at the same position twice more; the third in a row
    // moves on, so that a pattern that matches nothing cannot hold the loop in place.
    if (++emptyMatches < 3) return position;
    emptyMatches = 0;
    return VXSyntaxNextCharacter(line.text, position);
}

// --- events -----------------------------------------------------------------------------

void VXSyntaxDealWithCaptures(const VXSyntaxPatternDefinition& pattern, const VXRegexRegion* region,
                              const VXSyntaxLine& line, uint32_t parent, std::vector<VXSyntaxZone>& events) {
    if (pattern.patternType() != VXSyntaxPatternDefinition::Regex || !region) return;
    const auto& regexPattern = static_cast<const VXSyntaxPatternRegexDefinition&>(pattern);
    if (regexPattern.captures.empty()) return;

    struct Found {
        VXScope scope;
        uint64_t location, length;
        size_t order;
        uint64_t end() const { return location + length; }
    };
    // Few captures per match: insertion sorts on small arrays kept on the stack.
    Found found[32];
    size_t count = 0;
    for (const auto& capture : regexPattern.captures) {
        if (count == std::size(found)) break;
        if (capture.scope.isNil()) continue;  // a capture without a scope adds nothing
        int group = -1;
        if (capture.captureIndex) group = *capture.captureIndex;
        else if (regexPattern.regexObject)
            group = regexPattern.regexObject->groupNumberForName(capture.captureName, const_cast<VXRegexRegion*>(region));
        const auto range = regionGroup(region, group);
        if (!range) continue;
        found[count] = {capture.scope, range->first, range->second, count};
        ++count;
    }
    if (count == 0) return;

    auto insertionSort = [&](Found* items, auto before) {
        for (size_t i = 1; i < count; ++i) {
            Found item = items[i];
            size_t j = i;
            while (j > 0 && before(item, items[j - 1])) {
                items[j] = items[j - 1];
                --j;
            }
            items[j] = item;
        }
    };
    Found starts[32], ends[32];
    std::copy(found, found + count, starts);
    std::copy(found, found + count, ends);
    // Starts: earlier first; at one place the longer (outer) first; then file order.
    insertionSort(starts, [](const Found& a, const Found& b) {
        return a.location != b.location ? a.location < b.location : a.length > b.length;
    });
    // Ends: earlier first; at one place the one that started later (inner) first, and of two
    // with the same range the later in file order (which was opened inside).
    insertionSort(ends, [](const Found& a, const Found& b) {
        if (a.end() != b.end()) return a.end() < b.end();
        if (a.location != b.location) return a.location > b.location;
        return a.order > b.order;
    });

    bool started[32] = {};
    size_t s = 0, e = 0;
    while (e < count) {
        // An end goes first at a shared position, but never before its own start.
        const bool takeEnd = started[ends[e].order] && (s == count || ends[e].end() <= starts[s].location);
        if (takeEnd) {
            const Found& c = ends[e++];
            events.push_back(VXSyntaxZoneCreate(c.scope, nullptr, VXSXZoneEffectiveTypeEnd, VXSXZoneSemanticTypeCapture,
                                                documentRange(line, c.end(), 0), documentRange(line, c.location, c.length)));
        } else {
            const Found& c = starts[s++];
            started[c.order] = true;
            events.push_back(VXSyntaxZoneCreate(c.scope, nullptr, VXSXZoneEffectiveTypeStart, VXSXZoneSemanticTypeCapture,
                                                documentRange(line, c.location, 0), documentRange(line, c.location, c.length)));
        }
        events.back().parent = parent;
    }
}

void VXSyntaxEmitMatch(const VXSyntaxZoneDefinition& definition, uint64_t position, uint64_t length,
                       const VXRegexRegion* region, const VXSyntaxLine& line, VXSyntaxZoneStack& stack,
                       std::vector<VXSyntaxZone>& events) {
    const Range match = documentRange(line, position, length);
    const uint32_t parent = innermostIndex(stack);
    auto emit = [&](const VXScope& scope, VXSXZoneEffectiveType effective, VXSXZoneSemanticType semantic, Range range,
                    uint32_t zoneParent) {
        events.push_back(VXSyntaxZoneCreate(scope, &definition, effective, semantic, range, match));
        events.back().parent = zoneParent;
    };
    const Range atStart{match.location, 0}, atEnd{match.end(), 0};

    if (definition.isStartEnd()) {
        emit(definition.scope, VXSXZoneEffectiveTypeStart, VXSXZoneSemanticTypeStartEnd, atStart, parent);
        VXSyntaxOpenZone open{events.back()};
        if (const auto* end = backrefEndPattern(definition)) open.zone.endPattern = end->instanceForStartMatch(line.text, region);
        VXSA_Add(stack, std::move(open));
        const uint32_t self = innermostIndex(stack);
        VXSyntaxDealWithCaptures(*definition.startPattern, region, line, self, events);
        if (!definition.innerScope.isNil())
            emit(definition.innerScope, VXSXZoneEffectiveTypeStart, VXSXZoneSemanticTypeInner, atEnd, self);
        return;
    }

    const size_t before = events.size();
    const bool inner = !definition.innerScope.isNil();
    emit(definition.scope, VXSXZoneEffectiveTypeStart, VXSXZoneSemanticTypeMatch, atStart, parent);
    if (inner) emit(definition.innerScope, VXSXZoneEffectiveTypeStart, VXSXZoneSemanticTypeInner, atStart, parent);
    const size_t capturesAt = events.size();
    VXSyntaxDealWithCaptures(*definition.mainPattern, region, line, parent, events);
    if (!inner && events.size() == capturesAt) {
        // Nothing inside: one whole event says it all.
        events.resize(before);
        emit(definition.scope, VXSXZoneEffectiveTypeWhole, VXSXZoneSemanticTypeMatch, match, parent);
        return;
    }
    if (inner) emit(definition.innerScope, VXSXZoneEffectiveTypeEnd, VXSXZoneSemanticTypeInner, atEnd, parent);
    emit(definition.scope, VXSXZoneEffectiveTypeEnd, VXSXZoneSemanticTypeMatch, atEnd, parent);
}

void VXSyntaxEmitEnd(VXSyntaxZoneStack& stack, uint64_t position, uint64_t length, const VXRegexRegion* region,
                     const VXSyntaxLine& line, std::vector<VXSyntaxZone>& events) {
    VXSyntaxOpenZone open = VXSA_Pop(stack);
    const VXSyntaxZoneDefinition& definition = *open.zone.definition;
    const Range match = documentRange(line, position, length);
    const uint32_t self = static_cast<uint32_t>(stack.size());
    auto emit = [&](const VXScope& scope, VXSXZoneEffectiveType effective, VXSXZoneSemanticType semantic, Range range) {
        events.push_back(VXSyntaxZoneCreate(scope, &definition, effective, semantic, range, match));
        events.back().parent = self;
    };
    if (!definition.innerScope.isNil())
        emit(definition.innerScope, VXSXZoneEffectiveTypeEnd, VXSXZoneSemanticTypeInner, {match.location, 0});
    VXSyntaxDealWithCaptures(*definition.endPattern, region, line, self, events);
    emit(definition.scope, VXSXZoneEffectiveTypeEnd, VXSXZoneSemanticTypeStartEnd, {match.end(), 0});
    events.back().parent = innermostIndex(stack);
}

// --- the line loop ------------------------------------------------------------------------

VXContext VXSyntaxParseWithLineFeedBreak(const VXSyntaxLine& line, std::vector<VXSyntaxZone>& events,
                                         const std::function<VXContext(const VXSyntaxLine&)>& parse) {
    if (VXSyntaxBreakIsLineFeed(line)) return parse(line);
    const uint64_t breakLength = line.text.size() - line.contentLength;
    std::u16string text(line.text.substr(0, line.contentLength));
    text += u'\n';
    const size_t first = events.size();
    VXContext context = parse(VXSyntaxLine{text, line.contentLength, line.documentOffset});
    // Past the content end, a position in the "\n" seen is one in the real break: its end
    // lies breakLength - 1 units further.
    const uint64_t contentEnd = line.documentOffset + line.contentLength;
    auto move = [&](Range& range) {
        uint64_t end = range.end();
        if (range.location > contentEnd) range.location += breakLength - 1;
        if (end > contentEnd) end += breakLength - 1;
        range.length = end - range.location;
    };
    for (size_t n = first; n < events.size(); ++n) {
        move(events[n].range);
        move(events[n].semanticRange);
    }
    return context;
}

VXContext VXSyntaxParseLine(const VXContext& incoming, const VXSyntaxLine& givenLine, std::vector<VXSyntaxZone>& events,
                            const VXSyntaxRuleset& ruleset, VXSyntaxParseState* state) {
    if (!VXSyntaxBreakIsLineFeed(givenLine))
        return VXSyntaxParseWithLineFeedBreak(givenLine, events, [&](const VXSyntaxLine& line) {
            return VXSyntaxParseLine(incoming, line, events, ruleset, state);
        });
    const VXSyntaxLine& line = givenLine;
    VXSyntaxParseState localState;
    if (!state) state = &localState;
    state->searches.beginLine();
    VXRegexRegion* region = state->region();

    VXSyntaxZoneStack stack;
    VXSyntaxLoadStack(incoming, stack);
    // A long line (minified code) has about one event per two characters: room for them at
    // once spares copying a large array each time it fills.
    if (line.text.size() > 4096) events.reserve(events.size() + line.text.size() / 2);

    const uint64_t contentEnd = line.contentLength;
    uint64_t position = 0;
    int emptyMatches = 0;
    auto moveTo = [&](uint64_t next) {
        if (next != position) emptyMatches = 0;
        position = next;
    };

    // Where a search and the anchored test disagree (only an expression whose meaning depends
    // on where matching starts can cause it), the position is decided the long way.
    auto decideLiterally = [&] {
        ++state->disagreements;
        if (auto length = VXSyntaxParseAttemptEnd(stack, line, position, region)) {
            VXSyntaxEmitEnd(stack, position, *length, region, line, events);
            moveTo(position + *length);
            return;
        }
        std::vector<const VXSyntaxZoneDefinition*> visited;
        const auto subzones = VXSyntaxCandidateOwner(stack, ruleset).subzonesForBase(&ruleset);
        const auto match = VXSyntaxParseZonesForLine(subzones, &ruleset, line, position, visited, region);
        if (!match) {
            moveTo(VXSyntaxNextCharacter(line.text, position));
            return;
        }
        VXSyntaxEmitMatch(*match->definition, position, match->length, region, line, stack, events);
        position = VXSyntaxPositionAfterMatch(line, position, match->length, emptyMatches);
    };

    while (position <= contentEnd) {
        const VXCandidateSet& set = VXSyntaxCandidateOwner(stack, ruleset).candidatesForBase(&ruleset);
        const NextEvent next = findNextEvent(stack, set, line, position, *state);
        if (next.kind == NextEvent::None) break;
        moveTo(next.position);

        if (next.kind == NextEvent::End) {
            auto length = VXSyntaxParseAttemptEnd(stack, line, position, region);
            if (!length) {
                decideLiterally();
                continue;
            }
            VXSyntaxEmitEnd(stack, position, *length, region, line, events);
            moveTo(position + *length);
            continue;
        }

        const VXSyntaxCandidate& candidate = set.candidates()[next.index];
        auto length = VXSyntaxParseHasMatch(*candidate.definition, nullptr, candidate.patternType, line, position, region);
        if (!length) {
            decideLiterally();
            continue;
        }
        VXSyntaxEmitMatch(*candidate.definition, position, *length, region, line, stack, events);
        position = VXSyntaxPositionAfterMatch(line, position, *length, emptyMatches);
    }
    return VXSyntaxContextFromStack(stack);
}

}  // namespace vx
