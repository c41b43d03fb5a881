#pragma once

#include <concepts>
#include <cstdint>

#include "TessaraCore/Precondition.h"

/// Arithmetic that cannot go wrong in silence. An overflow, or a number that no integer can hold,
/// is a violated precondition and stops the process: a wrong count on the event path would move the
/// user's pointer or scroll position without anyone noticing why.
///
/// Not for numbers that come from outside, such as a document or a device. Those are tested against
/// their range by whoever reads them, and refused with words.
///
/// Every function can be called at compile time, where a result that does not fit is no constant
/// expression, and from any thread.
namespace tessara {

/// Every integer type; a boolean is none.
template <typename T>
concept CheckedInteger = std::integral<T> && !std::same_as<T, bool>;

/// The sum of two integers of one type; stops the process when that type cannot hold it.
template <CheckedInteger T>
[[nodiscard]] constexpr T checkedAdd(T a, T b) {
    T result{};
    TESSARA_PRECONDITION(!__builtin_add_overflow(a, b, &result), "integer overflow in an addition");
    return result;
}

/// `a` less `b`; stops the process when the type cannot hold it.
template <CheckedInteger T>
[[nodiscard]] constexpr T checkedSubtract(T a, T b) {
    T result{};
    TESSARA_PRECONDITION(!__builtin_sub_overflow(a, b, &result),
                         "integer overflow in a subtraction");
    return result;
}

/// The product of two integers; stops the process when the type cannot hold it.
template <CheckedInteger T>
[[nodiscard]] constexpr T checkedMultiply(T a, T b) {
    T result{};
    TESSARA_PRECONDITION(!__builtin_mul_overflow(a, b, &result),
                         "integer overflow in a multiplication");
    return result;
}

/// The absolute value; stops the process on the smallest value, whose opposite the type lacks.
template <CheckedInteger T>
    requires std::signed_integral<T>
[[nodiscard]] constexpr T checkedAbs(T value) {
    return value < 0 ? checkedSubtract(T{0}, value) : value;
}

/// The whole part of `value`, its fraction cut off toward zero: 1.9 gives 1, and -1.9 gives -1. To
/// round, round first. Stops the process when `value` is not finite or its whole part does not fit.
[[nodiscard]] constexpr std::int64_t checkedInt64(double value) {
    constexpr double limit = 0x1p63;  // one above the greatest value; itself exact as a double
    TESSARA_PRECONDITION(value >= -limit && value < limit,
                         "a number that is not finite or too large became an integer");
    return static_cast<std::int64_t>(value);
}

/// The same value in another integer type, wider or narrower, signed or not; stops the process when
/// that type cannot hold it.
template <CheckedInteger To, CheckedInteger From>
[[nodiscard]] constexpr To checkedCast(From value) {
    To result{};
    TESSARA_PRECONDITION(!__builtin_add_overflow(value, From{0}, &result),
                         "an integer does not fit the type it was moved to");
    return result;
}

}  // namespace tessara
