// The regular-expression filter of a construct: %{1/pattern/replacement/options}.
//
// The pattern is an Oniguruma regex in Ruby syntax (the program's one engine) over the UTF-16
// value. The options word: "g" replaces every match (otherwise only the first), "i" ignores
// case, "m" lets "." match a line break; other letters are ignored.
//
// The replacement is text with these pieces:
//     $N              group N, all the digits that follow ($12 is group 12); $0 the whole match
//     \N              group N, one digit (\12 is group 1 and then "2")
//     (?N:then:else)  "then" when group N took part in the match, else "else" (may be omitted);
//                     both are replacements themselves, so conditionals nest
//     \n \t           line feed, tab
//     \x              any other escaped character stands for itself: \\ \( \) \: \$
// Inside a conditional, parentheses that are not escaped must balance.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "snippets/constructs.hpp"

namespace vx {

// One match: the subject and the ranges of its groups (group 0 is the whole match).
struct RegexMatch {
    static constexpr uint64_t kNoGroup = UINT64_MAX;
    std::u16string_view subject;
    std::vector<Range> groups;  // a group that took no part has location kNoGroup

    bool participated(size_t group) const { return group < groups.size() && groups[group].location != kNoGroup; }
    std::u16string_view group(size_t group) const {
        return participated(group) ? subject.substr(groups[group].location, groups[group].length) : std::u16string_view{};
    }
};

class SNRegexFilter final : public SNFilter {
public:
    SNRegexFilter(std::u16string pattern, std::u16string replace, std::u16string options);

    // The value with the first (or, with "g", every) match replaced; unchanged when the pattern
    // does not compile.
    std::u16string apply(std::u16string_view value, const SnippetEnvironment& environment) const override;

    // Dollar references turned into the backslash form: $N for N < 10 becomes \N; a group
    // beyond 9 is replaced by its text, escaped so that it stays literal.
    static std::u16string dollarsToBackslashes(std::u16string_view replace, const RegexMatch& currentMatch);
    // Conditionals, back-references and escapes expanded, conditionals within conditionals too.
    static std::u16string applyRecursiveConditionalReplacements(std::u16string_view replace, const RegexMatch& currentMatch);

    bool isValid() const { return static_cast<bool>(m_compiled); }
    bool isGlobal() const { return m_global; }

    const std::u16string pattern, replace, options;

private:
    // The compiled Oniguruma regex; its header stays out of this one (it clashes with <regex.h>).
    struct Compiled;
    std::shared_ptr<const Compiled> m_compiled;
    bool m_global = false;
};

}  // namespace vx
