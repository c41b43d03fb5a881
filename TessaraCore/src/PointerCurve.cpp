#include "TessaraCore/PointerCurve.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TessaraCore/Clamp.h"

namespace tessara {

double PointerDelta::magnitude() const {
    return std::sqrt(dx * dx + dy * dy);
}

double PointerCurve::gain(double countsPerSecond) const {
    const double base = std::max(sensitivity, 0.0);
    const auto* curve = std::get_if<AccelerationCurve>(&acceleration);
    if (curve == nullptr) return base;

    const double threshold =
        std::max(curve->thresholdCountsPerSecond, std::numeric_limits<double>::epsilon());
    if (!(countsPerSecond > threshold) || curve->exponent <= 0) return base;
    const double rise = std::pow(countsPerSecond / threshold, curve->exponent);
    return base * clamp(rise, 1.0, std::max(curve->maxGain, 1.0));
}

PointerDelta PointerCurve::apply(const PointerDelta& delta, double intervalMillis) const {
    if (delta.isZero()) return PointerDelta::zero;
    // Without a usable interval there is no speed, and a guess at one would make the cursor jump.
    const bool hasSpeed =
        intervalMillis > 0 && !std::holds_alternative<AccelerationOff>(acceleration);
    const double factor =
        hasSpeed ? gain(delta.magnitude() / (intervalMillis / 1000)) : std::max(sensitivity, 0.0);
    return {.dx = delta.dx * factor, .dy = delta.dy * factor};
}

}  // namespace tessara
