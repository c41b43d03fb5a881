#include "TessaraCore/ScrollSettings.h"

#include <algorithm>

#include "TessaraCore/Clamp.h"

namespace tessara {

ScrollSettings ScrollSettings::sanitized() const {
    ScrollSettings result = *this;
    result.durationMillis = clamp(durationMillis, 1.0, 5000.0);
    result.pixelsPerDetent = clamp(pixelsPerDetent, 0.0, 10'000.0);
    result.frameIntervalMillis = clamp(frameIntervalMillis, 1.0, result.durationMillis);
    result.maxInFlightPixels = clamp(maxInFlightPixels, 0.0, 1'000'000.0);
    result.accelerationWindowMillis = std::max(accelerationWindowMillis, 0.0);
    result.accelerationGain = clamp(accelerationGain, 0.0, 100.0);
    result.maxAccelerationMultiplier = clamp(maxAccelerationMultiplier, 1.0, 100.0);
    return result;
}

}  // namespace tessara
