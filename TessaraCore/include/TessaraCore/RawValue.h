#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <type_traits>

/// The text form of enumerations: one mechanism for all that are stored, printed or listed.
///
/// An enumeration takes part by a specialisation of `rawValues` that names its enumerators in the
/// order of their declaration, which must count up from 0. Enumerations without a text form stay
/// plain:
///
///     enum class Fruit : std::uint8_t { apple, pear };
///     template <>
///     inline constexpr auto rawValues<Fruit> = std::to_array<std::string_view>({"apple", "pear"});
///
/// The texts are for documents and output, and never translated; what a user reads is made
/// elsewhere. Everything here can be had at compile time, and nothing allocates.
namespace tessara {

/// The names of the enumerators of `E`, in the order of declaration.
template <typename E>
inline constexpr std::array<std::string_view, 0> rawValues{};

/// An enumeration that takes part.
template <typename E>
concept RawRepresentable = std::is_enum_v<E> && (rawValues<E>.size() > 0);

/// All enumerators of `E`, in the order of declaration; to list them, or to go through them.
template <RawRepresentable E>
inline constexpr auto allCases = [] {
    std::array<E, rawValues<E>.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = static_cast<E>(i);
    return cases;
}();

/// The stored and printed form of an enumerator. `value` is one that was declared.
template <RawRepresentable E>
[[nodiscard]] constexpr std::string_view rawValue(E value) {
    return rawValues<E>[static_cast<std::size_t>(value)];
}

/// The enumerator that `text` names, or nothing when it names none. Letter case matters.
template <RawRepresentable E>
[[nodiscard]] constexpr std::optional<E> fromRawValue(std::string_view text) {
    for (E value : allCases<E>) {
        if (rawValue(value) == text) return value;
    }
    return std::nullopt;
}

}  // namespace tessara
