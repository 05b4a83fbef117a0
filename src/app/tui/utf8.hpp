// The terminal layer's names for the one codec: the terminal speaks UTF-8, the text storage
// counts UTF-16 units. What malformed input becomes is stated in platform/unicode.hpp.
#pragma once

#include "platform/unicode.hpp"

namespace vx::tui {

using vx::appendUtf16;
using vx::decodeUtf16;
using vx::decodeUtf8;
using vx::kReplacementCharacter;
using vx::utf8;
using vx::utf8SequenceLength;

}  // namespace vx::tui
