#include "snippets/snippet_fields.hpp"

#include <optional>

namespace vx {

bool snippetFieldEncloses(const std::vector<SnippetField>& fields, int ancestor, int field) {
    for (int at = field >= 0 ? fields[static_cast<size_t>(field)].parent : -1; at >= 0; at = fields[static_cast<size_t>(at)].parent)
        if (at == ancestor) return true;
    return false;
}

void adjustSnippetFields(std::vector<SnippetField>& fields, Range old, uint64_t newLength, int edited) {
    const uint64_t a = old.location, b = old.end();
    const auto grow = [&](Range& range) { range.length = range.length + newLength - old.length; };
    for (size_t i = 0; i < fields.size(); ++i) {
        SnippetField& field = fields[i];
        if (!field.alive) continue;
        const uint64_t s = field.range.location, e = field.range.end();
        const int index = static_cast<int>(i);
        const bool holdsEdit = s <= a && b <= e;
        if (edited >= 0 && holdsEdit && (index == edited || snippetFieldEncloses(fields, index, edited))) {
            grow(field.range);
            continue;
        }
        // What the edited field's replacement takes out takes the fields written inside it along.
        if (edited >= 0 && old.length > 0 && s >= a && e <= b && snippetFieldEncloses(fields, edited, index)) {
            field.alive = false;
            continue;
        }
        if (s >= b) {
            field.range.location = s + newLength - old.length;
        } else if (e <= a) {
            // before the edit: stays
        } else if (holdsEdit) {
            grow(field.range);
        } else {
            field.alive = false;
        }
    }
}

int snippetFieldHolding(const std::vector<SnippetField>& fields, Range range, std::optional<int64_t> number) {
    // Fields come before those written inside them, so a later holder is inner or a sibling;
    // between siblings that both touch the range, the one that starts there is taken.
    const auto better = [&](int candidate, int best) {
        return best < 0 || snippetFieldEncloses(fields, best, candidate) ||
               (!snippetFieldEncloses(fields, candidate, best) &&
                fields[static_cast<size_t>(candidate)].range.location > fields[static_cast<size_t>(best)].range.location);
    };
    int best = -1, bestOfNumber = -1;
    for (size_t i = 0; i < fields.size(); ++i) {
        const SnippetField& field = fields[i];
        if (!field.alive || field.range.location > range.location || range.end() > field.range.end()) continue;
        const int index = static_cast<int>(i);
        if (better(index, best)) best = index;
        if (number && field.kind == SnippetField::Kind::TabStop && field.number == *number && better(index, bestOfNumber))
            bestOfNumber = index;
    }
    return bestOfNumber >= 0 ? bestOfNumber : best;
}

}  // namespace vx
