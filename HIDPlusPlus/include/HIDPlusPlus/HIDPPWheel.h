#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The scroll wheel: what it can do and how it is set. Its turns are not here: they come in as the
/// mouse's normal input.

namespace tessara {

/// What the wheel can do.
struct HIDPPWheelCapability {
    /// Reports per detent in high resolution.
    std::uint8_t multiplier = 0;
    /// Its direction can be turned round.
    bool hasInvert = false;
    /// It has a switch between detents and free running.
    bool hasRatchetSwitch = false;
    /// The whole byte from which the two above were read.
    std::uint8_t flags = 0;

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPWheelCapability&) const = default;
};

/// How the wheel is set. The mouse forgets it with its power.
struct HIDPPWheelMode {
    /// Whether the wheel reports as protocol events to the host's software, or as a plain HID
    /// wheel.
    bool target = false;
    /// Whether a detent comes as several reports (`HIDPPWheelCapability::multiplier`) or as one.
    bool highResolution = false;
    /// Whether the direction is turned round.
    bool inverted = false;

    /// The mode as the byte on the wire, `target` in bit 0, `highResolution` in bit 1, `inverted`
    /// in bit 2, and from it; bits without a meaning are dropped.
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
