#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/DeviceID.h"
#include "TessaraCore/PointerAccumulator.h"
#include "TessaraCore/PointerSettings.h"

namespace tessara {

/// One sample of the mouse's motion, as the router reads it from an event.
struct PointerMotion {
    /// In sensor counts, or in the system's points where the system has accelerated them; finite.
    PointerDelta delta;
    /// When it happened. Times of one device are compared with each other and with nothing else.
    double timestampMillis = 0;
    /// Which mouse moved.
    DeviceID deviceID;

    bool operator==(const PointerMotion&) const = default;
};

/// What is to become of a motion event.
enum class PointerDisposition : std::uint8_t {
    /// It goes on as it came.
    passThrough,
    /// The motion it carries is replaced.
    transformed
};

/// The answer to one sample.
struct PointerOutcome {
    /// What is to become of the event.
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
        /// Samples taken, transformed or not.
        std::int64_t samplesSeen = 0;
        /// Samples that went through the curve.
        std::int64_t samplesTransformed = 0;
        /// Samples refused because the curve is off.
        std::int64_t samplesPassedThrough = 0;
        /// The way of the samples that went through the curve, both axes added, each rounded to the
        /// nearest count.
        std::int64_t pixelsIn = 0;
        /// The way that became of it, both axes added, in pixels.
        std::int64_t pixelsOut = 0;
        /// Samples of a count or more that gave no pixel: all of it waits as a fraction.
        std::int64_t subPixelHolds = 0;
        /// Times the fractions were dropped. A reset counts, and so does the first sample after it.
        std::int64_t accumulatorResets = 0;
        /// Samples of another device than the one before.
        std::int64_t deviceChanges = 0;

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
    /// of slow motion. Samples closer than 0.25 ms count as 0.25 ms apart. Passed through while the
    /// curve is off. A motion that is not finite, or that no integer can hold, stops the process.
    [[nodiscard]] PointerOutcome handle(const PointerMotion& motion);

    /// Forgets fractions, time and device: the next sample is a first one.
    void reset();

    /// Whether the curve is on, for the question before every motion event. It takes no lock.
    [[nodiscard]] bool isEnabled() const noexcept { return isEnabled_; }
    /// As they were given, not brought into their ranges.
    [[nodiscard]] PointerSettings settings() const;
    /// Takes the settings over, between two samples, and resets. Their resolution is the mouse's
    /// affair and changes nothing here.
    void setSettings(const PointerSettings& settings);

    /// All counters of one moment.
    [[nodiscard]] Metrics snapshotMetrics() const;
    /// Begins to count from 0.
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
