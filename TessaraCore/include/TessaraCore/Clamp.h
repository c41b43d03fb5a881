#pragma once

#include <algorithm>
#include <concepts>

namespace tessara {

/// The larger of `value` and `lower`, then the smaller of that and `upper`.
///
/// Unlike std::clamp it has a result for crossed bounds, as numbers of the user's may be: the upper
/// one wins. A NaN comes out as it went in, for the checks on its way to an integer.
template <std::totally_ordered T>
[[nodiscard]] constexpr T clamp(const T& value, const T& lower, const T& upper) {
    return std::min(std::max(value, lower), upper);
}

}  // namespace tessara
