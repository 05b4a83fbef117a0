#include "platform/result.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vx {
namespace {

Result<int> parseDigit(char c) {
    if (c < '0' || c > '9') return Error{std::string("not a digit: ") + c};
    return c - '0';
}

Result<void> requireEven(int n) {
    if (n % 2) return Error{"odd"};
    return success();
}

TEST(Result, CarriesTheValueOrTheError) {
    const auto seven = parseDigit('7');
    ASSERT_TRUE(seven);
    EXPECT_TRUE(seven.ok());
    EXPECT_EQ(*seven, 7);
    EXPECT_EQ(seven.valueOr(-1), 7);

    const auto letter = parseDigit('x');
    ASSERT_FALSE(letter);
    EXPECT_EQ(letter.error().message, "not a digit: x");
    EXPECT_EQ(letter.valueOr(-1), -1);

    EXPECT_EQ(parseDigit('3'), Result<int>(3));
    EXPECT_NE(parseDigit('3'), parseDigit('4'));
    EXPECT_EQ(parseDigit('a'), Result<int>(Error{"not a digit: a"}));

    EXPECT_TRUE(requireEven(4));
    EXPECT_EQ(requireEven(5).error(), Error{"odd"});
    EXPECT_EQ(requireEven(6), success());
}

TEST(Result, HoldsMoveOnlyValuesAndConvertsWhatMakesThem) {
    Result<std::unique_ptr<int>> owned = std::make_unique<int>(5);
    ASSERT_TRUE(owned);
    std::unique_ptr<int> taken = std::move(owned).value();
    EXPECT_EQ(*taken, 5);

    Result<std::string> text = "literal";  // made from what makes a std::string
    EXPECT_EQ(text->size(), 7u);
    text.value() += "!";
    EXPECT_EQ(*text, "literal!");
    Result<std::string> failed = Error{"gone"};
    EXPECT_EQ(failed.valueOr("fallback"), "fallback");
}

TEST(ResultDeathTest, AskingForTheWrongSideAborts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH((void)parseDigit('x').value(), "ok\\(\\)");
    EXPECT_DEATH((void)parseDigit('1').error(), "ok\\(\\)");
    EXPECT_DEATH((void)requireEven(2).error(), "m_failed");
}

}  // namespace
}  // namespace vx
