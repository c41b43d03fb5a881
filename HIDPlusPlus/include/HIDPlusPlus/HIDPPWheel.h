#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The scroll wheel: what it can do and how it is set.

namespace tessara {

struct HIDPPWheelCapability {
    /// Reports per detent in high resolution.
    std::uint8_t multiplier = 0;
    bool hasInvert = false;
    bool hasRatchetSwitch = false;
    /// The whole byte from which the two above were read.
    std::uint8_t flags = 0;

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPWheelCapability&) const = default;
};

struct HIDPPWheelMode {
    /// Whether the wheel reports as protocol events to the host's software, or as a plain HID
    /// wheel.
    bool target = false;
    bool highResolution = false;
    bool inverted = false;

    /// The mode as the byte on the wire, and from it; bits without a meaning are dropped.
    std::uint8_t rawValue() const;
    static HIDPPWheelMode fromRawValue(std::uint8_t rawValue);

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPWheelMode&) const = default;
};

/// Whether the wheel runs freely or clicks from detent to detent.
enum class HIDPPRatchetState : std::uint8_t { freeSpin, ratchet };

/// The text for the user.
std::string_view description(HIDPPRatchetState state);

}  // namespace tessara
