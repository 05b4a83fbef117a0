// The places of an expanded snippet and how they follow edits of the text around them.
//
// Field 0 of every expansion is its whole range (the root); every other field has an enclosing
// field, the root at least. An edit is a replacement of an old range by text of a new length.
// One field may be named as the one being edited: it and its enclosing fields grow with the
// edit even when it touches only their ends, and the fields inside it that the edit replaces
// go. Every other field keeps its place when the edit is before it, shifts when the edit is
// after it, grows when the edit lies strictly inside it, and goes when the edit cuts across it:
//
//     "for (%{1:int} i ...)"  typing "s" over "int" (field 1 edited): field 1 becomes "s",
//     "%{1:"a %{2:b}"}"       overwriting field 1: field 2 inside it goes
//     "%{1}%{2}"              typing in field 2 at the end of field 1: field 1 stays as it is
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/range.hpp"
#include "snippets/constructs.hpp"

namespace vx {

struct SnippetField {
    enum class Kind { Root, TabStop, Mirror, Constant };
    Kind kind = Kind::Root;
    int64_t number = 0;  // tab stops and mirrors
    Range range{0, 0};
    int parent = -1;     // the enclosing field; -1 for the root
    bool alive = true;
    std::shared_ptr<const SNConstruct> construct;  // its filters; none for the root
    bool awaitsShell = false;  // a shell command's output is still to come
};

// Whether `ancestor` encloses `field` (directly or further up).
bool snippetFieldEncloses(const std::vector<SnippetField>& fields, int ancestor, int field);

// Carries the fields through the replacement of `old` by `newLength` units; `edited` is the
// field being edited, or -1.
void adjustSnippetFields(std::vector<SnippetField>& fields, Range old, uint64_t newLength, int edited);

// The innermost living field that holds the range (its ends included), preferring tab stops of
// `number` when one holds it; -1 when none does.
int snippetFieldHolding(const std::vector<SnippetField>& fields, Range range, std::optional<int64_t> number);

}  // namespace vx
