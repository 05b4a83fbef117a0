// Highlighting a text that arrives in pieces (a pipe, a file read in blocks), line by line.
//
//     append("int a;\nint") ──▶ line 0 "int a;\n" highlighted, "int" kept
//     append(" b;\r")        ──▶ nothing yet: a CR may be the first half of a CR LF
//     append("\nx")          ──▶ line 1 "int b;\r\n"
//     finish()               ──▶ line 2 "x", the last line (empty when the text ends with a break)
//
// Lines are split and highlighted exactly as highlightText does for the whole text; what is kept
// between lines is the context the last one ended in and the unfinished line, so memory grows
// with the longest line but not with the number of lines.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "syntax/document_highlighter.hpp"

namespace vx {

class VXLineStreamHighlighter {
public:
    // Called once per line, in order, with the line (document offsets, events in text order) and
    // its text including the line break. Both are valid only during the call.
    using LineHandler = std::function<void(const VXHighlightedLine& line, std::u16string_view text)>;

    VXLineStreamHighlighter(const VXSyntaxRuleset& ruleset, LineHandler onLine);

    // Highlights every line that `text` completes.
    void append(std::u16string_view text);
    // Highlights the last line. Nothing may be appended afterwards.
    void finish();

    uint64_t linesDone() const { return m_lines; }

private:
    void emit(std::u16string_view text, uint64_t contentLength);

    const VXSyntaxRuleset& m_ruleset;
    LineHandler m_onLine;
    VXSyntaxParseState m_state;
    VXHighlightedLine m_line;  // reused: its events keep their storage from line to line
    VXContext m_context;
    std::u16string m_pending;  // the start of a line whose break has not arrived
    uint64_t m_offset = 0;     // document offset of the next line
    uint64_t m_lines = 0;
    bool m_finished = false;
};

}  // namespace vx
