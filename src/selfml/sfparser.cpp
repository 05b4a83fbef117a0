// The self-ml parser: one forward pass over the bytes. It never fails; whatever is
// unbalanced ends at the end of the text, stray closers are skipped, lists without a head
// are read and dropped. Lists nest on an explicit stack rather than on the call stack,
// so that no input can exhaust it.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "selfml/sfnode.hpp"

namespace {

// Bytes that end a verbatim string: the blanks and ( ) [ ] { }.
struct VerbatimStops {
    bool stop[256] = {};
    constexpr VerbatimStops() {
        for (unsigned char c : {' ', '\t', '\n', '\v', '\f', '\r', '(', ')', '[', ']', '{', '}'}) stop[c] = true;
    }
};
constexpr VerbatimStops kVerbatimStops;

class Parser {
public:
    Parser(const unsigned char* text, const unsigned char* end) : m_p(text), m_end(end) {}

    SFNode* parse();

private:
    struct Frame {
        SFNode* list;
        SFNode* tail;  // last child, for appending in constant time
        bool dropped;  // a list whose head was missing or empty: read, then thrown away
    };

    void skipLineComment() {
        while (m_p < m_end && *m_p != '\n' && *m_p != '\r') ++m_p;
    }

    // At a '{': skips to the '}' that balances it, or to the end of the text.
    void skipBraceComment() {
        int depth = 0;
        while (m_p < m_end) {
            unsigned char c = *m_p++;
            if (c == '{') {
                ++depth;
            } else if (c == '}') {
                if (--depth == 0) return;
            }
        }
    }

    // At a '[': the text up to the balancing ']' (inner brackets kept), or to the end.
    char* readBracketString() {
        const unsigned char* start = ++m_p;
        int depth = 1;
        while (m_p < m_end) {
            unsigned char c = *m_p;
            if (c == '[') {
                ++depth;
            } else if (c == ']' && --depth == 0) {
                char* value = SFStringDuplicate(reinterpret_cast<const char*>(start), static_cast<uint64_t>(m_p - start));
                ++m_p;
                return value;
            }
            ++m_p;
        }
        return SFStringDuplicate(reinterpret_cast<const char*>(start), static_cast<uint64_t>(m_end - start));
    }

    // At a backtick: up to a backtick not followed by another; a doubled backtick is one.
    char* readBacktickString() {
        const unsigned char* start = ++m_p;
        uint64_t length = 0;
        const unsigned char* scan = start;
        while (scan < m_end) {
            if (*scan == '`') {
                if (scan + 1 < m_end && scan[1] == '`') {
                    scan += 2;
                    ++length;
                    continue;
                }
                break;
            }
            ++scan;
            ++length;
        }
        auto* value = static_cast<char*>(std::malloc(length + 1));
        if (!value) return nullptr;
        char* out = value;
        for (const unsigned char* p = start; p < scan; ++p) {
            *out++ = static_cast<char>(*p);
            if (*p == '`') ++p;  // the second of a doubled pair
        }
        *out = '\0';
        m_p = scan < m_end ? scan + 1 : m_end;
        return value;
    }

    char* readVerbatimString() {
        const unsigned char* start = m_p;
        while (m_p < m_end && !kVerbatimStops.stop[*m_p]) ++m_p;
        return SFStringDuplicate(reinterpret_cast<const char*>(start), static_cast<uint64_t>(m_p - start));
    }

    char* readString() {
        if (*m_p == '[') return readBracketString();
        if (*m_p == '`') return readBacktickString();
        return readVerbatimString();
    }

    // Skips what the text may hold between items: a blank, a stray ']' or '}', a line comment or
    // a brace comment. False when something else stands at the position.
    bool skipIgnorable() {
        const unsigned char c = *m_p;
        if (SFIsSpace(c) || c == ']' || c == '}') {
            ++m_p;
        } else if (c == '#') {
            skipLineComment();
        } else if (c == '{') {
            skipBraceComment();
        } else {
            return false;
        }
        return true;
    }

    // After a '(': what is ignorable is skipped, then one string is read.
    char* readHead() {
        while (m_p < m_end) {
            if (!skipIgnorable()) return readString();  // at '(' or ')' this reads an empty verbatim string
        }
        return nullptr;
    }

    void append(Frame& frame, SFNode* node) {
        if (frame.tail)
            frame.tail->next = node;
        else
            frame.list->firstChild = node;
        frame.tail = node;
    }

    void addString(char* value) {
        if (!value) return;
        auto* node = static_cast<SFNode*>(std::calloc(1, sizeof(SFNode)));
        if (!node) {
            std::free(value);
            return;
        }
        node->type = SFNodeTypeString;
        node->value = value;
        append(m_stack.back(), node);
    }

    void openList() {
        char* head = readHead();
        const bool dropped = !head || !*head;
        if (dropped) {
            std::free(head);
            head = nullptr;
        }
        SFNode* list = SFNodeCreate();
        if (!list) {
            std::free(head);
            return;
        }
        list->value = head;
        if (!dropped) {
            list->parent = m_stack.back().list;
            append(m_stack.back(), list);
        }
        m_stack.push_back(Frame{list, nullptr, dropped});
    }

    void closeList() {
        Frame frame = m_stack.back();
        m_stack.pop_back();
        if (frame.dropped) SFNodeFree(frame.list);
    }

    const unsigned char* m_p;
    const unsigned char* m_end;
    std::vector<Frame> m_stack;
};

SFNode* Parser::parse() {
    SFNode* root = SFNodeCreate();
    if (!root) return nullptr;
    m_stack.push_back(Frame{root, nullptr, false});
    while (m_p < m_end) {
        if (skipIgnorable()) continue;
        if (*m_p == '(') {
            ++m_p;
            openList();
        } else if (*m_p == ')') {
            ++m_p;
            if (m_stack.size() == 1) break;  // an unmatched ')' at the top level ends the text
            closeList();
        } else {
            addString(readString());
        }
    }
    while (m_stack.size() > 1) closeList();
    return root;
}

}  // namespace

SFNode* SFNodeCreateFromBytes(const char* text, uint64_t length) {
    if (!text) return nullptr;
    const auto* begin = reinterpret_cast<const unsigned char*>(text);
    const void* nul = std::memchr(text, '\0', length);
    const auto* end = nul ? static_cast<const unsigned char*>(nul) : begin + length;
    return Parser(begin, end).parse();
}

SFNode* SFNodeCreateFromString(const char* text) {
    if (!text) return nullptr;
    return SFNodeCreateFromBytes(text, std::strlen(text));
}
