// One expansion of a compiled snippet at one place in a document: the text to insert and the
// fields placed in it, everything resolved.
//
//     constants   each constant construct's value (a variable, a shell command, a string)
//                 passed through its filters; a value that differs from the starting text
//                 replaces it, and the constructs written inside that text go with it. Shell
//                 commands may be left to run later: their fields then show what the filters
//                 make of nothing (an or-else default) and are marked as awaiting the output
//     tab stops   their default passed through their filters
//     mirrors     their tab stop's text passed through their filters (a mirror whose number
//                 has no tab stop shows what its filters make of the empty text)
//     layout      every line break becomes the document's, followed by the indentation of the
//                 line the snippet goes into; every tab becomes the document's indentation unit
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "snippets/constructs.hpp"
#include "snippets/snippet_environment.hpp"
#include "snippets/snippet_fields.hpp"

namespace vx {

struct SnippetLayout {
    std::u16string lineBreak = u"\n";
    std::u16string indentation;  // of the line the snippet is inserted into
    int tabSize = 4;
    bool softTabs = true;
};

struct SnippetExpansion {
    std::u16string text;
    std::vector<SnippetField> fields;  // field 0 is the whole text; a field before those inside it
};

enum class ShellCommands { Run, Defer };

SnippetExpansion expandSnippet(const CompiledSnippet& snippet, const SnippetEnvironment& environment,
                               const SnippetLayout& layout, ShellCommands shell = ShellCommands::Run);

// The text of a constant construct's field for its constant's value.
std::u16string constantText(const SnippetField& field, std::optional<std::u16string> value, const SnippetEnvironment& environment);

// The text a mirror shows for the text of its tab stop.
std::u16string mirrorText(const SnippetField& mirror, std::u16string_view tabStopText, const SnippetEnvironment& environment);

}  // namespace vx
