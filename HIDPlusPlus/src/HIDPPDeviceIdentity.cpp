#include "HIDPlusPlus/HIDPPDeviceIdentity.h"

#include <algorithm>

#include <fmt/format.h>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "HIDPlusPlus/HIDPPWire.h"

namespace tessara {

HIDPPDeviceIdentity HIDPPDeviceIdentity::from(const HIDInterfaceProperties& properties) {
    return {
        .vendorID = properties.vendorID.value_or(0),
        .productID = properties.productID.value_or(0),
        .product = properties.product,
        .manufacturer = properties.manufacturer,
        .serialNumber = properties.serialNumber,
        .locationID = properties.locationID,
        .primaryUsagePage = properties.primaryUsagePage.value_or(0),
        .primaryUsage = properties.primaryUsage.value_or(0),
        .maxInputReportSize = properties.maxInputReportSize.value_or(0),
        .maxOutputReportSize = properties.maxOutputReportSize.value_or(0),
        .usagePairs = properties.usagePairs,
    };
}

bool HIDPPDeviceIdentity::carriesHIDPP() const {
    constexpr std::int64_t longReportSize = 1 + HIDPPWire::longPayloadLength;
    const auto isVendorCollection = [](const HIDUsagePair& pair) {
        return pair.usagePage == HIDPPWire::vendorUsagePage;
    };
    return maxOutputReportSize >= longReportSize &&
           std::ranges::any_of(usagePairs, isVendorCollection);
}

std::string HIDPPDeviceIdentity::description() const {
    std::string pairs;
    for (const auto& pair : usagePairs) {
        if (!pairs.empty()) pairs += ',';
        pairs += tessara::description(pair);
    }
    return fmt::format("{} {} usage={} maxIn={} maxOut={} pairs=[{}]",
                       HIDPPDeviceMatch{vendorID, productID}.description(), product.value_or("?"),
                       tessara::description(HIDUsagePair{primaryUsagePage, primaryUsage}),
                       maxInputReportSize, maxOutputReportSize, pairs);
}

std::string description(const HIDUsagePair& pair) {
    return fmt::format("{:02X}:{:02X}", pair.usagePage, pair.usage);
}

}  // namespace tessara
