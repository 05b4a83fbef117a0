// Converts snippets written in the dollar-sign syntax other editors use into this one.
//
//     $1  ${1}                 %{1}
//     ${1:default $2}          %{1:"default %{2}"}
//     ${1/(a)/$1 ${1:+x}/g}    %{1/(a)/\1 (?1:x)/g}
//     $NAME  ${NAME:default}   %{NAME}  %{NAME:"default"}   (TM_FILENAME becomes VX_FILENAME, ...)
//     `date`                   %{`date`}
//
// Text is carried over so that it expands to the same characters, escaping where this syntax
// needs it. What this syntax cannot say (choices, case-changing format directives, a "}" in a
// replacement, a double quote inside a shell command) makes the conversion fail with a reason.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vx {

struct SnippetConversion {
    std::u16string text;  // the converted snippet when `ok`
    bool ok = false;
    std::string problem;  // why it failed
    size_t offset = 0;    // where, in UTF-16 code units of the input
};

SnippetConversion convertDollarSnippet(std::u16string_view text);

}  // namespace vx
