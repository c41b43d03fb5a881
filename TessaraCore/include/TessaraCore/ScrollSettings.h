#pragma once

#include <optional>

#include "TessaraCore/Easing.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {

/// How the wheel of one profile behaves.
///
/// The numbers are the user's own and are kept as they stand, out of range or not; whoever uses
/// them takes `sanitized()`. The range behind each field is the one applied there.
struct ScrollSettings {
    /// False hands every wheel event on as it is.
    bool isEnabled = true;
    /// The axes that glide; an event of another axis is handed on.
    ScrollAxes enabledAxes = ScrollAxes::both;
    /// When set and not empty, only events with these modifiers held glide. More may be held.
    std::optional<ModifierFlags> activationModifiers = std::nullopt;
    /// The length of one glide, 1 to 5000 ms.
    double durationMillis = 250;
    Easing easing = Easing::easeOut;
    /// The pixels of one line of the wheel, 0 to 10000.
    double pixelsPerDetent = 50;
    /// The time between two steps of a glide, 1 ms to the length of the glide.
    double frameIntervalMillis = 8;
    /// The greatest way of one glide in either direction, 0 to 1000000 pixels. What goes beyond is
    /// lost.
    double maxInFlightPixels = 4000;
    /// Scrolls the other way round.
    bool isInverted = false;
    /// Whether clicks in quick succession count for more.
    bool accelerationEnabled = true;
    /// The longest gap between two clicks of a streak, 0 ms and up.
    double accelerationWindowMillis = 140;
    /// What each further click of a streak adds to the multiplier, 0 to 100.
    double accelerationGain = 1.2;
    /// The greatest multiplier, 1 to 100.
    double maxAccelerationMultiplier = 6;

    /// The defaults, switched off.
    static const ScrollSettings passThrough;

    /// A copy with every number brought into its range.
    [[nodiscard]] ScrollSettings sanitized() const;

    bool operator==(const ScrollSettings&) const = default;
};

inline constexpr ScrollSettings ScrollSettings::passThrough{.isEnabled = false};

}  // namespace tessara
