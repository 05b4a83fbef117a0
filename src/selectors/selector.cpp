#include "selectors/selector.hpp"

#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "selectors/selectorbytecode_parser.hpp"
#include "selectors/selectorbytecode_tokenizer.hpp"

namespace vx {

sbc_code VXCompileNewSelector(std::string_view text, std::vector<VXScope>& usedScopes) {
    SBCParserPtr parser = SBC_ParseAlloc();
    for (const SBCToken& token : SBCTokenize(text)) {
        VXScope scope;
        if (token.code == SBC_SCOPE) {
            scope = VXScope(token.text);
            usedScopes.push_back(scope);
        }
        SBC_Parse(parser.get(), token.code, scope, nullptr);
    }
    SBCParseResult result;
    SBC_Parse(parser.get(), SBC_END, VXScope(), &result);
    return std::move(result.code);
}

ContextScopes::ContextScopes(const VXContext& context) {
    VXScope* out = m_inline.data();
    if (context.size() > m_inline.size()) {
        m_heap.resize(context.size());
        out = m_heap.data();
    }
    for (size_t i = 0; i < context.size(); ++i) out[i] = context[i].scope;
    m_scopes = {out, context.size()};
}

BigUnsigned VXSelectorCodeWrapper::operateOnContext(const VXContext& context) const {
    return operateOnScopeStack(ContextScopes(context).scopes());
}

BigUnsigned VXSelectorCodeWrapper::operateOnScopeStack(std::span<const VXScope> stack) const {
    if (stack.empty()) return 0;
    BigUnsigned score;
    if (!sbci_execute(m_code, stack, &score)) return 0;
    // A run that matched without testing any scope still matched.
    return score > 0 ? score : BigUnsigned(1);
}

// The process-wide cache from text to selector. Entries are never removed, so the pointers handed
// out stay valid. All access is serialised by one lock, which is what callers on any thread,
// highlighting threads included, wait on; compiling under it keeps each text compiled once.
class SelectorCache {
public:
    static SelectorCache& shared() {
        static SelectorCache cache;
        return cache;
    }

    const VXSelector* compile(std::string_view text) {
        std::lock_guard lock(m_queue);
        auto found = m_selectors.find(text);
        if (found != m_selectors.end()) return found->second.get();

        auto selector = std::make_unique<VXSelector>(VXSelector::ConstructionKey());
        selector->m_originalString.assign(text);
        if (text.empty()) {
            selector->m_isNullSelector = true;
        } else {
            selector->m_codeWrapper = std::make_unique<const VXSelectorCodeWrapper>(
                VXCompileNewSelector(text, selector->m_usedScopes));
        }
        const VXSelector* result = selector.get();
        m_selectors.emplace(std::string(text), std::move(selector));
        return result;
    }

private:
    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
    };

    std::mutex m_queue;
    std::unordered_map<std::string, std::unique_ptr<VXSelector>, TextHash, std::equal_to<>> m_selectors;
};

const VXSelector* VXSelector::compileString(std::string_view text) { return SelectorCache::shared().compile(text); }

BigUnsigned VXSelector::operateOnScopeStack(std::span<const VXScope> stack) const {
    if (m_isNullSelector) return 1;
    if (!m_codeWrapper) return 0;
    BigUnsigned score = m_codeWrapper->operateOnScopeStack(stack);
    if (score != 0) score += 1;
    return score;
}

BigUnsigned VXSelector::operateOnContext(const VXContext& context) const {
    if (m_isNullSelector) return 1;
    return operateOnScopeStack(ContextScopes(context).scopes());
}

bool VXSelector::doesMatchOnContext(const VXContext& context) const {
    return m_isNullSelector || operateOnContext(context) != 0;
}

BigUnsigned VXSelector::operateOnScope(VXScope scope) const { return operateOnScopeStack(std::span(&scope, 1)); }

bool VXSelector::doesMatchOnScope(VXScope scope) const { return m_isNullSelector || operateOnScope(scope) != 0; }

bool VXSelector::matchesBasicContext(std::string_view scopes) const {
    std::vector<VXScope> pieces;
    for (size_t start = 0;;) {
        size_t space = std::min(scopes.find(' ', start), scopes.size());
        pieces.emplace_back(scopes.substr(start, space - start));
        if (space == scopes.size()) break;
        start = space + 1;
    }
    return doesMatchOnContext(VXContext::fromScopes(pieces));
}

bool VXScope::matchSelector(const VXSelector& selector) const { return selector.doesMatchOnScope(*this); }

}  // namespace vx
