#pragma once

#include <optional>

#include "TessaraCore/Easing.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {

/// How the wheel of one profile behaves.
///
/// The numbers are the user's own and are kept as they stand, out of range or not; whoever uses
/// them takes `sanitized()`. The range behind each field is the one applied there, both ends
/// included. What the settings do is told by `ScrollTransformer`.
///
/// The stored form is an object with the names of the fields as its keys, all required but
/// `activationModifiers`.
struct ScrollSettings {
    /// False hands every wheel event on as it is.
    bool isEnabled = true;
    /// The axes that glide; an event of another axis is handed on as it is.
    ScrollAxes enabledAxes = ScrollAxes::both;
    /// When set and not empty, only events with these modifiers held glide. More may be held.
    std::optional<ModifierFlags> activationModifiers = std::nullopt;
    /// The length of one glide, 1 to 5000 ms.
    double durationMillis = 250;
    /// How the way of a glide is spread over its time.
    Easing easing = Easing::easeOut;
    /// The pixels of one line of the wheel without acceleration, 0 to 10000.
    double pixelsPerDetent = 50;
    /// The time between two steps of a glide, 1 ms to the length of the glide.
    double frameIntervalMillis = 8;
    /// The greatest way of one glide in either direction, 0 to 1000000 pixels. What goes beyond is
    /// lost.
    double maxInFlightPixels = 4000;
    /// Scrolls the other way round. It turns what comes out and does not touch what counts as a
    /// change of direction.
    bool isInverted = false;
    /// Whether clicks in quick succession, a streak, count for more: each is multiplied by 1 and
    /// the gain for every click of the streak before it, up to the greatest multiplier.
    bool accelerationEnabled = true;
    /// The longest gap between two clicks of a streak, 0 ms and up without a limit.
    double accelerationWindowMillis = 140;
    /// What each further click of a streak adds to the multiplier, 0 to 100.
    double accelerationGain = 1.2;
    /// The greatest multiplier, 1 to 100.
    double maxAccelerationMultiplier = 6;

    /// The defaults, switched off.
    static const ScrollSettings passThrough;

    /// A copy with every number brought into its range, the frame interval by the duration that has
    /// been brought into its own. Everything else stays. It does not allocate, and costs little
    /// enough to be called for each event.
    [[nodiscard]] ScrollSettings sanitized() const;

    bool operator==(const ScrollSettings&) const = default;
};

inline constexpr ScrollSettings ScrollSettings::passThrough{.isEnabled = false};

}  // namespace tessara
