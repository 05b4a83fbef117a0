#include "selfml/sfnode.hpp"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

SFNode* allocateNode(uint32_t type, char* value) {
    auto* node = static_cast<SFNode*>(std::calloc(1, sizeof(SFNode)));
    if (!node) {
        std::free(value);
        return nullptr;
    }
    node->type = type;
    node->value = value;
    return node;
}

}  // namespace

// The C library's isspace in the "C" locale: bytes above 127 are never blanks, so that any
// UTF-8 text reads the same whatever the process locale is.
bool SFIsSpace(unsigned char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\v' || byte == '\f' || byte == '\r';
}

char* SFStringDuplicate(const char* bytes, uint64_t length) {
    auto* copy = static_cast<char*>(std::malloc(length + 1));
    if (!copy) return nullptr;
    if (length) std::memcpy(copy, bytes, length);
    copy[length] = '\0';
    return copy;
}

SFNode* SFNodeCreate() { return allocateNode(SFNodeTypeList, nullptr); }

uint32_t SFNodeGetType(const SFNode* node) { return node ? node->type : 0; }

const char* SFNodeStringValue(const SFNode* node) {
    return node && node->type == SFNodeTypeString ? node->value : nullptr;
}

const char* SFNodeHead(const SFNode* node) { return node && node->type == SFNodeTypeList ? node->value : nullptr; }

void SFNodeSetHead(SFNode* node, char* head) {
    if (!node || node->type != SFNodeTypeList) {
        std::free(head);
        return;
    }
    std::free(node->value);
    node->value = head;
}

SFNode* SFNodeNextInList(const SFNode* node) { return node ? node->next : nullptr; }

SFNode* SFNodeFirstChild(const SFNode* node) { return node ? node->firstChild : nullptr; }

static void appendChild(SFNode* list, SFNode* child) {
    child->next = nullptr;
    if (!list->firstChild) {
        list->firstChild = child;
        return;
    }
    SFNode* last = list->firstChild;
    while (last->next) last = last->next;
    last->next = child;
}

void SFNodeAddString(SFNode* list, char* text) {
    if (!list || list->type != SFNodeTypeList) {
        std::free(text);
        return;
    }
    if (SFNode* node = allocateNode(SFNodeTypeString, text)) appendChild(list, node);
}

void SFNodeAddChild(SFNode* list, SFNode* child) {
    if (!list || !child || list->type != SFNodeTypeList || child == list) return;
    for (SFNode* existing = list->firstChild; existing; existing = existing->next)
        if (existing == child) return;
    if (child->type == SFNodeTypeList) child->parent = list;
    appendChild(list, child);
}

void SFNodeReplaceChildAtIndexWithLast(SFNode* list, uint64_t index) {
    if (!list || list->type != SFNodeTypeList) return;
    uint64_t count = 0;
    for (SFNode* child = list->firstChild; child; child = child->next) ++count;
    if (count < 2 || index >= count - 1) return;

    // Unlink the last child.
    SFNode* beforeLast = list->firstChild;
    while (beforeLast->next->next) beforeLast = beforeLast->next;
    SFNode* last = beforeLast->next;
    beforeLast->next = nullptr;

    // Put it where the child at index was.
    SFNode** link = &list->firstChild;
    for (uint64_t i = 0; i < index; ++i) link = &(*link)->next;
    SFNode* old = *link;
    last->next = old->next;
    *link = last;
    old->next = nullptr;
    SFNodeFree(old);
}

void SFNodeFreeNonRecursive(SFNode* node) {
    if (!node) return;
    std::free(node->value);
    std::free(node);
}

// Iterative, so that a deeply nested tree cannot exhaust the stack.
void SFNodeFree(SFNode* node) {
    std::vector<SFNode*> pending;
    if (node) pending.push_back(node);
    while (!pending.empty()) {
        SFNode* current = pending.back();
        pending.pop_back();
        if (current->next) pending.push_back(current->next);
        if (current->firstChild) pending.push_back(current->firstChild);
        SFNodeFreeNonRecursive(current);
    }
}

// Iterative like SFNodeFree: each pending entry is a source chain and the link its copy goes to.
SFNode* SFNodeCopy(const SFNode* node) {
    struct Pending {
        const SFNode* source;
        SFNode** link;
        SFNode* parent;
    };
    SFNode* head = nullptr;
    std::vector<Pending> pending;
    if (node) pending.push_back(Pending{node, &head, nullptr});
    while (!pending.empty()) {
        Pending item = pending.back();
        pending.pop_back();
        SFNode** link = item.link;
        for (const SFNode* source = item.source; source; source = source->next) {
            char* value = nullptr;
            if (source->value && !(value = SFStringDuplicate(source->value, std::strlen(source->value)))) break;
            SFNode* copy = allocateNode(source->type, value);
            if (!copy) break;
            if (copy->type == SFNodeTypeList && item.parent) copy->parent = item.parent;
            *link = copy;
            link = &copy->next;
            if (source->firstChild) pending.push_back(Pending{source->firstChild, &copy->firstChild, copy});
        }
    }
    return head;
}
