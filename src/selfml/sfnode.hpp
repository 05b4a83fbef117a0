// The self-ml node tree and its parser: a small C-style layer that definitions, themes and
// settings are read through (SFONode wraps it for everyone else).
//
// A text parses into a root list with no head whose children are the top-level items:
//
//     (zone (name string) [a b])   →   root ─ zone ─┬─ name ─ "string"
//                                                    └─ "a b"
//
// Every function tolerates a null node and then does nothing or answers 0/null. Values are
// NUL-terminated byte strings owned by their node (UTF-8 by convention; any bytes are kept).
#pragma once

#include <cstdint>

enum : uint32_t { SFNodeTypeList = 0, SFNodeTypeString = 1 };

struct SFNode {
    SFNode* parent;      // the list that holds it (set for lists the parser makes; strings leave it null)
    SFNode* next;        // the following sibling, null at the end
    SFNode* firstChild;  // lists only
    uint32_t type;       // SFNodeTypeList or SFNodeTypeString
    char* value;         // a list's head (null for the root), a string's text
};

// The absence of a node wherever node references are compared.
inline constexpr SFNode* SFNullNode = nullptr;

SFNode* SFNodeCreate();
// Parses a NUL-terminated text; the root list, or null only when allocation fails.
SFNode* SFNodeCreateFromString(const char* text);
// As above for a text of known length (which may hold NUL bytes: the parse stops at the first).
SFNode* SFNodeCreateFromBytes(const char* text, uint64_t length);
// Deep copy of the node, its value, its children and its following siblings.
SFNode* SFNodeCopy(const SFNode* node);

uint32_t SFNodeGetType(const SFNode* node);
const char* SFNodeStringValue(const SFNode* node);
const char* SFNodeHead(const SFNode* node);
// Takes ownership of head (malloc'd); ignored (and head freed) for a string node.
void SFNodeSetHead(SFNode* node, char* head);
SFNode* SFNodeNextInList(const SFNode* node);
SFNode* SFNodeFirstChild(const SFNode* node);

// Appends a new string node holding text (malloc'd, owned from now on) to a list.
void SFNodeAddString(SFNode* list, char* text);
// Appends child at the end of list's children, unless list is not a list, child is list
// itself, or child is already in that child list.
void SFNodeAddChild(SFNode* list, SFNode* child);
// Moves the last child into index's place and frees the child that was there; acts only when
// the list has at least two children and index is not the last one.
void SFNodeReplaceChildAtIndexWithLast(SFNode* list, uint64_t index);

// Frees the node, its value, its children and its following siblings.
void SFNodeFree(SFNode* node);
// Frees one node and its value only.
void SFNodeFreeNonRecursive(SFNode* node);

// Our helpers beside the table: a malloc'd copy of bytes, and the parser's notion of a blank.
char* SFStringDuplicate(const char* bytes, uint64_t length);
bool SFIsSpace(unsigned char byte);
