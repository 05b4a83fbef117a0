// VXSelector: a compiled scope selector ("source.js string", "comment | string", "text - markup").
//
// Selectors are obtained only through compileString(), which compiles each distinct text once and
// keeps it for the whole process; a selector is immutable, so equal texts share one object and
// identity is equality. Scoring a context:
//     0   the selector does not match;
//     1   the empty selector, which matches everything;
//     ≥2  any other match: 1 + the largest count(scope) × 16^depth among the scope tests that
//         decided it (depth counted from the outermost scope, 1-based).
// With the stack source.js > meta.function > string.quoted.double, "string" scores 4097,
// "string.quoted" 8193, "source.js" 33 and "comment, source" 17.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "selectors/score.hpp"
#include "selectors/selectorbytecode_run.hpp"
#include "syntax/context.hpp"

namespace vx {

// Compiles text to code; every scope literal is appended to usedScopes in order of appearance.
// Text that does not parse gives empty code.
sbc_code VXCompileNewSelector(std::string_view text, std::vector<VXScope>& usedScopes);

// The scopes of a context as the interpreter wants them, outermost first; no allocation for
// contexts up to 32 deep.
class ContextScopes {
public:
    explicit ContextScopes(const VXContext& context);
    std::span<const VXScope> scopes() const { return m_scopes; }

private:
    std::array<VXScope, 32> m_inline;
    std::vector<VXScope> m_heap;
    std::span<const VXScope> m_scopes;
};

class VXSelectorCodeWrapper {
public:
    explicit VXSelectorCodeWrapper(sbc_code code) : m_code(std::move(code)) {}

    const sbc_code& code() const { return m_code; }
    // 0 for a context without scopes or a failed run; a successful run's score, at least 1.
    BigUnsigned operateOnContext(const VXContext& context) const;
    BigUnsigned operateOnScopeStack(std::span<const VXScope> stack) const;

private:
    sbc_code m_code;
};

class VXSelector {
public:
    // Only the cache makes selectors.
    class ConstructionKey {
        friend class SelectorCache;
        ConstructionKey() = default;
    };
    explicit VXSelector(ConstructionKey) {}

    // Never null. Safe from any thread. A null text is taken as "".
    static const VXSelector* compileString(std::string_view text);
    static const VXSelector* compileString(const char* text) { return compileString(std::string_view(text ? text : "")); }

    VXSelector(const VXSelector&) = delete;
    VXSelector& operator=(const VXSelector&) = delete;

    const std::string& originalString() const { return m_originalString; }
    const std::string& description() const { return m_originalString; }
    bool isNullSelector() const { return m_isNullSelector; }
    const VXSelectorCodeWrapper* codeWrapper() const { return m_codeWrapper.get(); }
    // The scope literals of the text in order of appearance.
    const std::vector<VXScope>& usedScopes() const { return m_usedScopes; }

    BigUnsigned operateOnContext(const VXContext& context) const;
    bool doesMatchOnContext(const VXContext& context) const;
    // Against a context holding that one scope.
    BigUnsigned operateOnScope(VXScope scope) const;
    bool doesMatchOnScope(VXScope scope) const;
    // scopes: scope names separated by single spaces, outermost first ("source.js string").
    bool matchesBasicContext(std::string_view scopes) const;
    // The scopes of a context, outermost first (see ContextScopes).
    BigUnsigned operateOnScopeStack(std::span<const VXScope> stack) const;

    // All selectors are equally specific; scores alone rank them.
    BigUnsigned specificity() const { return 1; }

    friend bool operator==(const VXSelector& a, const VXSelector& b) { return &a == &b; }

private:
    friend class SelectorCache;

    std::string m_originalString;
    bool m_isNullSelector = false;
    std::unique_ptr<const VXSelectorCodeWrapper> m_codeWrapper;
    std::vector<VXScope> m_usedScopes;
};

// The best-match rule. Tries the items in order; selectorOf (a member pointer or any callable)
// reads an item's selector, and an item without one (null) scores 1 like the empty selector. An
// item replaces the best so far only on a strictly higher score, so ties go to the earlier item.
// Returns the best item, or null when none scores above 0.
template <class Items, class SelectorOf>
auto bestItemInArray(const Items& items, SelectorOf&& selectorOf, const VXContext& context)
    -> decltype(&*std::begin(items)) {
    const ContextScopes stack(context);
    decltype(&*std::begin(items)) best = nullptr;
    BigUnsigned bestScore = 0;
    for (const auto& item : items) {
        const VXSelector* selector = std::invoke(selectorOf, item);
        BigUnsigned score = selector ? selector->operateOnScopeStack(stack.scopes()) : BigUnsigned(1);
        if (score > bestScore) {
            bestScore = std::move(score);
            best = &item;
        }
    }
    return best;
}

}  // namespace vx
