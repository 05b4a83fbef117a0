#include "platform/units.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>
#include <unordered_set>

namespace vx {
namespace {

// What must not compile is checked here, at compile time: the point of the types.
template <class A, class B>
concept Addable = requires(A a, B b) { a + b; };
template <class A, class B>
concept Comparable = requires(A a, B b) { a == b; };

static_assert(Addable<Utf16Offset, Utf16Offset> && Addable<LineNumber, LineNumber>);
static_assert(!Addable<Utf16Offset, LineNumber> && !Addable<LineNumber, DisplayColumn>);
static_assert(!Addable<Utf16Offset, uint64_t> && !Addable<int, DisplayColumn>);
static_assert(!Comparable<Utf16Offset, DisplayColumn> && !Comparable<LineNumber, int>);
static_assert(!std::is_convertible_v<uint64_t, Utf16Offset> && !std::is_convertible_v<LineNumber, uint64_t>);
static_assert(std::is_constructible_v<Utf16Offset, uint64_t> && std::is_constructible_v<uint64_t, LineNumber>);
static_assert(std::is_trivially_copyable_v<Utf16Offset> && sizeof(DisplayColumn) == sizeof(uint64_t));
static_assert(12_u16 - 5_u16 == Utf16Offset(7) && 9_col % 4_col == 1_col && 3_line * 2_line == 6_line);

TEST(Units, ArithmeticAndOrderFollowTheIntegers) {
    Utf16Offset offset{10};
    offset += 5_u16;
    EXPECT_EQ(offset, 15_u16);
    offset -= 20_u16;  // wraps as the unsigned integer it stands for
    EXPECT_EQ(offset.value(), uint64_t(-5));

    LineNumber line = 0_line;
    EXPECT_EQ(line++, 0_line);
    EXPECT_EQ(++line, 2_line);
    EXPECT_EQ(--line, 1_line);
    EXPECT_FALSE(LineNumber{});
    EXPECT_TRUE(line);

    DisplayColumn column = 13_col;
    const DisplayColumn tab = 4_col;
    EXPECT_EQ(column - column % tab + tab, 16_col);  // the next tab stop
    column /= 2_col;
    EXPECT_EQ(column, 6_col);
    column *= 3_col;
    EXPECT_EQ(column, 18_col);
    column %= 5_col;
    EXPECT_EQ(column, 3_col);

    EXPECT_LT(2_line, 10_line);
    EXPECT_GE(3_col, 3_col);
    EXPECT_NE(1_u16, 2_u16);
    EXPECT_EQ(static_cast<uint64_t>(42_u16), 42u);
}

TEST(Units, HashAndPrintAsTheirNumbers) {
    std::unordered_set<LineNumber> lines{1_line, 5_line, 1_line};
    EXPECT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines.contains(5_line));
    EXPECT_EQ(std::hash<Utf16Offset>{}(7_u16), std::hash<uint64_t>{}(7));

    std::ostringstream out;
    out << 3_line << ':' << 12_col;
    EXPECT_EQ(out.str(), "3:12");
}

}  // namespace
}  // namespace vx
