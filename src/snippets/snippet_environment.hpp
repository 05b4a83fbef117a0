// What a snippet's variables and shell commands see of the editing session.
//
// Variables resolve from one table (snippet_environment.cpp): the selected text, the current
// line and word, the file's name, path and directory, the line number, the clipboard and the
// date and time. Each has the program's own name (VX_FILENAME) and the name snippets brought
// from other editors use (TM_FILENAME, CURRENT_YEAR, CLIPBOARD). A name the table does not know is looked up in the editor's own process environment, so
// %{HOME} works as it does in a shell. A variable whose value is unknown resolves to nothing,
// which lets an or-else filter supply the text.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vx {

struct SnippetEnvironment {
    std::optional<std::u16string> selectedText;
    std::optional<std::u16string> currentLine;
    std::optional<std::u16string> currentWord;
    std::optional<std::u16string> filePath;  // absolute path of the document's file
    std::optional<uint64_t> lineNumber;      // 1-based
    std::optional<std::u16string> clipboard;
    std::chrono::system_clock::time_point now = std::chrono::system_clock::now();
    // Shell constants run only when this is set; previews and `vx snippet parse` leave it off.
    bool runShellCommands = false;
    // Seconds a shell constant may run before it is killed and resolves to nothing.
    double shellTimeout = 2.0;

    // The value of a variable, or nothing.
    std::optional<std::u16string> variable(std::u16string_view name) const;

    // The variables the table knows that have a value, by name: shell constants get them as
    // environment variables.
    std::map<std::string, std::string> exportedVariables() const;
};

// The program's names of the variables the table resolves, in the order the README lists them.
std::vector<std::u16string_view> snippetVariableNames();

}  // namespace vx
