#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TessaraCore/JSONError.h"
#include "TessaraCore/RawValue.h"
#include "TessaraEngine/PointerPropertyBackend.h"

namespace tessara {

/// What a device's properties were before the program changed them: the way back. Also any other
/// reading of them.
struct PointerTuningCapture {
    static constexpr std::int64_t currentSchema = 1;

    std::int64_t schema = currentSchema;
    PointerServiceIdentity service;
    /// The key that the acceleration was read from.
    std::string accelerationKey;
    /// Counts per inch in 16.16; absent when it could not be read, as is the next.
    std::optional<std::int64_t> resolution;
    /// In 16.16, -1 for none.
    std::optional<std::int64_t> acceleration;
    /// When they were read.
    std::chrono::sys_seconds capturedAt{};

    /// The two figures as numbers, the first in counts per inch.
    [[nodiscard]] std::optional<double> resolutionCPI() const;
    [[nodiscard]] std::optional<double> accelerationValue() const;

    /// The stored form: JSON with sorted keys, the date in ISO 8601. Fails only on a text of the
    /// system's that is not UTF-8.
    [[nodiscard]] std::expected<std::string, EncodingError> encoded() const;
    /// Nothing for bytes that are no capture, or one of another schema.
    [[nodiscard]] static std::optional<PointerTuningCapture> decoded(std::string_view bytes);

    bool operator==(const PointerTuningCapture&) const = default;
};

/// Why the original values were put back.
enum class PointerTuningRestoreReason : std::uint8_t {
    engineStopped,
    switchedOff,
    notRequested,
    strandedCaptureRecovered,  ///< a run before this one had not come to it
    targetDisappeared,
};

template <>
inline constexpr auto rawValues<PointerTuningRestoreReason> =
    std::to_array<std::string_view>({"engineStopped", "switchedOff", "notRequested",
                                     "strandedCaptureRecovered", "targetDisappeared"});

/// How the correction of the system's pointer figures stands. Numbers are 16.16 fixed point.
struct PointerTuningStatus {
    /// The system lets the figures be written.
    bool isSupported = false;
    /// The user's switch.
    bool isEnabled = false;
    /// The engine allows it now.
    bool isPermitted = false;
    /// A correction is in force, or could not be taken back.
    bool isApplied = false;
    /// The device that the correction is for, when one is there.
    std::optional<PointerServiceIdentity> target;
    /// The originals, as long as there is something to put back.
    std::optional<PointerTuningCapture> capture;
    /// What the last correction wrote, of that which the system took.
    std::optional<std::int64_t> appliedResolution;
    std::optional<std::int64_t> appliedAcceleration;
    /// How its writes ended; absent before the first one and after a restore.
    std::optional<PointerPropertyWrite> resolutionWrite;
    std::optional<PointerPropertyWrite> accelerationWrite;
    /// What the system said after the last correction or restore.
    std::optional<std::int64_t> lastReadBackResolution;
    std::optional<std::int64_t> lastReadBackAcceleration;
    /// Why the last restore was; absent after a correction.
    std::optional<PointerTuningRestoreReason> lastRestoreReason;
    /// The correction of an earlier run was undone at this start.
    bool recoveredStrandedCapture = false;
    /// Some of the originals could not be put back, and are kept.
    bool restoreFailed = false;
    /// The keys that could not be put back.
    std::vector<std::string> restoreFailedKeys;
    /// The live values, when they were last asked for.
    std::optional<PointerTuningCapture> currentReading;
    /// What went wrong last, in words for the user of the one system that has these figures. Where
    /// they cannot be written, as on Linux, nothing is tried and nothing goes wrong.
    std::optional<std::string> lastError;

    /// The original and the corrected resolution in counts per inch.
    [[nodiscard]] std::optional<double> capturedResolutionCPI() const;
    [[nodiscard]] std::optional<double> appliedResolutionCPI() const;
    /// By how much the system's own figure was off: applied over captured.
    [[nodiscard]] std::optional<double> overestimateFactor() const;

    bool operator==(const PointerTuningStatus&) const = default;
};

}  // namespace tessara
