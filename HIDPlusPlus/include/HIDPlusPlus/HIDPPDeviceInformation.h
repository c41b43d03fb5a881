#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "HIDPlusPlus/HIDPPTransports.h"

namespace tessara {

/// The identifying facts of a device, as it tells them itself. They are shown, and nothing is
/// recognised by them: a mouse is known by its `HIDPPDeviceMatch`.
struct HIDPPDeviceInformation {
    /// The parts that have firmware of their own.
    std::uint8_t entityCount = 0;
    /// The number of this one piece among its like.
    std::array<std::uint8_t, 4> unitID{};
    HIDPPTransports transports = {};
    /// Product ids for up to three of the transports, two bytes each.
    std::array<std::uint8_t, 6> modelIDs{};

    /// The bytes as upper-case hexadecimal pairs without separators, such as "12345678".
    std::string unitIDHex() const;
    std::string modelIDHex() const;

    /// All facts in one line.
    std::string description() const;

    bool operator==(const HIDPPDeviceInformation&) const = default;
};

}  // namespace tessara
