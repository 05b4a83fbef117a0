// The snippet grammar, turned into an LALR(1) parser by lemon at build time.
//
// A snippet is text with constructs "%{" ... "}". Inside a construct comes a number or a constant,
// then filters: "/pattern/replacement/options" or ":" (or "=") and a constant. A constant is a
// `shell command`, a "quoted string" (which may hold further constructs) or an identifier.
//
// The grammar is ambiguous in three places, and each ambiguity is settled in favour of shifting:
// a run of text may end one verbatim list or extend it (the text is the same either way), and
// after a regex's replacement a ":" or "/" continues the replacement rather than starting the
// next filter, so in %{1/a/b:"x"} the replacement is b:"x". Every token shares one right-
// associative precedence level so that lemon resolves those conflicts as shifts and reports
// none; the markers [CHAR] give the same precedence to the rules that end without a token.

%include {
#include <cassert>
#include <cstdlib>

#include "snippets/snippet_syntax.hpp"

using vx::SnippetToken;
using vx::TextContext;
using namespace vx::syntax;
}

%name VXNewSnippet_Parse
%token_prefix SNIPPET_TOKEN_
%token_type { vx::SnippetToken }
%extra_argument { vx::syntax::ParseState* state }
%start_symbol main

// Nesting deeper than this fails the parse instead of growing without bound.
%stack_size 1000
%stack_overflow { state->failed = true; }
%syntax_error { state->failed = true; }
%parse_failure { state->failed = true; }

// Declared first so that the token codes are 1..12 in this order (the tokenizer's numbers).
%token OR_ELSE PERCENT_LCURLY RCURLY NUMERIC SHELL QUOTE IDENT SLASH ESCAPED_QUOTE ESCAPED_BACKSLASH ESCAPED_SLASH CHAR.
%right OR_ELSE PERCENT_LCURLY RCURLY NUMERIC SHELL QUOTE IDENT SLASH ESCAPED_QUOTE ESCAPED_BACKSLASH ESCAPED_SLASH CHAR.

%type superroot { Sequence* }
%type root { Sequence* }
%type nested_construct_super { Construct* }
%type nested_construct { Construct* }
%type construct_inner { Construct* }
%type filters { std::vector<const Filter*>* }
%type filter { Filter* }
%type constant { Constant* }
%type regex { Filter* }
%type regex_part { std::u16string* }
%type multi_regex_verbatim { std::u16string* }
%type regex_verbatim { SnippetToken }
%type multi_quoted_verbatim { std::u16string* }
%type quoted_verbatim { SnippetToken }
%type multi_unquoted_verbatim { std::u16string* }
%type unquoted_verbatim { SnippetToken }
%type verbatim { SnippetToken }

main ::= superroot(A). { state->result = A; }

superroot(A) ::= superroot(B) nested_construct_super(C). { A = B; A->appendConstruct(C); }
superroot(A) ::= superroot(B) multi_unquoted_verbatim(C). [CHAR] { A = B; A->appendText(*C); }
superroot(A) ::= . { A = state->arena.make<Sequence>(); }

root(A) ::= root(B) nested_construct(C). { A = B; A->appendConstruct(C); }
root(A) ::= root(B) multi_quoted_verbatim(C). [CHAR] { A = B; A->appendText(*C); }
root(A) ::= . { A = state->arena.make<Sequence>(); }

nested_construct_super(A) ::= PERCENT_LCURLY construct_inner(B) RCURLY. { A = B; }
nested_construct(A) ::= PERCENT_LCURLY construct_inner(B) RCURLY. { A = B; }

construct_inner(A) ::= NUMERIC(B) filters(C). {
    A = state->arena.make<Construct>();
    A->numbered = true;
    A->number = constructNumber(state->text(B));
    A->filters = std::move(*C);
}
construct_inner(A) ::= constant(B) filters(C). {
    A = state->arena.make<Construct>();
    A->constant = B;
    A->filters = std::move(*C);
}

filters(A) ::= filters(B) filter(C). { A = B; A->push_back(C); }
filters(A) ::= . { A = state->arena.make<std::vector<const Filter*>>(); }

filter(A) ::= regex(B). { A = B; }
filter(A) ::= OR_ELSE constant(B). {
    A = state->arena.make<Filter>();
    A->constant = B;
}

constant(A) ::= SHELL(B). {
    A = state->arena.make<Constant>();
    A->kind = Constant::Kind::Shell;
    A->text = vx::shellTokenScript(B, state->source);
}
constant(A) ::= QUOTE root(B) QUOTE. {
    A = state->arena.make<Constant>();
    A->kind = Constant::Kind::String;
    A->string = B;
}
constant(A) ::= IDENT(B). {
    A = state->arena.make<Constant>();
    A->kind = Constant::Kind::Variable;
    A->text = state->text(B);
}

regex(A) ::= SLASH regex_part(B) SLASH regex_part(C). {
    A = state->arena.make<Filter>();
    A->isRegex = true;
    A->pattern = std::move(*B);
    A->replace = std::move(*C);
}
regex(A) ::= SLASH regex_part(B) SLASH regex_part(C) SLASH. {
    A = state->arena.make<Filter>();
    A->isRegex = true;
    A->pattern = std::move(*B);
    A->replace = std::move(*C);
}
regex(A) ::= SLASH regex_part(B) SLASH regex_part(C) SLASH IDENT(D). {
    A = state->arena.make<Filter>();
    A->isRegex = true;
    A->pattern = std::move(*B);
    A->replace = std::move(*C);
    A->options = state->text(D);
}

// Pattern and replacement may be empty: %{1/ //g} deletes the spaces.
regex_part(A) ::= multi_regex_verbatim(B). [CHAR] { A = B; }
regex_part(A) ::= . [CHAR] { A = state->arena.make<std::u16string>(); }

multi_regex_verbatim(A) ::= multi_regex_verbatim(B) regex_verbatim(C). { A = B; state->appendToken(A, C, TextContext::Regex); }
multi_regex_verbatim(A) ::= regex_verbatim(B). { A = state->arena.make<std::u16string>(); state->appendToken(A, B, TextContext::Regex); }

regex_verbatim(A) ::= ESCAPED_QUOTE(B). { A = B; }
regex_verbatim(A) ::= ESCAPED_BACKSLASH(B). { A = B; }
regex_verbatim(A) ::= verbatim(B). { A = B; }
regex_verbatim(A) ::= QUOTE(B). { A = B; }
regex_verbatim(A) ::= ESCAPED_SLASH(B). { A = B; }

multi_quoted_verbatim(A) ::= multi_quoted_verbatim(B) quoted_verbatim(C). { A = B; state->appendToken(A, C, TextContext::Quoted); }
multi_quoted_verbatim(A) ::= quoted_verbatim(B). { A = state->arena.make<std::u16string>(); state->appendToken(A, B, TextContext::Quoted); }

quoted_verbatim(A) ::= ESCAPED_QUOTE(B). { A = B; }
quoted_verbatim(A) ::= ESCAPED_BACKSLASH(B). { A = B; }
quoted_verbatim(A) ::= verbatim(B). { A = B; }
quoted_verbatim(A) ::= SLASH(B). { A = B; }
quoted_verbatim(A) ::= ESCAPED_SLASH(B). { A = B; }
quoted_verbatim(A) ::= RCURLY(B). { A = B; }

multi_unquoted_verbatim(A) ::= multi_unquoted_verbatim(B) unquoted_verbatim(C). { A = B; state->appendToken(A, C, TextContext::TopLevel); }
multi_unquoted_verbatim(A) ::= unquoted_verbatim(B). { A = state->arena.make<std::u16string>(); state->appendToken(A, B, TextContext::TopLevel); }

unquoted_verbatim(A) ::= ESCAPED_QUOTE(B). { A = B; }
unquoted_verbatim(A) ::= ESCAPED_BACKSLASH(B). { A = B; }
unquoted_verbatim(A) ::= verbatim(B). { A = B; }
unquoted_verbatim(A) ::= QUOTE(B). { A = B; }
unquoted_verbatim(A) ::= SLASH(B). { A = B; }
unquoted_verbatim(A) ::= ESCAPED_SLASH(B). { A = B; }
unquoted_verbatim(A) ::= RCURLY(B). { A = B; }

verbatim(A) ::= IDENT(B). { A = B; }
verbatim(A) ::= NUMERIC(B). { A = B; }
verbatim(A) ::= SHELL(B). { A = B; }
verbatim(A) ::= OR_ELSE(B). { A = B; }
verbatim(A) ::= CHAR(B). { A = B; }
