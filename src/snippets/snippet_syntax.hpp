// The syntax tree the grammar's actions build, before constructs get their kinds and places.
//
// The generated parser keeps its values in a C union, so every value it holds is a plain pointer
// into the arena of one parse; the arena owns the nodes and frees them when the parse is done.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "snippets/snippet_token.hpp"

namespace vx::syntax {

struct Construct;

// Text and constructs in the order they appear; adjacent text is kept in one piece.
struct Sequence {
    struct Piece {
        std::u16string text;
        const Construct* construct = nullptr;  // set for a construct, text empty then
    };
    std::vector<Piece> pieces;

    void appendText(std::u16string_view text);
    void appendConstruct(const Construct* construct);
};

struct Constant {
    enum class Kind { String, Shell, Variable };
    Kind kind = Kind::String;
    std::u16string text;               // the script or the variable name
    const Sequence* string = nullptr;  // the contents of a quoted string
};

struct Filter {
    bool isRegex = false;
    std::u16string pattern, replace, options;  // a regex filter
    const Constant* constant = nullptr;        // an or-else filter
};

struct Construct {
    bool numbered = false;
    int64_t number = 0;                 // a numbered construct
    const Constant* constant = nullptr; // a constant construct
    std::vector<const Filter*> filters;
};

class Arena {
public:
    template <class T>
    T* make() {
        return &storage<T>().emplace_back();
    }

private:
    template <class T>
    std::deque<T>& storage();

    std::deque<Sequence> m_sequences;
    std::deque<Constant> m_constants;
    std::deque<Filter> m_filters;
    std::deque<Construct> m_constructs;
    std::deque<std::u16string> m_texts;
    std::deque<std::vector<const Filter*>> m_filterLists;
};

template <> inline std::deque<Sequence>& Arena::storage<Sequence>() { return m_sequences; }
template <> inline std::deque<Constant>& Arena::storage<Constant>() { return m_constants; }
template <> inline std::deque<Filter>& Arena::storage<Filter>() { return m_filters; }
template <> inline std::deque<Construct>& Arena::storage<Construct>() { return m_constructs; }
template <> inline std::deque<std::u16string>& Arena::storage<std::u16string>() { return m_texts; }
template <> inline std::deque<std::vector<const Filter*>>& Arena::storage<std::vector<const Filter*>>() { return m_filterLists; }

// What the grammar's actions work on: the source, the arena, the accepted tree, the failure flag.
struct ParseState {
    std::u16string_view source;
    Arena arena;
    const Sequence* result = nullptr;
    bool failed = false;

    std::u16string_view text(const SnippetToken& token) const { return token.textIn(source); }
    void appendToken(std::u16string* text, const SnippetToken& token, TextContext context) const {
        text->append(tokenTextInContext(token, source, context));
    }
};

// The number of a numbered construct: the absolute value of the digits, saturating rather than
// wrapping when a run of digits is too long for 64 bits.
int64_t constructNumber(std::u16string_view digits);

}  // namespace vx::syntax
