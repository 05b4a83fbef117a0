// Going to symbols in the editor:
//   go-to-symbol          (Ctrl-R)        the current file's symbols, narrowed and ranked as you type
//   go-to-definition      (F12)           the definition of the word at the caret: one jumps, several list
//   go-to-project-symbol  (Ctrl-Shift-R)  the project's symbols whose names begin with what you type
//
// Each file belongs to the project found from its folder; the project's index is kept up to date
// by the indexer process, and the current document's text (saved or not) is sent to it whenever
// one of these commands runs, so that the lists show what the buffer holds. Nothing here waits for
// the indexer: a list shows what the index has and fills in when the indexer reports news.
#pragma once

namespace vx::editor {

class Editor;

// Registers the three commands.
void registerSymbolCommands(Editor& editor);

}  // namespace vx::editor
