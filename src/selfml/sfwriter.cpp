#include "selfml/sfwriter.hpp"

#include <vector>

namespace vx {
namespace {

bool canBeBare(std::string_view text) {
    if (text.empty()) return false;
    for (unsigned char c : text) {
        if (SFIsSpace(c)) return false;
        switch (c) {
            case '#': case '(': case ')': case '[': case ']': case '{': case '}': case '`':
                return false;
            default:
                break;
        }
    }
    return true;
}

bool bracketsBalance(std::string_view text) {
    long depth = 0;
    for (char c : text) {
        if (c == '[') {
            ++depth;
        } else if (c == ']') {
            if (--depth < 0) return false;
        }
    }
    return depth == 0;
}

void indent(int level, std::string& out) { out.append(static_cast<size_t>(level) * 4, ' '); }

bool hasListChild(const SFNode* list) {
    for (const SFNode* child = list->firstChild; child; child = child->next)
        if (child->type == SFNodeTypeList) return true;
    return false;
}

// Writes one list and everything in it. Iterative, like the parser, so that a deeply nested
// tree cannot exhaust the stack.
void writeList(const SFNode* list, int level, std::string& out) {
    struct Frame {
        const SFNode* next;  // the next child to write
        int level;
        bool allStrings;
        bool isFirst;
    };
    std::vector<Frame> stack;
    auto open = [&](const SFNode* node, int nodeLevel) {
        out += '(';
        if (node->value) out += node->value;
        stack.push_back(Frame{node->firstChild, nodeLevel, !hasListChild(node), true});
    };
    open(list, level);
    while (!stack.empty()) {
        Frame& frame = stack.back();
        const SFNode* child = frame.next;
        if (!child) {
            out += ')';
            stack.pop_back();
            continue;
        }
        frame.next = child->next;
        const bool isString = child->type == SFNodeTypeString;
        const bool sameLine = frame.allStrings || (frame.isFirst && (isString || !child->firstChild));
        frame.isFirst = false;
        const int childLevel = frame.level + 1;
        if (sameLine) {
            out += ' ';
        } else {
            out += '\n';
            indent(childLevel, out);
        }
        if (isString)
            SFWriteQuotedString(child->value ? child->value : "", out);
        else
            open(child, childLevel);  // invalidates frame
    }
}

}  // namespace

void SFWriteQuotedString(std::string_view text, std::string& out) {
    if (canBeBare(text)) {
        out += text;
    } else if (bracketsBalance(text)) {
        out += '[';
        out += text;
        out += ']';
    } else {
        out += '`';
        for (char c : text) {
            out += c;
            if (c == '`') out += '`';
        }
        out += '`';
    }
}

std::string SFNodeSelfmlRepresentation(const SFNode* node) {
    std::string out;
    if (!node) return out;
    if (node->type == SFNodeTypeString) {
        SFWriteQuotedString(node->value ? node->value : "", out);
        return out;
    }
    if (node->value) {
        writeList(node, 0, out);
        return out;
    }
    bool isFirst = true;
    for (const SFNode* child = node->firstChild; child; child = child->next) {
        if (!isFirst) out += "\n\n";
        if (child->type == SFNodeTypeString)
            SFWriteQuotedString(child->value ? child->value : "", out);
        else
            writeList(child, 0, out);
        isFirst = false;
    }
    return out;
}

}  // namespace vx
