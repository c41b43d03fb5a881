#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TessaraCore/OptionSet.h"
#include "TessaraCore/RawValue.h"

namespace tessara {

/// The axis that a wheel event moves along.
enum class ScrollAxis : std::uint8_t { vertical, horizontal };

template <>
inline constexpr auto rawValues<ScrollAxis> =
    std::to_array<std::string_view>({"vertical", "horizontal"});

/// A choice of axes. It may be empty, and a stored one may carry bits without a meaning, which are
/// kept.
class ScrollAxes : public OptionSet<ScrollAxes, std::uint8_t> {
  public:
    using OptionSet::OptionSet;

    // The axes, and the two together.

    static const ScrollAxes vertical;
    static const ScrollAxes horizontal;
    static const ScrollAxes both;

    /// The set of just `axis`.
    constexpr explicit ScrollAxes(ScrollAxis axis);

    using OptionSet::contains;
    /// Whether the one bit of `axis` is set.
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
