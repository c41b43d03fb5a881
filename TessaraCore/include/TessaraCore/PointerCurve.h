#pragma once

#include <variant>

#include "TessaraCore/PointerDelta.h"

namespace tessara {

/// The gain does not depend on speed.
struct AccelerationOff {
    bool operator==(const AccelerationOff&) const = default;
};

/// The gain grows as a power of the speed beyond a threshold.
struct AccelerationCurve {
    /// The power; 0 and below mean no acceleration.
    double exponent = 0;
    /// The speed at which the rise begins.
    double thresholdCountsPerSecond = 0;
    /// The greatest factor on top of the sensitivity; below 1 acts as 1.
    double maxGain = 0;

    bool operator==(const AccelerationCurve&) const = default;
};

using PointerAcceleration = std::variant<AccelerationOff, AccelerationCurve>;

/// The transfer function of the pointer: from counts of the sensor to the motion of the cursor, in
/// fractions of pixels. `PointerAccumulator` makes whole pixels of them.
///
/// The numbers are taken as they come; what a bad one does is said with each. No operation
/// allocates.
struct PointerCurve {
    /// The gain of slow motion; negative values act as 0.
    double sensitivity = 1;
    PointerAcceleration acceleration = AccelerationOff{};

    /// One pixel for each count.
    static const PointerCurve linear;
    /// The factory curve: from 800 counts per second on the gain grows with the speed, up to 6.
    static const PointerCurve desktop;

    /// The factor at a speed in counts per second. It is flat up to the threshold, joins the rise
    /// there without a step, and never exceeds sensitivity times maxGain.
    [[nodiscard]] double gain(double countsPerSecond) const;

    /// The motion of the cursor for a motion of the mouse that took `intervalMillis`. One gain,
    /// that of the speed of the vector, serves both axes, so that the direction stays. An interval
    /// of 0 or less gets the gain of slow motion.
    [[nodiscard]] PointerDelta apply(const PointerDelta& delta, double intervalMillis) const;

    bool operator==(const PointerCurve&) const = default;
};

inline constexpr PointerCurve PointerCurve::linear{.sensitivity = 1,
                                                   .acceleration = AccelerationOff{}};
inline constexpr PointerCurve PointerCurve::desktop{
    .sensitivity = 1,
    .acceleration =
        AccelerationCurve{.exponent = 1, .thresholdCountsPerSecond = 800, .maxGain = 6}};

}  // namespace tessara
