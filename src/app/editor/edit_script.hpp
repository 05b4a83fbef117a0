// The commands of `vx edit`, run on an editor through the same commands and key dispatch the
// terminal's keys use:
//
//     type:TEXT  insert:TEXT  backspace  delete  newline  tab  backtab  undo  redo
//     move:DIR  select:DIR  transform:EVENT  command:NAME  key:KEY  snippet:TEXT
//
// In TEXT, \n, \t and \\ stand for a line feed, a tab and a backslash.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/editor/editor.hpp"

namespace vx::editor {

struct EditScriptError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// "LOC" or "LOC:LEN", comma-separated, in UTF-16 units; every range must lie in the text.
std::vector<Selection> parseSelectionRanges(std::string_view text, uint64_t length);
std::u16string unescapeEditText(std::string_view text);
// Runs one command on the active tab; throws EditScriptError for a command it does not know.
void runEditCommand(Editor& editor, std::string_view command);

}  // namespace vx::editor
