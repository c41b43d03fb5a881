#pragma once

#include <concepts>
#include <variant>

namespace tessara {

/// Whether a type is one of a variant's alternatives, told from the types alone. A constructor that
/// takes any case of a variant must ask this and not whether the variant can be constructed: the
/// answer to that may depend on the constructor itself.
template <typename T, typename Variant>
inline constexpr bool isCaseOf = false;

template <typename T, typename... Cases>
inline constexpr bool isCaseOf<T, std::variant<Cases...>> = (std::same_as<T, Cases> || ...);

template <typename T, typename Variant>
concept CaseOf = isCaseOf<T, Variant>;

}  // namespace tessara
