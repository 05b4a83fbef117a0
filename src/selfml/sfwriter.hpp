// Writes a self-ml tree back as text.
//
// A root (a list without a head) writes its children separated by blank lines. A list writes
// "(head", then its children: on the same line when all of them are strings, or for a first
// child that is a string or an empty list; otherwise each on a new line indented four spaces
// deeper. A string is written bare when it can be, else in brackets, else in backticks:
//
//     (k a b)        (k (x)            (k [a b] `a ] b` [])
//                        (y z))
#pragma once

#include <string>
#include <string_view>

#include "selfml/sfnode.hpp"

namespace vx {

std::string SFNodeSelfmlRepresentation(const SFNode* node);
// One string in the first form that reads back as the same text.
void SFWriteQuotedString(std::string_view text, std::string& out);

}  // namespace vx
