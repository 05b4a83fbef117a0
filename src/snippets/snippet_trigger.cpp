#include "snippets/snippet_trigger.hpp"

#include "editing/navigation.hpp"

namespace vx {

// Triggers are made of the same word characters as word motions and double-click selection.
Range triggerBeforeCaret(const TextBuffer& text, uint64_t caret) {
    uint64_t start = caret;
    while (start > 0 && isWordCharacter(text.characterAt(start - 1))) --start;
    return {start, caret - start};
}

}  // namespace vx
