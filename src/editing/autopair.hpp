// VXAutopair: what one keystroke does with delimiter pairs. Set up per keystroke with the text
// of the caret's line around the selection and the scope contexts there, it decides (action) to
// insert plainly, insert the pair, step over the closer already there, wrap the selection, or,
// for a backward deletion, delete an empty pair whole:
//
//     f|        type (   ->  f(|)          pair
//     f(|)      type )   ->  f()|          step over
//     [x y]     type "   ->  ["x y"]       wrap (with escaping, for quotes)
//     (|)       backspace -> |             delete the pair
//
// The decision follows fixed rules in a fixed order; scope selectors decide where a rule applies
// (strings, comments, Python, HTML). Applying the decision is shouldInsertText / shouldDelete.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/range.hpp"
#include "syntax/context.hpp"

namespace vx {

class VXAutopair {
public:
    enum Action : int {
        PlainInsert = 0,
        InsertPair = 1,
        StepOver = 2,
        PlainReplace = 3,
        Wrap = 4,
        WrapEscaping = 5,
        PlainDelete = 6,
        DeletePair = 7,
    };
    enum UserAction : int { TypingEmpty = 0, TypingOverSelection = 1, DeletingBackward = 2 };

    using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;
    // The pairs a language without its own gets, in this order.
    static Pairs defaultPairs();

    // --- set by the caller before setUp ---
    Pairs pairs;
    std::optional<std::u16string> insertString;  // none for a deletion
    std::u16string selectionString;
    Range selection;
    std::u16string leftString, rightString;       // the caret's line before and after the selection
    VXContext startContext, endContext;
    bool isWrapDisabled = false;
    int user_action = TypingEmpty;

    // --- derived ---
    std::vector<std::u16string> indistinctPairs;  // openers that are their own closers (quotes)
    Pairs distinctPairs;
    std::u16string lmatch, rmatch;
    uint64_t jumpLength = 0;

    void setUp();
    int action();

    // Applying a typing decision: the text replacing the selection, and the selection after it
    // (in the text after the replacement).
    struct Insertion {
        std::u16string text;
        Range replaced;
        Range newSelection;
    };
    Insertion shouldInsertText(int action) const;
    // Applying a deletion decision: the range to delete for DeletePair, else location kNotFound.
    Range shouldDelete(int action) const;

    static int64_t openness(std::u16string_view text, std::u16string_view L, std::u16string_view R);
    // A backslash before every backslash and every `quote`.
    static std::u16string escape(std::u16string_view text, std::u16string_view quote);
    static bool matches(const char* selector, const VXContext& context);

private:
    int typingAction();
    int deletingAction();
    bool isIndistinct(const std::u16string& c) const;

    std::optional<std::u16string> m_left, m_right;
};

}  // namespace vx
