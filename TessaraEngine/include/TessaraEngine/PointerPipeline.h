#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/DeviceID.h"
#include "TessaraCore/PointerAccumulator.h"
#include "TessaraCore/PointerSettings.h"

namespace tessara {

/// One sample of the mouse's motion.
struct PointerMotion {
    /// In sensor counts, and finite.
    PointerDelta delta;
    double timestampMillis = 0;
    DeviceID deviceID;

    bool operator==(const PointerMotion&) const = default;
};

/// What is to become of a motion event.
enum class PointerDisposition : std::uint8_t {
    passThrough,  ///< it goes on as it came
    transformed   ///< the motion it carries is replaced
};

/// The answer to one sample.
struct PointerOutcome {
    PointerDisposition disposition = PointerDisposition::passThrough;
    /// Whole pixels, 0 with `passThrough`. A transformed motion may be 0, 0 too.
    std::int64_t dx = 0;
    std::int64_t dy = 0;

    bool operator==(const PointerOutcome&) const = default;
};

/// Turns the raw motion of the mouse into whole pixels by the profile's curve.
///
/// It keeps the fractions of pixels and the time between samples, and forgets both when the stream
/// of motion is broken: by another device, other settings or a reset. It posts nothing and moves no
/// cursor; whoever routes the event writes the outcome into it.
///
/// All operations may be called from any thread. None waits, and `handle` does not allocate.
class PointerPipeline {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        std::int64_t samplesSeen = 0;
        std::int64_t samplesTransformed = 0;
        std::int64_t samplesPassedThrough = 0;  ///< samples refused because the curve is off
        std::int64_t pixelsIn = 0;              ///< counts of both axes taken, each rounded
        std::int64_t pixelsOut = 0;             ///< pixels of both axes given
        std::int64_t subPixelHolds = 0;         ///< samples of a count or more that gave no pixel
        std::int64_t accumulatorResets = 0;     ///< times the fractions were dropped
        std::int64_t deviceChanges = 0;         ///< samples of another device than the one before

        bool operator==(const Metrics&) const = default;
    };

    /// `repositionsCursor` tells the router whether it is to move the cursor itself; it changes
    /// nothing here.
    PointerPipeline(const PointerSettings& settings, bool repositionsCursor);

    PointerPipeline(const PointerPipeline&) = delete;
    PointerPipeline& operator=(const PointerPipeline&) = delete;

    [[nodiscard]] bool repositionsCursor() const noexcept { return repositionsCursor_; }

    /// Takes one sample, on the tap thread. The speed is taken from the time since the last sample
    /// of the same device, when that is 250 ms at most; a first sample has none and gets the gain
    /// of slow motion. A motion that is not finite, or that no integer can hold, stops the process.
    [[nodiscard]] PointerOutcome handle(const PointerMotion& motion);

    /// Forgets fractions, time and device: the next sample is a first one.
    void reset();

    [[nodiscard]] bool isEnabled() const noexcept { return isEnabled_; }
    [[nodiscard]] PointerSettings settings() const;
    /// Takes the settings over and resets.
    void setSettings(const PointerSettings& settings);

    [[nodiscard]] Metrics snapshotMetrics() const;
    void resetMetrics();

  private:
    /// The milliseconds that the sample took, or 0 when that cannot be told. Drops the fractions
    /// when the sample is not of the last device.
    double intervalBefore(const PointerMotion& motion) TESSARA_REQUIRES(mutex_);
    void forgetMotion() TESSARA_REQUIRES(mutex_);

    const bool repositionsCursor_;
    /// `settings_.isEnabled`, for the question before every motion event. Written with the lock
    /// held.
    std::atomic<bool> isEnabled_;
    mutable Mutex mutex_;
    PointerSettings settings_ TESSARA_GUARDED_BY(mutex_);
    PointerAccumulator accumulator_ TESSARA_GUARDED_BY(mutex_);
    /// Of the last sample taken; 0 after a reset.
    double lastTimestampMillis_ TESSARA_GUARDED_BY(mutex_) = 0;
    std::optional<DeviceID> lastDeviceID_ TESSARA_GUARDED_BY(mutex_);
    Metrics metrics_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
