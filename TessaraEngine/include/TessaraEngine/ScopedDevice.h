#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tessara {

struct HIDPPDeviceMatch;

/// One input device as the event system describes it: a value, read once at a refresh, and no way
/// to the device. What the system does not say, or says in a type that does not fit, is absent.
struct ScopedDevice {
    /// The number that the device's events carry as their sender; never 0.
    std::uint64_t registryID = 0;
    /// The vendor's number, assigned by the USB Implementers Forum: property "VendorID".
    std::optional<std::int64_t> vendorID;
    /// The vendor's number for the product: property "ProductID".
    std::optional<std::int64_t> productID;
    /// The name that the device gives itself: property "Product".
    std::optional<std::string> product;
    /// What it is connected by, in the system's words, such as "USB": property "Transport".
    std::optional<std::string> transport;
    /// What kind of device it is, in the numbers of the HID Usage Tables: 1 and 2 for a mouse.
    /// Properties "PrimaryUsagePage" and "PrimaryUsage".
    std::optional<std::int64_t> primaryUsagePage;
    std::optional<std::int64_t> primaryUsage;

    /// Whether the device is the one asked for. A device that does not say its vendor or its
    /// product is never that.
    [[nodiscard]] bool matches(const HIDPPDeviceMatch& match) const;

    /// Name, numbers and usage in one line for people, as in "Gaming Mouse [0x1234:0x5678] usage
    /// 1/2"; "(unnamed)", "?" and -1 stand for what is absent.
    [[nodiscard]] std::string label() const;

    bool operator==(const ScopedDevice&) const = default;
};

}  // namespace tessara
