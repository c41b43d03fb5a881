#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TessaraCore/OptionSet.h"
#include "TessaraCore/RawValue.h"

namespace tessara {

/// The axis that a wheel event moves along. One event has one axis; a device that turns both wheels
/// at once sends two events. For a choice of axes there is `ScrollAxes`.
enum class ScrollAxis : std::uint8_t {
    /// The main wheel: pages go up and down.
    vertical,
    /// The wheel tilted or turned sideways: pages go left and right.
    horizontal
};

/// The stored and printed names of the axes.
template <>
inline constexpr auto rawValues<ScrollAxis> =
    std::to_array<std::string_view>({"vertical", "horizontal"});

/// A choice of axes. It may be empty, and a stored one may carry bits without a meaning, which are
/// kept.
///
/// Its stored form is the number of its bits, 0 to 255.
class ScrollAxes : public OptionSet<ScrollAxes, std::uint8_t> {
  public:
    using OptionSet::OptionSet;

    static const ScrollAxes vertical;    ///< bit 0, the number 1
    static const ScrollAxes horizontal;  ///< bit 1, the number 2
    static const ScrollAxes both;        ///< the two together, the number 3

    /// The set of just `axis`.
    constexpr explicit ScrollAxes(ScrollAxis axis);

    using OptionSet::contains;
    /// Whether the one bit of `axis` is set, whatever the other bits say.
    [[nodiscard]] constexpr bool contains(ScrollAxis axis) const {
        return contains(ScrollAxes(axis));
    }
};

inline constexpr ScrollAxes ScrollAxes::vertical{std::uint8_t{1}};
inline constexpr ScrollAxes ScrollAxes::horizontal{std::uint8_t{2}};
inline constexpr ScrollAxes ScrollAxes::both{std::uint8_t{3}};

constexpr ScrollAxes::ScrollAxes(ScrollAxis axis)
    : ScrollAxes(axis == ScrollAxis::horizontal ? horizontal : vertical) {}

}  // namespace tessara
