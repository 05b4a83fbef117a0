// Strong number types for the three counts editing code mixes up most easily: a position in
// UTF-16 code units, a line number and a display column on screen.
//
//     "naïve\tx" with tabs of four:   n a ï v e → → → x
//                                    Utf16Offset{6} is the x (the ï is one code unit),
//                                    DisplayColumn{8} is where it shows,
//                                    LineNumber{0} is its line (the user reads line 1).
//
// Each is a plain integer in a struct: no space or time is spent on it, but an offset does not
// silently become a column. Values of one unit add, subtract, multiply, divide and compare with
// each other; an integer becomes a unit only by saying so (Utf16Offset{n}, 3_u16), and a unit
// becomes an integer only by asking (value(), or an explicit cast). Arithmetic is that of the
// underlying unsigned integer, wrap-around included, as the untyped code it replaces had.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>

namespace vx {

template <class Unit, class Rep>
class StrongNumber {
public:
    using RepType = Rep;

    constexpr StrongNumber() = default;
    constexpr explicit StrongNumber(Rep value) : m_value(value) {}

    constexpr Rep value() const { return m_value; }
    constexpr explicit operator Rep() const { return m_value; }
    constexpr explicit operator bool() const { return m_value != 0; }

    friend constexpr Unit operator+(Unit a, Unit b) { return Unit(a.m_value + b.m_value); }
    friend constexpr Unit operator-(Unit a, Unit b) { return Unit(a.m_value - b.m_value); }
    friend constexpr Unit operator*(Unit a, Unit b) { return Unit(a.m_value * b.m_value); }
    friend constexpr Unit operator/(Unit a, Unit b) { return Unit(a.m_value / b.m_value); }
    friend constexpr Unit operator%(Unit a, Unit b) { return Unit(a.m_value % b.m_value); }

    constexpr Unit& operator+=(Unit other) { m_value += other.m_value; return self(); }
    constexpr Unit& operator-=(Unit other) { m_value -= other.m_value; return self(); }
    constexpr Unit& operator*=(Unit other) { m_value *= other.m_value; return self(); }
    constexpr Unit& operator/=(Unit other) { m_value /= other.m_value; return self(); }
    constexpr Unit& operator%=(Unit other) { m_value %= other.m_value; return self(); }

    constexpr Unit& operator++() { ++m_value; return self(); }
    constexpr Unit& operator--() { --m_value; return self(); }
    constexpr Unit operator++(int) { Unit old = self(); ++m_value; return old; }
    constexpr Unit operator--(int) { Unit old = self(); --m_value; return old; }

    // Only values of the same unit compare: Unit is the parameter type, not StrongNumber.
    friend constexpr bool operator==(Unit a, Unit b) { return a.m_value == b.m_value; }
    friend constexpr std::strong_ordering operator<=>(Unit a, Unit b) { return a.m_value <=> b.m_value; }

    friend std::ostream& operator<<(std::ostream& out, Unit n) { return out << n.m_value; }

private:
    constexpr Unit& self() { return static_cast<Unit&>(*this); }

    Rep m_value = 0;
};

// A position or a length in UTF-16 code units, as Range counts them.
struct Utf16Offset : StrongNumber<Utf16Offset, uint64_t> {
    using StrongNumber::StrongNumber;
};

// A zero-based line number, or a number of lines.
struct LineNumber : StrongNumber<LineNumber, uint64_t> {
    using StrongNumber::StrongNumber;
};

// A zero-based column on screen, or a width: a tab or a wide character takes several.
struct DisplayColumn : StrongNumber<DisplayColumn, uint64_t> {
    using StrongNumber::StrongNumber;
};

static_assert(sizeof(Utf16Offset) == sizeof(uint64_t) && sizeof(LineNumber) == sizeof(uint64_t) &&
              sizeof(DisplayColumn) == sizeof(uint64_t));

inline namespace literals {
constexpr Utf16Offset operator""_u16(unsigned long long n) { return Utf16Offset(n); }
constexpr LineNumber operator""_line(unsigned long long n) { return LineNumber(n); }
constexpr DisplayColumn operator""_col(unsigned long long n) { return DisplayColumn(n); }
}  // namespace literals

}  // namespace vx

// The units key hash maps as their integers do.
namespace vx {
template <class Unit>
struct UnitHash {
    size_t operator()(Unit n) const noexcept { return std::hash<typename Unit::RepType>{}(n.value()); }
};
}  // namespace vx
template <> struct std::hash<vx::Utf16Offset> : vx::UnitHash<vx::Utf16Offset> {};
template <> struct std::hash<vx::LineNumber> : vx::UnitHash<vx::LineNumber> {};
template <> struct std::hash<vx::DisplayColumn> : vx::UnitHash<vx::DisplayColumn> {};
