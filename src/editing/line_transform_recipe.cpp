#include "editing/line_transform_recipe.hpp"

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <unordered_set>

#include "platform/log.hpp"
#include "platform/unicode.hpp"

namespace vx {

namespace {

// The user's locale for collation: LC_ALL, LC_COLLATE, LANG in that order; the C and POSIX
// locales collate by the root rules.
icu::Locale collationLocale() {
    for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* value = std::getenv(name);
        if (!value || !*value) continue;
        std::string locale(value);
        locale = locale.substr(0, locale.find_first_of(".@"));
        if (locale == "C" || locale == "POSIX") return icu::Locale::getRoot();
        return icu::Locale(locale.c_str());
    }
    return icu::Locale::getRoot();
}

std::unique_ptr<icu::Collator> makeCollator() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(collationLocale(), status));
    if (U_FAILURE(status)) {
        status = U_ZERO_ERROR;
        collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    }
    if (!collator) return nullptr;
    collator->setStrength(icu::Collator::SECONDARY);  // case ignored, accents not
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    return collator;
}

std::vector<std::u16string> uniqueLines(const std::vector<std::u16string>& lines) {
    std::unordered_set<std::u16string> seen;
    std::vector<std::u16string> out;
    for (const auto& line : lines)
        if (seen.insert(line).second) out.push_back(line);
    VX_LOG_DEBUG("editing", "lineContents = %zu lines, itemsSet = %zu, lines = %zu", lines.size(), seen.size(), out.size());
    return out;
}

}  // namespace

const std::vector<std::string_view>& VXLineTransformRecipe::eventNames() {
    static const std::vector<std::string_view> names = {
        "vx.sort-lines-ascending", "vx.sort-lines-descending", "vx.randomize-lines", "vx.reverse-lines",
        "vx.unique-lines", "vx.sort-ascending-and-unique-lines", "vx.duplicate-line", "vx.reverse-text",
        "vx.spaces-to-tabs", "vx.tabs-to-spaces"};
    return names;
}

int32_t VXLineTransformRecipe::typeForEvent(std::string_view name) {
    const auto& names = eventNames();
    auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? 0 : static_cast<int32_t>(found - names.begin()) + 1;
}

void VXLineTransformRecipe::sortLines(std::vector<std::u16string>& lines, int direction) {
    thread_local std::unique_ptr<icu::Collator> collator = makeCollator();
    auto compare = [&](const std::u16string& a, const std::u16string& b) {
        if (!collator) return a.compare(b);
        UErrorCode status = U_ZERO_ERROR;
        return static_cast<int>(collator->compare(a.data(), static_cast<int32_t>(a.size()), b.data(),
                                                  static_cast<int32_t>(b.size()), status));
    };
    std::stable_sort(lines.begin(), lines.end(),
                     [&](const std::u16string& a, const std::u16string& b) { return compare(a, b) * direction < 0; });
}

bool VXLineTransformRecipe::processLines(VXLineTransformRecipe& recipe, const LineTransform& transform) {
    Range content = recipe.contentRangeOfLinesInRange(recipe.selection());
    std::vector<std::u16string> lines = splitLines(recipe.textInRange(content));
    std::u16string joined = joinLines(transform(std::move(lines)), recipe.lineBreak());
    if (!recipe.replaceTextInRange(content, joined)) return false;
    recipe.setSelection({content.location, joined.size()});
    return true;
}

bool VXLineTransformRecipe::main() {
    switch (type) {
        case 1:
        case 2:
        case 6:
            return processLines(*this, [t = type](std::vector<std::u16string> lines) {
                sortLines(lines, t == 2 ? -1 : 1);
                if (t == 6) lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
                return lines;
            });
        case 3:
            return processLines(*this, [](std::vector<std::u16string> lines) {
                thread_local std::mt19937 random{std::random_device{}()};
                for (size_t i = 0; i + 1 < lines.size(); ++i) {
                    std::uniform_int_distribution<size_t> pick(i, lines.size() - 1);
                    std::swap(lines[i], lines[pick(random)]);
                }
                return lines;
            });
        case 4:
            return processLines(*this, [](std::vector<std::u16string> lines) {
                std::reverse(lines.begin(), lines.end());
                return lines;
            });
        case 5: return processLines(*this, uniqueLines);
        case 7: return duplicateLine();
        case 8: return reverseText();
        case 9: return convertIndentation(true);
        case 10: return convertIndentation(false);
        default: return false;
    }
}

bool VXLineTransformRecipe::duplicateLine() {
    Range lines = rangeOfLineInRange(selection());
    std::u16string text = textInRange(lines);
    const std::u16string lineBreak = this->lineBreak();
    bool endsWithBreak = !text.empty() && (text.back() == u'\n' || text.back() == u'\r');
    if (!endsWithBreak) text = lineBreak + text;  // the last line of the text
    if (!replaceTextInRange({lines.end(), 0}, text)) return false;
    Range s = selection();
    setSelection({s.location + text.size(), s.length});
    return true;
}

bool VXLineTransformRecipe::reverseText() {
    if (length() < 2) return false;
    Range s = selection();
    Range range = s;
    if (s.length == 0) {
        if (s.location == 0 || s.location >= length()) return false;
        range = {s.location - 1, 2};  // the characters on both sides of the caret
    }
    std::u16string text = textInRange(range);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> breaks(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) return false;
    icu::UnicodeString string(false, text.data(), static_cast<int32_t>(text.size()));
    breaks->setText(string);
    std::u16string reversed;
    reversed.reserve(text.size());
    for (int32_t end = breaks->last(), start = breaks->previous(); start != icu::BreakIterator::DONE;
         end = start, start = breaks->previous())
        reversed.append(text, static_cast<size_t>(start), static_cast<size_t>(end - start));
    if (!replaceTextInRange(range, reversed)) return false;
    setSelection(s);
    return true;
}

bool VXLineTransformRecipe::convertIndentation(bool toTabs) {
    if (length() == 0) return false;
    Range range = selection().length ? selection() : Range{0, length()};
    const auto t = static_cast<size_t>(std::max(tabSize(), 1));
    std::u16string text = textInRange(range);
    std::u16string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        if (toTabs && text[i] == u' ') {
            // Every run of two up to t spaces becomes one tab, greedily; a lone space stays.
            size_t run = 0;
            while (i + run < text.size() && text[i + run] == u' ') ++run;
            i += run;
            while (run >= 2 && t >= 2) {
                size_t piece = std::min(run, t);
                out += u'\t';
                run -= piece;
            }
            out.append(run, u' ');
        } else if (!toTabs && text[i] == u'\t') {
            out.append(t, u' ');
            ++i;
        } else {
            out += text[i++];
        }
    }
    return replaceTextInRange(range, out);
}

bool triggerEvent(std::string_view eventName, RecipeTarget& target) {
    int32_t type = VXLineTransformRecipe::typeForEvent(eventName);
    if (type == 0) return false;
    VXLineTransformRecipe recipe(target);
    recipe.type = type;
    return recipe.main();
}

}  // namespace vx
