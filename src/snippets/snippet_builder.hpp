// Turns a parsed snippet into constructs: gives numbered constructs their kinds, expands the
// text and places every construct in it.
#pragma once

#include "snippets/constructs.hpp"
#include "snippets/snippet_syntax.hpp"

namespace vx {

CompiledSnippet buildCompiledSnippet(const syntax::Sequence& root);

}  // namespace vx
