// Compiles a definition's regular expression as the highlighter does (UTF-16LE, Ruby syntax,
// multiline, negate-single-line, capture-group) and reports what the checks need. Kept apart
// from the tests because the regex engine's header clashes with the POSIX one.
#pragma once

#include <string>
#include <vector>

namespace vx::test {

struct RegexCheck {
    bool compiles = false;
    std::string error;               // the engine's message when it does not compile
    int groups = 0;                  // numbered groups (named ones count too)
    std::vector<std::string> names;  // names of named groups
};

RegexCheck checkRegex(const std::string& expression);

}  // namespace vx::test
