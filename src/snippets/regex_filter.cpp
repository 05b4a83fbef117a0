#include "snippets/regex_filter.hpp"

#include <oniguruma.h>

#include "platform/log.hpp"
#include "platform/unique_handle.hpp"
#include "platform/unicode.hpp"

namespace vx {

using OnigRegexPtr = UniqueHandle<OnigRegex, onig_free>;

struct SNRegexFilter::Compiled {
    OnigRegexPtr regex;
};

namespace {

void freeRegion(OnigRegion* region) { onig_region_free(region, 1); }
using OnigRegionPtr = UniqueHandle<OnigRegion*, freeRegion>;

const OnigUChar* bytes(std::u16string_view text) { return reinterpret_cast<const OnigUChar*>(text.data()); }

void initializeOniguruma() {
    static const bool initialized = [] {
        OnigEncoding encodings[] = {ONIG_ENCODING_UTF16_LE};
        onig_initialize(encodings, 1);
        return true;
    }();
    (void)initialized;
}

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Where the branches of the conditional whose text starts at `start` (just after "(?N:") end:
// the first unescaped ":" at depth 0 (or npos) and the closing ")" (npos when it never closes).
struct Branches {
    size_t colon = std::u16string_view::npos;
    size_t close = std::u16string_view::npos;
};

Branches findBranches(std::u16string_view text, size_t start) {
    Branches result;
    int depth = 0;
    for (size_t i = start; i < text.size(); ++i) {
        char16_t c = text[i];
        if (c == u'\\') {
            ++i;
        } else if (c == u'(') {
            ++depth;
        } else if (c == u')') {
            if (depth == 0) {
                result.close = i;
                return result;
            }
            --depth;
        } else if (c == u':' && depth == 0 && result.colon == std::u16string_view::npos) {
            result.colon = i;
        }
    }
    return result;
}

}  // namespace

SNRegexFilter::SNRegexFilter(std::u16string pattern_, std::u16string replace_, std::u16string options_)
    : pattern(std::move(pattern_)), replace(std::move(replace_)), options(std::move(options_)) {
    OnigOptionType onigOptions = ONIG_OPTION_CAPTURE_GROUP;
    for (char16_t letter : options) {
        if (letter == u'g') m_global = true;
        if (letter == u'i') onigOptions |= ONIG_OPTION_IGNORECASE;
        if (letter == u'm') onigOptions |= ONIG_OPTION_MULTILINE;
    }
    initializeOniguruma();
    OnigRegex regex = nullptr;
    OnigErrorInfo info{};
    int rc = onig_new(&regex, bytes(pattern), bytes(pattern) + pattern.size() * 2, onigOptions, ONIG_ENCODING_UTF16_LE,
                      ONIG_SYNTAX_RUBY, &info);
    OnigRegexPtr owned(regex);
    if (rc != ONIG_NORMAL) {
        OnigUChar message[ONIG_MAX_ERROR_MESSAGE_LEN];
        onig_error_code_to_str(message, rc, &info);
        VX_LOG_DEBUG("snippets", "regex filter does nothing: /%s/ (%s)", utf8FromUtf16(pattern).c_str(),
                     reinterpret_cast<char*>(message));
        return;
    }
    m_compiled = std::make_shared<const Compiled>(Compiled{std::move(owned)});
}

std::u16string SNRegexFilter::apply(std::u16string_view value, const SnippetEnvironment&) const {
    if (!m_compiled) return std::u16string(value);
    OnigRegionPtr region(onig_region_new());
    const OnigUChar* start = bytes(value);
    const OnigUChar* end = start + value.size() * 2;
    std::u16string result;
    size_t copied = 0, position = 0;
    while (position <= value.size()) {
        int found = onig_search(m_compiled->regex.get(), start, end, start + position * 2, end, region.get(), ONIG_OPTION_NONE);
        if (found < 0) break;
        RegexMatch match{value, {}};
        for (int i = 0; i < region.get()->num_regs; ++i) {
            int begin = region.get()->beg[i];
            match.groups.push_back(begin < 0 ? Range{RegexMatch::kNoGroup, 0}
                                             : Range{static_cast<uint64_t>(begin) / 2,
                                                     static_cast<uint64_t>(region.get()->end[i] - begin) / 2});
        }
        Range whole = match.groups[0];
        result.append(value.substr(copied, whole.location - copied));
        result += applyRecursiveConditionalReplacements(dollarsToBackslashes(replace, match), match);
        copied = whole.end();
        position = whole.end();
        if (whole.length == 0) {  // step over one character so that an empty match cannot repeat
            if (position >= value.size()) break;
            bool pair = value[position] >= 0xD800 && value[position] < 0xDC00 && position + 1 < value.size() &&
                        value[position + 1] >= 0xDC00 && value[position + 1] < 0xE000;
            position += pair ? 2 : 1;
        }
        if (!m_global) break;
    }
    result.append(value.substr(std::min(copied, value.size())));
    return result;
}

std::u16string SNRegexFilter::dollarsToBackslashes(std::u16string_view replace, const RegexMatch& currentMatch) {
    std::u16string result;
    for (size_t i = 0; i < replace.size(); ++i) {
        char16_t c = replace[i];
        if (c == u'\\' && i + 1 < replace.size()) {
            result += replace.substr(i++, 2);
        } else if (c == u'$' && i + 1 < replace.size() && isDigit(replace[i + 1])) {
            uint64_t group = 0;
            while (i + 1 < replace.size() && isDigit(replace[i + 1])) group = std::min<uint64_t>(group * 10 + (replace[++i] - u'0'), 1000000);
            if (group < 10) {
                result += u'\\';
                result += static_cast<char16_t>(u'0' + group);
                continue;
            }
            for (char16_t g : currentMatch.group(group)) {
                if (g == u'\\' || g == u'(' || g == u')' || g == u':') result += u'\\';
                result += g;
            }
        } else {
            result += c;
        }
    }
    return result;
}

std::u16string SNRegexFilter::applyRecursiveConditionalReplacements(std::u16string_view replace,
                                                                    const RegexMatch& currentMatch) {
    std::u16string result;
    for (size_t i = 0; i < replace.size(); ++i) {
        char16_t c = replace[i];
        if (c == u'\\' && i + 1 < replace.size()) {
            char16_t next = replace[++i];
            if (isDigit(next)) result += currentMatch.group(next - u'0');
            else if (next == u'n') result += u'\n';
            else if (next == u't') result += u'\t';
            else result += next;
            continue;
        }
        if (c == u'(' && i + 2 < replace.size() && replace[i + 1] == u'?' && isDigit(replace[i + 2])) {
            size_t colon = i + 2;
            uint64_t group = 0;
            while (colon < replace.size() && isDigit(replace[colon]) && group < 1000000) group = group * 10 + (replace[colon++] - u'0');
            if (colon < replace.size() && replace[colon] == u':') {
                Branches branches = findBranches(replace, colon + 1);
                if (branches.close != std::u16string_view::npos) {
                    size_t thenEnd = std::min(branches.colon, branches.close);
                    std::u16string_view chosen =
                        currentMatch.participated(group)
                            ? replace.substr(colon + 1, thenEnd - colon - 1)
                            : (branches.colon < branches.close ? replace.substr(branches.colon + 1, branches.close - branches.colon - 1)
                                                               : std::u16string_view{});
                    result += applyRecursiveConditionalReplacements(chosen, currentMatch);
                    i = branches.close;
                    continue;
                }
            }
        }
        result += c;
    }
    return result;
}

}  // namespace vx
