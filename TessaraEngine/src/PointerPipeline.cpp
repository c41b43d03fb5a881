#include "TessaraEngine/PointerPipeline.h"

#include <algorithm>
#include <cmath>

#include "TessaraCore/Checked.h"

namespace tessara {

namespace {

/// Beyond this the mouse is taken to have rested, and no speed is made of the gap.
constexpr double longestIntervalMillis = 250.0;
/// Samples that arrive in one bundle have next to no time between them.
constexpr double shortestIntervalMillis = 0.25;

std::int64_t roundedCounts(double counts) {
    return checkedInt64(std::round(std::abs(counts)));
}

}  // namespace

PointerPipeline::PointerPipeline(const PointerSettings& settings, bool repositionsCursor)
    : repositionsCursor_(repositionsCursor),
      isEnabled_(settings.isEnabled),
      settings_(settings),
      accumulator_(settings.curve) {}

PointerOutcome PointerPipeline::handle(const PointerMotion& motion) {
    MutexLock lock(mutex_);
    ++metrics_.samplesSeen;
    if (!settings_.isEnabled) {
        ++metrics_.samplesPassedThrough;
        return {};
    }

    const double intervalMillis = intervalBefore(motion);
    lastTimestampMillis_ = motion.timestampMillis;
    const auto [dx, dy] = accumulator_.apply(motion.delta, intervalMillis);

    const std::int64_t pixelsIn =
        checkedAdd(roundedCounts(motion.delta.dx), roundedCounts(motion.delta.dy));
    const std::int64_t pixelsOut = checkedAdd(checkedAbs(dx), checkedAbs(dy));
    ++metrics_.samplesTransformed;
    metrics_.pixelsIn = checkedAdd(metrics_.pixelsIn, pixelsIn);
    metrics_.pixelsOut = checkedAdd(metrics_.pixelsOut, pixelsOut);
    if (pixelsIn >= 1 && pixelsOut == 0) ++metrics_.subPixelHolds;
    return {.disposition = PointerDisposition::transformed, .dx = dx, .dy = dy};
}

double PointerPipeline::intervalBefore(const PointerMotion& motion) {
    if (lastDeviceID_ == motion.deviceID) {
        const double elapsed = motion.timestampMillis - lastTimestampMillis_;
        const bool tellsSpeed =
            lastTimestampMillis_ > 0 && elapsed > 0 && elapsed <= longestIntervalMillis;
        return tellsSpeed ? std::max(elapsed, shortestIntervalMillis) : 0;
    }
    if (lastDeviceID_) ++metrics_.deviceChanges;
    accumulator_.reset();
    ++metrics_.accumulatorResets;
    lastDeviceID_ = motion.deviceID;
    return 0;
}

void PointerPipeline::reset() {
    MutexLock lock(mutex_);
    forgetMotion();
}

void PointerPipeline::forgetMotion() {
    accumulator_.reset();
    lastTimestampMillis_ = 0;
    lastDeviceID_.reset();
    ++metrics_.accumulatorResets;
}

PointerSettings PointerPipeline::settings() const {
    MutexLock lock(mutex_);
    return settings_;
}

void PointerPipeline::setSettings(const PointerSettings& settings) {
    MutexLock lock(mutex_);
    settings_ = settings;
    isEnabled_ = settings.isEnabled;
    accumulator_.setCurve(settings.curve);
    forgetMotion();
}

PointerPipeline::Metrics PointerPipeline::snapshotMetrics() const {
    MutexLock lock(mutex_);
    return metrics_;
}

void PointerPipeline::resetMetrics() {
    MutexLock lock(mutex_);
    metrics_ = {};
}

}  // namespace tessara
