// Compiling a snippet: tokenize, parse with the generated LALR(1) parser, build the constructs.
#pragma once

#include <string_view>

#include "snippets/constructs.hpp"

// The expanded text, the constructs with their places, and whether the text failed to parse.
// Nothing is resolved: variables and shell commands contribute no text, regex filters are left
// to the snippet session, and a mirror's text is empty until the session copies its tab stop.
vx::CompiledSnippet VXNewSnippetParserCompile(std::u16string_view text);
