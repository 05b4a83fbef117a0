// Compiles arbitrary selector text and runs it against a few contexts. Compiling goes through
// VXCompileNewSelector rather than the process-wide cache, which would grow without bound here.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "selectors/selector.hpp"

namespace {

using namespace vx;

std::vector<VXContext> sampleContexts() {
    std::vector<VXContext> contexts;
    contexts.emplace_back();
    const char* const stacks[][5] = {
        {"source.js", "meta.function", "string.quoted.double", nullptr},
        {"a", "b", "c", "a.b.c", nullptr},
        {"text.html", "-b", "meta.tag-name", nullptr},
    };
    for (const auto& stack : stacks) {
        std::vector<VXScope> scopes;
        for (const char* const* name = stack; *name; ++name) scopes.emplace_back(*name);
        contexts.push_back(VXContext::fromScopes(scopes));
    }
    std::vector<VXScope> deep;
    for (int i = 0; i < 24; ++i) deep.emplace_back(i % 2 ? "a.b" : "c");
    contexts.push_back(VXContext::fromScopes(deep));
    return contexts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<VXContext> contexts = sampleContexts();
    std::string_view text(reinterpret_cast<const char*>(data), size);

    std::vector<VXScope> used;
    VXSelectorCodeWrapper wrapper(VXCompileNewSelector(text, used));
    for (const VXContext& context : contexts) {
        BigUnsigned score = wrapper.operateOnContext(context);
        // Matching is a pure function of the code and the stack.
        if (score != wrapper.operateOnContext(context)) std::abort();
    }
    // Literals are listed as the tokenizer made them: never more than the text has bytes.
    if (used.size() > size) std::abort();
    return 0;
}
