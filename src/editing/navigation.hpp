// Where the caret goes: by user-perceived character (a base with its marks, a surrogate pair, a
// CRLF pair), by word, and the indentation at the start of a line.
#pragma once

#include <cstdint>
#include <string_view>

#include "editing/text_buffer.hpp"

namespace vx {

bool isWordCharacter(char32_t c);

uint64_t nextCaretPosition(const TextBuffer& text, uint64_t offset);
uint64_t previousCaretPosition(const TextBuffer& text, uint64_t offset);

// To the end of the next word (or run of punctuation), skipping blanks; a line end is a stop of its own.
uint64_t wordRight(const TextBuffer& text, uint64_t offset);
// To the start of the previous word (or run of punctuation).
uint64_t wordLeft(const TextBuffer& text, uint64_t offset);

// The length of the spaces and tabs that start a line.
uint64_t indentationLength(std::u16string_view line);

}  // namespace vx
