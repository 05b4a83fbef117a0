// Compact views of compiled snippets for the snippet tests.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "editing/text_buffer.hpp"

#include "snippets/constructs.hpp"
#include "snippets/snippet_parser.hpp"
#include "platform/unicode.hpp"

namespace vx::test {

// A text buffer over a plain string that reports every replacement (`newRange`, change in
// length), as a document's storage does.
class StringText final : public TextBuffer {
public:
    explicit StringText(std::u16string text = {}) : value(std::move(text)) {}
    std::u16string value;
    std::function<void(Range, int64_t)> onReplace;

    uint64_t length() const override { return value.size(); }
    std::u16string substring(Range r) const override { return value.substr(r.location, r.length); }
    char16_t characterAt(uint64_t offset) const override { return value[offset]; }
    uint64_t lineCount() const override { return starts().size(); }
    uint64_t lineStart(uint64_t line) const override { return starts()[line]; }
    uint64_t lineForOffset(uint64_t offset) const override {
        auto s = starts();
        uint64_t line = 0;
        while (line + 1 < s.size() && s[line + 1] <= offset) ++line;
        return line;
    }
    void replace(Range r, std::u16string_view text) override {
        value.replace(r.location, r.length, text);
        if (onReplace) onReplace({r.location, text.size()}, static_cast<int64_t>(text.size()) - static_cast<int64_t>(r.length));
    }

private:
    std::vector<uint64_t> starts() const {
        std::vector<uint64_t> out{0};
        for (size_t i = 0; i < value.size(); ++i) {
            if (value[i] == u'\r' && i + 1 < value.size() && value[i + 1] == u'\n') continue;
            if (value[i] == u'\r' || value[i] == u'\n') out.push_back(i + 1);
        }
        return out;
    }
};

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
