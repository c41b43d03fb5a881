#pragma once

namespace tessara {

/// A motion in the plane: sensor counts on the way in, pixels on the way out. For whole pixels
/// there is `PointerPixels`.
struct PointerDelta {
    double dx = 0;  ///< positive to the right
    double dy = 0;  ///< positive downward

    /// No motion.
    static const PointerDelta zero;

    /// The length of the motion, √(dx² + dy²), in the unit of the components.
    [[nodiscard]] double magnitude() const;
    /// Whether both components are 0, of either sign.
    [[nodiscard]] constexpr bool isZero() const { return dx == 0 && dy == 0; }

    bool operator==(const PointerDelta&) const = default;
};

inline constexpr PointerDelta PointerDelta::zero{};

}  // namespace tessara
