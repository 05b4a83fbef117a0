#include "editing/text_recipes.hpp"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "editing/navigation.hpp"

namespace vx {

namespace {


bool isBlank(std::u16string_view line) {
    return line.find_first_not_of(u" \t") == std::u16string_view::npos;
}

// Each line of the lines a selection touches: where its content starts and its text.
struct Line {
    Range content;
    std::u16string text;
};

std::vector<Line> coveredLines(VXRecipe& recipe) {
    const TextBuffer& text = recipe.target().buffer();
    Range covered = recipe.contentRangeOfLinesInRange(recipe.selection());
    std::vector<Line> out;
    uint64_t first = text.lineForOffset(covered.location), last = text.lineForOffset(covered.end());
    for (uint64_t line = first; line <= last; ++line) {
        Range content = text.lineContentRange(line);
        out.push_back({content, text.substring(content)});
    }
    return out;
}

std::u16string convertCase(std::u16string_view text, VXChangeCaseRecipe::Case to) {
    icu::UnicodeString string(text.data(), static_cast<int32_t>(text.size()));
    switch (to) {
        case VXChangeCaseRecipe::Case::Upper: string.toUpper(icu::Locale::getRoot()); break;
        case VXChangeCaseRecipe::Case::Lower: string.toLower(icu::Locale::getRoot()); break;
        case VXChangeCaseRecipe::Case::Title: string.toTitle(nullptr, icu::Locale::getRoot()); break;
    }
    return std::u16string(string.getBuffer(), static_cast<size_t>(string.length()));
}

}  // namespace

bool applyReplacements(VXRecipe& recipe, const std::vector<Replacement>& replacements) {
    if (replacements.empty()) return false;
    Transaction change = Transaction::fromReplacements(recipe.length(), replacements);
    Range selection = change.mapRange(recipe.selection());
    change.applyInOrder([&](Range range, std::u16string_view text) { recipe.replaceTextInRange(range, text); });
    recipe.setSelection(selection);
    return true;
}

bool VXToggleLineCommentRecipe::main() {
    std::u16string marker = target().lineCommentMarker();
    if (marker.empty()) {
        if (target().blockCommentMarkers().first.empty()) return false;
        setSelection(contentRangeOfLinesInRange(selection()));
        return VXToggleBlockCommentRecipe(target()).main();
    }
    std::vector<Line> lines = coveredLines(*this);
    bool allCommented = true;
    size_t column = SIZE_MAX;  // the smallest indentation among non-blank lines
    for (const auto& line : lines) {
        if (isBlank(line.text)) continue;
        size_t indent = indentationLength(line.text);
        column = std::min(column, indent);
        if (std::u16string_view(line.text).substr(indent, marker.size()) != marker) allCommented = false;
    }
    if (column == SIZE_MAX) return false;  // only blank lines
    std::vector<Replacement> changes;
    for (const auto& line : lines) {
        if (isBlank(line.text)) continue;
        if (allCommented) {
            size_t at = indentationLength(line.text);
            size_t length = marker.size();
            if (at + length < line.text.size() && line.text[at + length] == u' ') ++length;
            changes.push_back({{line.content.location + at, length}, {}});
        } else {
            changes.push_back({{line.content.location + column, 0}, marker + u" "});
        }
    }
    return applyReplacements(*this, changes);
}

bool VXToggleBlockCommentRecipe::main() {
    auto [open, close] = target().blockCommentMarkers();
    if (open.empty() || close.empty()) return false;
    Range range = selection();
    if (range.length == 0) range = contentRangeOfLinesInRange(range);
    std::u16string text = textInRange(range);
    // Markers already there (spaces around the text aside) come off.
    size_t first = text.find_first_not_of(u" \t"), last = text.find_last_not_of(u" \t");
    if (first != std::u16string::npos && last + 1 - first >= open.size() + close.size() &&
        text.compare(first, open.size(), open) == 0 && text.compare(last + 1 - close.size(), close.size(), close) == 0) {
        uint64_t openEnd = first + open.size(), closeStart = last + 1 - close.size();
        if (openEnd < closeStart && text[openEnd] == u' ') ++openEnd;
        if (closeStart > openEnd && text[closeStart - 1] == u' ') --closeStart;
        return applyReplacements(*this, {{{range.location + first, openEnd - first}, {}},
                                         {{range.location + closeStart, last + 1 - closeStart}, {}}});
    }
    return applyReplacements(*this, {{{range.location, 0}, open + u" "}, {{range.end(), 0}, u" " + close}});
}

bool VXChangeCaseRecipe::main() {
    Range range = selection();
    if (range.length == 0) {
        const TextBuffer& text = target().buffer();
        uint64_t start = range.location, end = range.location;
        while (start > 0 && isWordCharacter(text.characterAt(start - 1))) --start;
        while (end < text.length() && isWordCharacter(text.characterAt(end))) ++end;
        range = {start, end - start};
    }
    if (range.length == 0) return false;
    std::u16string text = textInRange(range), converted = convertCase(text, m_case);
    if (converted == text) return false;
    Range before = selection();
    if (!replaceTextInRange(range, converted)) return false;
    // The selection covers the converted text (its length may change: ß becomes SS).
    setSelection(before.length ? Range{range.location, converted.size()} : Range{std::min(before.location, range.location + converted.size()), 0});
    return true;
}

bool VXMoveLinesRecipe::main() {
    const TextBuffer& text = target().buffer();
    Range block = contentRangeOfLinesInRange(selection());
    uint64_t first = text.lineForOffset(block.location), last = text.lineForOffset(block.end());
    if (m_down ? last + 1 >= text.lineCount() : first == 0) return false;
    uint64_t other = m_down ? last + 1 : first - 1;
    Range otherContent = text.lineContentRange(other);
    Range all = m_down ? Range{block.location, otherContent.end() - block.location}
                       : Range{otherContent.location, block.end() - otherContent.location};
    std::u16string lineBreak = this->lineBreak();
    std::u16string blockText = textInRange(block), otherText = textInRange(otherContent);
    std::u16string moved = m_down ? otherText + lineBreak + blockText : blockText + lineBreak + otherText;
    Range s = selection();
    uint64_t newBlockStart = m_down ? block.location + otherText.size() + lineBreak.size() : otherContent.location;
    if (!replaceTextInRange(all, moved)) return false;
    setSelection({newBlockStart + (s.location - block.location), s.length});
    return true;
}

bool VXJoinLinesRecipe::main() {
    const TextBuffer& text = target().buffer();
    Range s = selection();
    uint64_t first = text.lineForOffset(s.location), last = text.lineForOffset(s.end());
    if (last == first) last = first + 1;
    if (last >= text.lineCount()) return false;
    std::vector<Replacement> changes;
    for (uint64_t line = first; line < last; ++line) {
        Range content = text.lineContentRange(line), next = text.lineContentRange(line + 1);
        std::u16string nextText = text.substring(next);
        uint64_t indent = indentationLength(nextText);
        // Trailing blanks of this line, the break and the next line's indentation become one space.
        uint64_t end = content.end();
        while (end > content.location && (text.characterAt(end - 1) == u' ' || text.characterAt(end - 1) == u'\t')) --end;
        bool space = end > content.location && indent < nextText.size();
        changes.push_back({{end, next.location + indent - end}, space ? u" " : u""});
    }
    return applyReplacements(*this, changes);
}

bool VXSelectEnclosingBracketsRecipe::main() {
    const TextBuffer& text = target().buffer();
    static constexpr std::u16string_view kOpen = u"([{", kClose = u")]}";
    Range s = selection();
    // Scan left for an opener that nothing between closes, then right for its closer.
    int64_t depth[3] = {0, 0, 0};
    std::optional<uint64_t> open;
    size_t kind = 0;
    for (uint64_t at = s.location; at-- > 0;) {
        char16_t c = text.characterAt(at);
        if (size_t k = kClose.find(c); k != std::u16string_view::npos) ++depth[k];
        else if (size_t o = kOpen.find(c); o != std::u16string_view::npos) {
            if (depth[o] == 0) {
                open = at;
                kind = o;
                break;
            }
            --depth[o];
        }
    }
    if (!open) return false;
    int64_t nesting = 0;
    for (uint64_t at = *open + 1; at < text.length(); ++at) {
        char16_t c = text.characterAt(at);
        if (c == kOpen[kind]) ++nesting;
        else if (c == kClose[kind] && nesting-- == 0) {
            if (at < s.end()) return false;
            Range inside{*open + 1, at - *open - 1};
            setSelection(s == inside ? Range{*open, inside.length + 2} : inside);
            return !(selection() == s);
        }
    }
    return false;
}

const std::vector<std::string_view>& textRecipeNames() {
    static const std::vector<std::string_view> names = {
        "toggle-comment", "toggle-block-comment", "upper-case", "lower-case", "title-case",
        "move-lines-up", "move-lines-down", "join-lines", "select-enclosing-brackets"};
    return names;
}

std::unique_ptr<VXRecipe> makeTextRecipe(std::string_view name, RecipeTarget& target) {
    using Case = VXChangeCaseRecipe::Case;
    if (name == "toggle-comment") return std::make_unique<VXToggleLineCommentRecipe>(target);
    if (name == "toggle-block-comment") return std::make_unique<VXToggleBlockCommentRecipe>(target);
    if (name == "upper-case") return std::make_unique<VXChangeCaseRecipe>(target, Case::Upper);
    if (name == "lower-case") return std::make_unique<VXChangeCaseRecipe>(target, Case::Lower);
    if (name == "title-case") return std::make_unique<VXChangeCaseRecipe>(target, Case::Title);
    if (name == "move-lines-up") return std::make_unique<VXMoveLinesRecipe>(target, false);
    if (name == "move-lines-down") return std::make_unique<VXMoveLinesRecipe>(target, true);
    if (name == "join-lines") return std::make_unique<VXJoinLinesRecipe>(target);
    if (name == "select-enclosing-brackets") return std::make_unique<VXSelectEnclosingBracketsRecipe>(target);
    return nullptr;
}

}  // namespace vx
