// The tab trigger before a caret: the whole run of word characters that ends there.
//
//     "    for|"   -> "for"        "x.for|" -> "for"        "xfor|" -> "xfor" (not "for")
#pragma once

#include "editing/text_buffer.hpp"

namespace vx {

// The range of the run; empty when the character before the caret is not a word character.
Range triggerBeforeCaret(const TextBuffer& text, uint64_t caret);

}  // namespace vx
