#include "document/indentation_strings.hpp"

#include <algorithm>
#include <vector>

namespace vx {
namespace {

bool isSpaceOrTab(char16_t c) { return c == u' ' || c == u'\t'; }

// Horizontal whitespace: tab and the Unicode space separators; line breaks are not included.
bool isHorizontalWhitespace(char16_t c) {
    return isSpaceOrTab(c) || c == 0x00A0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

bool isAllWhitespace(std::u16string_view text) { return std::all_of(text.begin(), text.end(), isHorizontalWhitespace); }

// A tab size of 0 would make every column computation divide by zero; it counts as 1.
uint64_t columnsPerTab(const VXIndentationContext& context) { return std::max<uint64_t>(context.tabSize, 1); }

uint64_t columnAfter(char16_t c, uint64_t column, uint64_t tabSize) {
    return c == u'\t' ? (column / tabSize + 1) * tabSize : column + 1;
}

}  // namespace

size_t rawIndentationLength(std::u16string_view line) {
    size_t n = 0;
    while (n < line.size() && isSpaceOrTab(line[n])) ++n;
    return n;
}

std::u16string_view indentation(std::u16string_view line) {
    if (isAllWhitespace(line)) return line;
    return line.substr(0, rawIndentationLength(line));
}

std::u16string stringBySettingIndentation(std::u16string_view line, std::u16string_view newIndentation) {
    std::u16string result(newIndentation);
    result += line.substr(indentation(line).size());
    return result;
}

uint64_t indentationLengthInSpacesWithContext(std::u16string_view line, const VXIndentationContext& context) {
    uint64_t tabSize = columnsPerTab(context), column = 0;
    for (char16_t c : line) {
        if (!isSpaceOrTab(c)) break;
        column = columnAfter(c, column, tabSize);
    }
    return column;
}

std::u16string normalizeIndentationUsingContext(std::u16string_view indentation, const VXIndentationContext& context) {
    uint64_t tabSize = columnsPerTab(context), columns = 0;
    for (char16_t c : indentation) {
        if (isSpaceOrTab(c)) columns = columnAfter(c, columns, tabSize);
    }
    if (context.useSoftTabs) return std::u16string(columns, u' ');
    // Runs of a full level of spaces become tabs, left to right; what is left over stays spaces.
    std::u16string result(columns / tabSize, u'\t');
    result.append(columns % tabSize, u' ');
    return result;
}

std::u16string lineByNormalizingIndentationUsingContext(std::u16string_view line, const VXIndentationContext& context) {
    return stringBySettingIndentation(line, normalizeIndentationUsingContext(indentation(line), context));
}

std::u16string indentBy(std::u16string_view line, int64_t n, const VXIndentationContext& context) {
    if (n == 0) return std::u16string(line);
    if (n > 0) return context.tabString() + std::u16string(line);

    uint64_t tabSize = columnsPerTab(context);
    size_t runLength = rawIndentationLength(line);
    std::u16string_view rest = line.substr(runLength);
    uint64_t width = indentationLengthInSpacesWithContext(line, context);
    if (width <= tabSize) return std::u16string(rest);

    uint64_t target = width - tabSize, column = 0;
    std::u16string result;
    for (size_t i = 0; i < runLength; ++i) {
        uint64_t next = columnAfter(line[i], column, tabSize);
        if (next > target) break;
        result += line[i];
        column = next;
    }
    // The character that would cross the new edge is replaced by spaces up to it exactly.
    result.append(target - column, u' ');
    result += rest;
    return result;
}

std::u16string stringByHomogenizingIndentationInto(std::u16string_view block, const VXIndentationContext& context,
                                                   std::u16string_view indentationToAdd,
                                                   const LinePrefixMatcher& prefix,
                                                   std::u16string_view prependString) {
    struct Line {
        std::u16string_view text, lineBreak;  // lineBreak: "", "\n" or "\r\n"
        bool blank = false;
    };
    std::vector<Line> lines;
    for (size_t start = 0;;) {
        size_t lf = block.find(u'\n', start);
        size_t end = lf == std::u16string_view::npos ? block.size() : lf;
        size_t contentEnd = end > start && block[end - 1] == u'\r' ? end - 1 : end;
        Line line{block.substr(start, contentEnd - start),
                  lf == std::u16string_view::npos ? std::u16string_view{} : block.substr(contentEnd, lf + 1 - contentEnd)};
        line.blank = isAllWhitespace(line.text);
        lines.push_back(line);
        if (lf == std::u16string_view::npos) break;
        start = lf + 1;
    }

    // The literal common prefix of the non-blank lines' indentation.
    std::u16string_view common;
    bool first = true;
    for (const Line& line : lines) {
        if (line.blank) continue;
        std::u16string_view own = indentation(line.text);
        if (first) {
            common = own;
            first = false;
            continue;
        }
        size_t n = 0;
        while (n < common.size() && n < own.size() && common[n] == own[n]) ++n;
        common = common.substr(0, n);
    }

    std::u16string result;
    for (size_t i = 0; i < lines.size(); ++i) {
        const Line& line = lines[i];
        std::u16string out(i == 0 ? std::u16string_view{} : indentationToAdd);
        if (line.blank) {
            out += prependString;
            while (!out.empty() && isSpaceOrTab(out.back())) out.pop_back();
        } else {
            std::u16string_view rest = line.text.substr(common.size());
            std::u16string_view own = indentation(rest);
            std::u16string_view content = rest.substr(own.size());
            if (prefix) content.remove_prefix(std::min(prefix(content), content.size()));
            out += normalizeIndentationUsingContext(own, context);
            out += prependString;
            out += content;
        }
        result += out;
        result += line.lineBreak;
    }
    return result;
}

}  // namespace vx
