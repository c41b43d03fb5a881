#pragma once

namespace tessara {

/// A motion in the plane: sensor counts on the way in, pixels on the way out.
struct PointerDelta {
    double dx = 0;
    double dy = 0;

    static const PointerDelta zero;

    /// The length of the motion.
    [[nodiscard]] double magnitude() const;
    [[nodiscard]] constexpr bool isZero() const { return dx == 0 && dy == 0; }

    bool operator==(const PointerDelta&) const = default;
};

inline constexpr PointerDelta PointerDelta::zero{};

}  // namespace tessara
