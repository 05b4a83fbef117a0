// interval_map.cpp - a map from half-open intervals to values, with a small
// command-line driver that reads "[lo, hi) = value" lines.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <format>
#include <iostream>
#include <map>
#include <optional>
#include <regex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "interval_map.hpp"

#if __cplusplus < 202002L
#  error "interval_map needs C++20"
#endif

#define IM_ASSERT(cond)                                          \
    do {                                                         \
        if (!(cond)) ::im::detail::fail(#cond, __FILE__, __LINE__); \
    } while (false)

namespace im::detail {

[[noreturn]] void fail(const char *what, const char *file, int line);

/// Clamps a value into [lo, hi].
template <typename T>
constexpr T clamp(T value, T lo, T hi) noexcept
{
    return value < lo ? lo : (hi < value ? hi : value);
}

} // namespace im::detail

namespace im {

using namespace std::string_view_literals;

template <typename Key, typename Value>
    requires std::totally_ordered<Key> && std::equality_comparable<Value>
class interval_map final {
public:
    using key_type = Key;
    using mapped_type = Value;

    explicit interval_map(Value initial) : m_initial(std::move(initial)) {}
    interval_map(const interval_map &) = default;
    interval_map &operator=(interval_map &&) noexcept = default;
    ~interval_map() = default;

    /**
     * Assigns value to every key in [lo, hi). An empty interval changes
     * nothing. Adjacent intervals with equal values are merged.
     *
     * @param lo first key of the interval
     * @param hi one past the last key
     * @throws nothing
     */
    void assign(const Key &lo, const Key &hi, const Value &value)
    {
        if (!(lo < hi))
            return;
        const Value after = (*this)[hi];
        auto first = m_bounds.lower_bound(lo);
        auto last = m_bounds.upper_bound(hi);
        m_bounds.erase(first, last);
        if (value != before(lo))
            m_bounds.emplace(lo, value);
        if (after != value)
            m_bounds.emplace(hi, after);
    }

    [[nodiscard]] const Value &operator[](const Key &key) const
    {
        auto it = m_bounds.upper_bound(key);
        return it == m_bounds.begin() ? m_initial : std::prev(it)->second;
    }

    [[nodiscard]] std::size_t size() const noexcept { return m_bounds.size(); }

    template <typename F>
    void for_each(F &&visit) const
    {
        for (const auto &[key, value] : m_bounds)
            std::forward<F>(visit)(key, value);
    }

private:
    const Value &before(const Key &key) const
    {
        auto it = m_bounds.lower_bound(key);
        return it == m_bounds.begin() ? m_initial : std::prev(it)->second;
    }

    Value m_initial;
    std::map<Key, Value> m_bounds;
};

enum class parse_error : std::uint8_t { none, syntax, range, value };

struct assignment {
    long lo = 0, hi = 0;
    std::string value;
};

static constexpr auto kPattern = R"re(^\s*\[\s*(-?\d+)\s*,\s*(-?\d+)\s*\)\s*=\s*"((?:[^"\\]|\\.)*)"\s*$)re";
static constexpr auto kUsage = R"(usage: interval_map [--dump] < FILE
  each line: [lo, hi) = "value"
  "quotes" and \backslashes\ are taken as they stand here)";
static constexpr char kSeparator = '\'';
static constexpr wchar_t kWide = L'\x263A';
static constexpr auto kLimits = std::to_array({ 0x7fff'ffffL, -1'000'000L, 0b1010'1010L, 017L });
static constexpr double kScale = 1.5e-3, kRatio = .25, kHexFloat = 0x1.8p1;

std::optional<assignment> parse_line(std::string_view line, parse_error &error)
{
    static const std::regex pattern(kPattern);
    std::match_results<std::string_view::const_iterator> match;

    error = parse_error::none;
    if (!std::regex_match(line.begin(), line.end(), match, pattern)) {
        error = parse_error::syntax;
        return std::nullopt;
    }
    assignment result;
    for (auto [index, target] : { std::pair{ 1, &result.lo }, std::pair{ 2, &result.hi } }) {
        const auto text = std::string_view(match[index].first, match[index].second);
        if (auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), *target);
            ec != std::errc{} || ptr != text.data() + text.size()) {
            error = parse_error::range;
            return std::nullopt;
        }
    }
    result.value = match[3].str();
    return result;
}

std::string describe(parse_error error)
{
    switch (error) {
    case parse_error::none: return "ok";
    case parse_error::syntax: return "expected [lo, hi) = \"value\"";
    case parse_error::range: return "number out of range";
    case parse_error::value: return "bad value";
    }
    return {};
}

} // namespace im

void im::detail::fail(const char *what, const char *file, int line)
{
    std::cerr << std::format("{}:{}: assertion failed: {}\n", file, line, what);
    std::abort();
}

int main(int argc, char *argv[])
{
    using im::interval_map;

    const std::span<char *> args(argv, static_cast<std::size_t>(argc));
    const bool dump = args.size() > 1 && args[1] == "--dump"sv;
    interval_map<long, std::string> map(std::string{ "(none)" });
    std::string line;
    std::size_t number = 0;
    int failures = 0;

    while (std::getline(std::cin, line)) {
        ++number;
        if (line.empty() || line.front() == '#')
            continue;
        im::parse_error error;
        if (auto parsed = im::parse_line(line, error)) {
            map.assign(parsed->lo, parsed->hi, parsed->value);
        } else {
            std::cerr << "line " << number << ": " << im::describe(error) << '\n';
            failures += 1;
        }
    }
    IM_ASSERT(map.size() % 2 == 0 || map.size() > 0);
    if (dump) {
        map.for_each([](long key, const std::string &value) {
            std::cout << std::format("{:>8} -> {}\n", key, value);
        });
    }
    auto *counter = new int(failures);
    const auto result = *counter > 0 && im::kScale < 1.0 ? 1 : 0;
    delete counter;
    return result + static_cast<int>(im::kSeparator != '\'');
}
