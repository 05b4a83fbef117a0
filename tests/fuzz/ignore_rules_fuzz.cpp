// Ignore files come from any checkout the user opens: parsing and matching must not crash, hang
// or read out of bounds on any text. The input is split at its first NUL into the ignore file
// and a path; a rule without special bytes must match its own text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "projects/ignore_rules.hpp"
#include "projects/path_filter.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 4096) return 0;  // paths and ignore lines are short; the matcher is quadratic
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const size_t split = input.find('\0');
    const std::string_view text = input.substr(0, split);
    const std::string_view path = split == std::string_view::npos ? text : input.substr(split + 1);

    const vx::IgnoreRules rules = vx::IgnoreRules::parse(text);
    (void)rules.verdict(path, false);
    (void)rules.verdict(path, true);
    (void)vx::ignoreGlobMatches(text, path);
    for (const auto& rule : rules.rules())
        if (rule.pattern.find_first_of("*?[\\") == std::string::npos && !vx::ignoreGlobMatches(rule.pattern, rule.pattern))
            std::abort();
    std::vector<std::string_view> components;
    (void)vx::pathIsGood(path, components);
    return 0;
}
