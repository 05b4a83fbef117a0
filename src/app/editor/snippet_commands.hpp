// The editor's snippet commands: Tab expands the trigger before the caret or moves to the next
// field of the snippet being filled in (and indents otherwise), Shift-Tab moves back (and
// unindents otherwise), insert-snippet lists the snippets that apply at the caret.
#pragma once

#include <string_view>

#include "app/editor/editor.hpp"

namespace vx::editor {

void registerSnippetCommands(Editor& editor);
// Inserts a snippet's text at every selection and starts its session, as a trigger would.
void insertSnippet(Editor& editor, std::u16string_view text);

}  // namespace vx::editor
