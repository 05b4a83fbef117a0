// The selector parser: tokens to bytecode.
//
// Grammar (loosest first):
//     root     ::= selector | (empty)
//     selector ::= selector "," outer  | outer          alternatives, grouped to the left
//     outer    ::= outer " - " middle  | middle         exclusions, grouped to the left
//     middle   ::= inner middle        | inner          descendants: "a b c" is a outside (b c)
//     inner    ::= "*" | "!" inner | inner "|" inner | inner "&" inner | SCOPE | "(" inner ")"
// "|" and "&" share one level and group to the left ("a | b & c" is "(a | b) & c"); "!" takes the
// nearest inner term ("! a | b" is "(!a) | b"). Parentheses hold only inner terms: "(a b)" and
// "(a, b)" are errors. Any syntax error leaves the code empty, and empty code never matches.
//
// The parser takes its tokens one at a time, as a generated LALR parser would: SBC_Parse with
// code SBC_END finishes the input and builds the code.
#pragma once

#include <memory>

#include "selectors/selectorbytecode_run.hpp"
#include "selectors/selectorbytecode_tokenizer.hpp"

namespace vx {

struct SBCParser;

// What a finished parse produced: the code, empty after a syntax error.
struct SBCParseResult {
    sbc_code code;
    bool failed = false;
};

void SBC_ParseFree(SBCParser* parser);
struct SBCParserFree {
    void operator()(SBCParser* parser) const { SBC_ParseFree(parser); }
};
using SBCParserPtr = std::unique_ptr<SBCParser, SBCParserFree>;

SBCParserPtr SBC_ParseAlloc();
// Feeds one token; a SCOPE token carries its scope. The end token fills result.
void SBC_Parse(SBCParser* parser, SBCTokenCode code, VXScope scope, SBCParseResult* result);

}  // namespace vx
