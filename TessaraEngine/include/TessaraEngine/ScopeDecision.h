#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <variant>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/RawValue.h"

namespace tessara {

/// Why an event's device could not be established.
enum class UnidentifiedReason : std::uint8_t {
    /// The system lacks a call that it takes.
    spiUnavailable,
    /// No device stands behind the event, or the system does not say which.
    noHIDEvent,
    /// The device is in no table, or not yet. A refresh of the tables is on its way.
    unknownSender
};

template <>
inline constexpr auto rawValues<UnidentifiedReason> =
    std::to_array<std::string_view>({"spiUnavailable", "noHIDEvent", "unknownSender"});

/// The event is from a device that the program reshapes.
struct TargetDevice {
    /// The device's identity for one plug; a mouse plugged in again is another.
    DeviceID deviceID;
    bool operator==(const TargetDevice&) const = default;
};

/// The event is from a known device that is none of the program's business.
struct ForeignDevice {
    /// As with a target.
    DeviceID deviceID;
    bool operator==(const ForeignDevice&) const = default;
};

/// The event's device could not be established; it is treated like a foreign one.
struct UnidentifiedDevice {
    /// For the status display; it makes no difference to the event.
    UnidentifiedReason reason = UnidentifiedReason::spiUnavailable;
    bool operator==(const UnidentifiedDevice&) const = default;
};

/// Whose event it is. Only events of a target are looked at any further.
using ScopeDecision = std::variant<TargetDevice, ForeignDevice, UnidentifiedDevice>;

}  // namespace tessara
