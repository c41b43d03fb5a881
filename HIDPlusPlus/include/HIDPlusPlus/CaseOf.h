#pragma once

#include <type_traits>
#include <variant>

namespace tessara {

template <typename T, typename Variant>
struct IsCaseOf : std::false_type {};

template <typename T, typename... Cases>
struct IsCaseOf<T, std::variant<Cases...>> : std::disjunction<std::is_same<T, Cases>...> {};

/// `T` is one of the alternatives of the variant, exactly and not by conversion.
template <typename T, typename Variant>
concept CaseOf = IsCaseOf<T, Variant>::value;

}  // namespace tessara
