// A recipe target over a plain string, for the recipe tests.
#pragma once

#include <string>

#include "editing/recipe.hpp"

namespace vx::test {

class StringBuffer final : public TextBuffer {
public:
    std::u16string value;

    uint64_t length() const override { return value.size(); }
    std::u16string substring(Range r) const override { return value.substr(r.location, r.length); }
    char16_t characterAt(uint64_t offset) const override { return value[offset]; }
    uint64_t lineCount() const override { return starts().size(); }
    uint64_t lineStart(uint64_t line) const override { return starts()[line]; }
    uint64_t lineForOffset(uint64_t offset) const override {
        auto s = starts();
        uint64_t line = 0;
        while (line + 1 < s.size() && s[line + 1] <= offset) ++line;
        // Inside a CR LF pair: the line the pair ends.
        return line;
    }
    void replace(Range r, std::u16string_view text) override { value.replace(r.location, r.length, text); }

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

class StringTarget final : public RecipeTarget {
public:
    StringBuffer text;
    Range selected;
    int tabs = 4;
    std::u16string newline = u"\n";
    std::u16string lineComment = u"//";
    std::pair<std::u16string, std::u16string> blockComment{u"/*", u"*/"};

    StringTarget(std::u16string value, Range selection) : selected(selection) { text.value = std::move(value); }
    TextBuffer& buffer() override { return text; }
    Range targetSelection() const override { return selected; }
    void setTargetSelection(Range range) override { selected = range; }
    int tabSize() const override { return tabs; }
    bool softTabs() const override { return true; }
    std::u16string lineBreak() const override { return newline; }
    std::u16string lineCommentMarker() const override { return lineComment; }
    std::pair<std::u16string, std::u16string> blockCommentMarkers() const override { return blockComment; }
};

}  // namespace vx::test
