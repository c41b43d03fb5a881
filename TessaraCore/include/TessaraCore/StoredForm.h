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
/// A type that holds another needs no more than that the other's form is seen before its own is
/// used.
///
/// Forms that are there already, and what each is in JSON:
///
/// | type | form |
/// |---|---|
/// | bool | true or false |
/// | integers, option sets, `DeviceID` | a number without a fraction that fits the type |
/// | double | a number |
/// | std::string | a string |
/// | enumerations with raw values | a string, one of those |
/// | std::vector | an array |
/// | std::optional, as a field | the form of what it holds; the key is left out when it is empty |
///
/// How values travel along their forms is told in JSONDecoder.h and JSONEncoder.h.
namespace tessara {

/// One field of a structure and the key it is stored under.
template <typename Structure, typename Member>
struct StoredField {
    /// Not empty, and different from the keys of the other fields.
    std::string_view key;
    /// Where the value lies in the structure.
    Member Structure::* member;
};

/// The fields of a structure: a std::tuple of StoredField, in any order.
template <typename T>
inline constexpr std::nullptr_t storedFields = nullptr;

/// The cases of a variant by name, in the order of its alternatives.
template <typename T>
inline constexpr std::array<std::string_view, 0> storedCases{};

namespace json {

/// Which of the two kinds of form a type has been given; never both.
template <typename T>
concept HasFields = !std::same_as<std::remove_cvref_t<decltype(storedFields<T>)>, std::nullptr_t>;
template <typename T>
concept HasCases = !storedCases<T>.empty();

// The templates of the standard library that have a form, whatever they hold.

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
    const Path* parent = nullptr;  // null for the outermost value
    std::string_view key = {};     // of a member of an object
    std::size_t index = 0;         // of an element, when there is no key

    // One link further. It must not outlive this path and the text of `name`.

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

/// Throws the `Failure` of the value at `path`.
[[noreturn]] void fail(const Path& path, std::string reason);

}  // namespace json

}  // namespace tessara
