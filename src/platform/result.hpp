// The outcome of an operation that can fail for reasons outside the program: the value it made,
// or an Error saying why not, in words fit to show a user or write to a log.
//
//     Result<Config> readConfig(const std::string& path) {
//         std::string text;
//         if (!readFile(path, text)) return Error{"cannot read " + path};
//         return parseConfig(text);   // a Config, or the parser's own Error passed on
//     }
//     if (auto config = readConfig(path)) use(*config); else report(config.error().message);
//
// Result<void> is the form for operations that make nothing. Asking a failed Result for its value
// (or a good one for its error) is a programmer error and aborts. Shaped after std::expected,
// which the compilers we build with do not have in C++20.
#pragma once

#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include "platform/log.hpp"

namespace vx {

struct Error {
    std::string message;

    friend bool operator==(const Error&, const Error&) = default;
};

template <class T>
class [[nodiscard]] Result {
    static_assert(!std::is_same_v<std::remove_cv_t<T>, Error>, "a Result holds a value or an Error, not both kinds");
    static_assert(!std::is_reference_v<T>, "a Result holds its value");

public:
    using ValueType = T;

    Result(const T& value) : m_content(std::in_place_index<0>, value) {}
    Result(T&& value) : m_content(std::in_place_index<0>, std::move(value)) {}
    // Anything a T can be made from, such as a string literal for Result<std::string>.
    template <class U>
        requires(std::is_constructible_v<T, U&&> && !std::is_same_v<std::remove_cvref_t<U>, T> &&
                 !std::is_same_v<std::remove_cvref_t<U>, Error> && !std::is_same_v<std::remove_cvref_t<U>, Result>)
    Result(U&& value) : m_content(std::in_place_index<0>, std::forward<U>(value)) {}
    Result(Error error) : m_content(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return m_content.index() == 0; }
    explicit operator bool() const { return ok(); }

    T& value() & { return std::get<0>(checkedValue()); }
    const T& value() const& { return std::get<0>(checkedValue()); }
    T&& value() && { return std::move(std::get<0>(checkedValue())); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    template <class U>
    T valueOr(U&& fallback) const& {
        return ok() ? std::get<0>(m_content) : static_cast<T>(std::forward<U>(fallback));
    }

    const Error& error() const {
        VX_ASSERT(!ok());
        return std::get<1>(m_content);
    }

    friend bool operator==(const Result&, const Result&) = default;

private:
    auto& checkedValue() {
        VX_ASSERT(ok());
        return m_content;
    }
    const auto& checkedValue() const {
        VX_ASSERT(ok());
        return m_content;
    }

    std::variant<T, Error> m_content;
};

template <>
class [[nodiscard]] Result<void> {
public:
    using ValueType = void;

    Result() = default;
    Result(Error error) : m_error(std::move(error)), m_failed(true) {}

    bool ok() const { return !m_failed; }
    explicit operator bool() const { return ok(); }

    const Error& error() const {
        VX_ASSERT(m_failed);
        return m_error;
    }

    friend bool operator==(const Result&, const Result&) = default;

private:
    Error m_error;
    bool m_failed = false;
};

// What a Result<void> operation returns when it succeeds: `return success();`.
inline Result<void> success() { return {}; }

}  // namespace vx
