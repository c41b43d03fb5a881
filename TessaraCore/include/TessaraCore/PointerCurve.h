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
    /// The speed at which the rise begins. 0 and below act as the smallest threshold there is,
    /// 2 to the power -52: whatever moves is beyond it.
    double thresholdCountsPerSecond = 0;
    /// The greatest factor on top of the sensitivity; below 1 acts as 1, so that a curve never
    /// slows the pointer down.
    double maxGain = 0;

    bool operator==(const AccelerationCurve&) const = default;
};

/// Whether and how the gain depends on speed. Stored as an object with the one key "off" or
/// "curve".
using PointerAcceleration = std::variant<AccelerationOff, AccelerationCurve>;

/// The transfer function of the pointer: from counts of the sensor to the motion of the cursor, in
/// fractions of pixels. `PointerAccumulator` makes whole pixels of them.
///
/// The gain at a speed v, in counts per second, with the threshold t, is
///
///     sensitivity                                           up to t, and without acceleration
///     sensitivity * clamp((v / t) ^ exponent, 1, maxGain)   beyond it
///
/// The numbers are taken as they come; what a bad one does is said with each. No operation
/// allocates, and any thread may read a curve that nobody changes.
struct PointerCurve {
    /// The gain of slow motion in pixels per count; negative values act as 0, and so never turn the
    /// motion round.
    double sensitivity = 1;
    PointerAcceleration acceleration = AccelerationOff{};

    /// One pixel for each count at every speed.
    static const PointerCurve linear;
    /// The factory curve: from 800 counts per second on the gain grows with the speed, up to 6. At
    /// 1600 counts per second it is 2, and from 4800 on it is 6.
    static const PointerCurve desktop;

    /// The factor at a speed in counts per second. It is flat up to the threshold, joins the rise
    /// there without a step, and never exceeds sensitivity times maxGain. Up to the threshold it
    /// takes no power function.
    [[nodiscard]] double gain(double countsPerSecond) const;

    /// The motion of the cursor for a motion of the mouse that took `intervalMillis`. One gain,
    /// that of the speed of the vector, serves both axes, so that the direction stays. An interval
    /// of 0 or less gets the gain of slow motion, not a guess at a speed.
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
