// The order of the symbol panels' rows for what is typed.
#include <gtest/gtest.h>

#include "app/editor/symbol_panel.hpp"

namespace vx::editor {
namespace {

std::vector<std::string> namesRanked(const std::string& query, const std::vector<std::string>& names) {
    std::vector<VXSymbol> symbols;
    for (const auto& name : names) {
        VXSymbol symbol;
        symbol.name = name;
        symbols.push_back(symbol);
    }
    std::vector<std::string> out;
    for (const auto& symbol : rankSymbols(query, std::move(symbols))) out.push_back(symbol.name);
    return out;
}

TEST(SymbolRanking, TheSameNameInTheSameCaseFirstThenPrefixesThenTheRest) {
    EXPECT_EQ(namesRanked("foo", {"barfoo", "Foo", "bar", "foobar", "foo", "f_o_o"}),
              (std::vector<std::string>{"foo", "Foo", "foobar", "barfoo", "f_o_o"}));  // "bar" lacks the letters
    // Equal scores (one case differs in each) go in plain order.
    EXPECT_EQ(namesRanked("gS", {"getString", "gs", "GS"}), (std::vector<std::string>{"GS", "gs", "getString"}));
    EXPECT_EQ(namesRanked("", {"b", "a"}), (std::vector<std::string>{"b", "a"}));  // as given
}

}  // namespace
}  // namespace vx::editor
