#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "HIDPlusPlus/HIDPPTransports.h"

namespace tessara {

/// The identifying facts of a device, as it tells them itself.
struct HIDPPDeviceInformation {
    std::uint8_t entityCount = 0;
    std::array<std::uint8_t, 4> unitID{};
    HIDPPTransports transports = {};
    std::array<std::uint8_t, 6> modelIDs{};

    /// The bytes as upper-case hexadecimal pairs without separators.
    std::string unitIDHex() const;
    std::string modelIDHex() const;

    /// All facts in one line.
    std::string description() const;

    bool operator==(const HIDPPDeviceInformation&) const = default;
};

}  // namespace tessara
