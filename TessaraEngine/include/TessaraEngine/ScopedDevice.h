#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tessara {

struct HIDPPDeviceMatch;

/// One input device as the event system describes it. What the system does not say is absent.
struct ScopedDevice {
    /// The number that the device's events carry as their sender; never 0.
    std::uint64_t registryID = 0;
    std::optional<std::int64_t> vendorID;
    std::optional<std::int64_t> productID;
    std::optional<std::string> product;
    std::optional<std::string> transport;
    std::optional<std::int64_t> primaryUsagePage;
    std::optional<std::int64_t> primaryUsage;

    /// Whether the device is the one asked for. A device that does not say its vendor or its
    /// product is never that.
    [[nodiscard]] bool matches(const HIDPPDeviceMatch& match) const;

    /// Name, numbers and usage in one line, for people to read.
    [[nodiscard]] std::string label() const;

    bool operator==(const ScopedDevice&) const = default;
};

}  // namespace tessara
