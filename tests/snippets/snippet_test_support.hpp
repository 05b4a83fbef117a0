// Compact views of compiled snippets for the snippet tests.
#pragma once

#include <string>
#include <vector>

#include "snippets/constructs.hpp"
#include "snippets/snippet_parser.hpp"
#include "platform/unicode.hpp"

namespace vx::test {

inline CompiledSnippet compile(std::string_view utf8) { return VXNewSnippetParserCompile(utf16FromUtf8(utf8)); }

// One line per construct: kind letter and number ("T1" tab stop, "M1" mirror, "C" constant),
// then offset+length, then "^index" of the parent when there is one.
inline std::vector<std::string> layout(const CompiledSnippet& snippet) {
    std::vector<std::string> lines;
    for (const auto& construct : snippet.constructs) {
        std::string line;
        switch (construct->kind()) {
        case SNConstruct::Kind::TabStop: line = "T"; break;
        case SNConstruct::Kind::Mirror: line = "M"; break;
        case SNConstruct::Kind::Constant: line = "C"; break;
        }
        if (auto* numbered = dynamic_cast<const SNNumberedConstruct*>(construct.get())) line += std::to_string(numbered->number);
        line += " " + std::to_string(construct->range.location) + "+" + std::to_string(construct->range.length);
        if (auto parent = construct->parentConstruct()) {
            for (size_t i = 0; i < snippet.constructs.size(); ++i)
                if (snippet.constructs[i] == parent) line += " ^" + std::to_string(i);
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace vx::test
