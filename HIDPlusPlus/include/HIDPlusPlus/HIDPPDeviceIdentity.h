#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/HIDTransport.h"

namespace tessara {

/// One HID interface of a device, as the platform describes it. A mouse has several under the same
/// vendor and product id; `carriesHIDPP` finds the one that speaks the protocol. What the platform
/// does not tell is absent or 0.
struct HIDPPDeviceIdentity {
    std::int64_t vendorID = 0;
    std::int64_t productID = 0;
    std::optional<std::string> product = {};
    std::optional<std::string> manufacturer = {};
    std::optional<std::string> serialNumber = {};
    /// Where on the bus the device is plugged in.
    std::optional<std::int64_t> locationID = {};
    /// What the interface is for in the first place: usage page and usage of its first collection.
    std::int64_t primaryUsagePage = 0;
    std::int64_t primaryUsage = 0;
    /// Bytes of the longest report, its id included.
    std::int64_t maxInputReportSize = 0;
    std::int64_t maxOutputReportSize = 0;
    /// Of all the interface's collections, in its order.
    std::vector<HIDUsagePair> usagePairs = {};

    /// The identity that the platform's properties of an interface give.
    static HIDPPDeviceIdentity from(const HIDInterfaceProperties& properties);

    /// Whether the interface has the vendor collection (`HIDPPWire::vendorUsagePage`) and takes
    /// long reports: only such a one answers to the protocol.
    bool carriesHIDPP() const;

    /// One line with ids, name, usages and sizes.
    std::string description() const;

    bool operator==(const HIDPPDeviceIdentity&) const = default;
};

/// Usage page and usage, such as "FF00:01".
std::string description(const HIDUsagePair& pair);

}  // namespace tessara
