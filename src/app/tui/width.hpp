// How many terminal columns a character takes: 0 for combining marks and other characters drawn
// on the previous one, 2 for East Asian wide and full-width characters and emoji shown as
// pictures, 1 otherwise. Control characters answer 0; the editor draws them itself.
#pragma once

#include <string_view>

namespace vx::tui {

int codepointWidth(char32_t codepoint);
// The columns UTF-8 text takes.
int stringWidth(std::string_view text);

}  // namespace vx::tui
