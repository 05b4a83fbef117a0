#include <gtest/gtest.h>

#include <string>

#include "selectors/selectorbytecode_tokenizer.hpp"

namespace vx {
namespace {

// Tokens written compactly: operators as themselves, "_" for MINUS, scopes in brackets.
std::string tokensOf(std::string_view text) {
    std::string out;
    for (const SBCToken& token : SBCTokenize(text)) {
        switch (token.code) {
        case SBC_MINUS: out += '_'; break;
        case SBC_SCOPE: out += "[" + std::string(token.text) + "]"; break;
        default: out += token.text;
        }
    }
    return out;
}

TEST(SelectorTokenizer, OperatorsScopesAndBlanks) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"source.js string", "[source.js][string]"},
        {"(a|b)&!c*,d", "([a]|[b])&![c]*,[d]"},
        {" \t\n\v\f\ra\r\n", "[a]"},
        {"", ""},
        {"x.Y\xc3\xa9", "[x.Y\xc3\xa9]"},
        {std::string_view("a b\0c", 5), "[a][b]"},  // the text ends at a NUL byte
    };
    for (auto [text, want] : cases) EXPECT_EQ(tokensOf(text), want) << text;
}

TEST(SelectorTokenizer, MinusIsAnOperatorOnlyBetweenBlanks) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"meta.tag-name", "[meta.tag-name]"},
        {"a - b", "[a]_[b]"},
        {"a\t-\nb", "[a]_[b]"},
        {"a -b", "[a][-b]"},
        {"a- b", "[a-][b]"},
        {"-a", "[-a]"},
        {"a --", "[a][--]"},
        {"a -", "[a][-]"},
        {"a - ", "[a]_"},  // a MINUS with nothing after it; the parser rejects it
    };
    for (auto [text, want] : cases) EXPECT_EQ(tokensOf(text), want) << text;
}

TEST(SelectorTokenizer, MinusGluedBeforeBlankOrOperatorStopsTheInput) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"- a", ""},          // no blank before it
        {"a -, b", "[a]"},
        {"a -| b", "[a]"},
        {"a -&b", "[a]"},
        {"a -!b", "[a]"},
        {"a -*", "[a]"},
        {"a (-)", "[a]("},
        {"(a)- b", "([a])"},
        {"a -(b)", "[a]"},
    };
    for (auto [text, want] : cases) EXPECT_EQ(tokensOf(text), want) << text;
}

}  // namespace
}  // namespace vx
