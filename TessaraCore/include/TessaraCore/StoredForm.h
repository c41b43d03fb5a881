#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// How a type says what it is stored as.
///
/// A structure names its fields and a tagged union its cases, once, and both directions follow that
/// one list. A case is a structure with stored fields of its own, none for a case without a
/// payload:
///
///     template <>
///     inline constexpr auto storedFields<Rule> =
///         std::tuple(StoredField{"id", &Rule::id}, StoredField{"priority", &Rule::priority});
///
///     template <>
///     inline constexpr auto storedCases<Action> =
///         std::to_array<std::string_view>({"passThrough", "hold"});
///
/// Booleans, integers, doubles, strings, vectors, enumerations with raw values, option sets and
/// optional fields have a form already.
namespace tessara {

/// One field of a structure and the key it is stored under.
template <typename Structure, typename Member>
struct StoredField {
    /// Not empty, and different from the keys of the other fields.
    std::string_view key;
    Member Structure::* member;
};

/// The fields of a structure: a std::tuple of StoredField, in any order.
template <typename T>
inline constexpr std::nullptr_t storedFields = nullptr;

/// The cases of a variant by name, in the order of its alternatives.
template <typename T>
inline constexpr std::array<std::string_view, 0> storedCases{};

namespace json {

template <typename T>
concept HasFields = !std::same_as<std::remove_cvref_t<decltype(storedFields<T>)>, std::nullptr_t>;
template <typename T>
concept HasCases = !storedCases<T>.empty();

template <typename T>
inline constexpr bool isOptional = false;
template <typename T>
inline constexpr bool isOptional<std::optional<T>> = true;

template <typename T>
inline constexpr bool isVector = false;
template <typename T>
inline constexpr bool isVector<std::vector<T>> = true;

/// The way from the outermost value to the one at hand. The links lie on the stack and become text
/// only when there is an error to report.
struct Path {
    const Path* parent = nullptr;
    std::string_view key = {};
    std::size_t index = 0;  // of an element, when there is no key

    [[nodiscard]] Path member(std::string_view name) const { return {this, name, 0}; }
    [[nodiscard]] Path element(std::size_t position) const { return {this, {}, position}; }
    /// "profiles[0].scroll.easing"; empty for the outermost value.
    [[nodiscard]] std::string description() const;
};

/// Leaves a decoding or encoding; caught at its boundary and never seen outside.
struct Failure {
    std::string path;
    std::string reason;
};

[[noreturn]] void fail(const Path& path, std::string reason);

}  // namespace json

}  // namespace tessara
