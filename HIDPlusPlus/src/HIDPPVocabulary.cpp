#include <array>

#include <fmt/format.h>

#include "BitNames.h"
#include "HIDPlusPlus/HIDPPConnectionState.h"
#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "HIDPlusPlus/HIDPPInputMonitoringAccess.h"
#include "HIDPlusPlus/HIDPPProtocolVersion.h"
#include "HIDPlusPlus/HIDPPTransportStatistics.h"
#include "HIDPlusPlus/HIDPPTransports.h"

namespace tessara {

std::string HIDPPTransports::description() const {
    static constexpr std::array<BitName, 4> names{{
        {bluetooth, "Bluetooth"},
        {bluetoothLE, "BLE"},
        {eQuad, "eQuad"},
        {usb, "USB"},
    }};
    return joinBitNames(rawValue, names);
}

std::string HIDPPProtocolVersion::description() const {
    return fmt::format("HID++ {}.{}", major, minor);
}

std::string HIDPPDeviceMatch::description() const {
    return fmt::format("{:04X}:{:04X}", vendorID, productID);
}

std::string HIDPPConnectionState::description() const {
    if (const auto* connected = std::get_if<Connected>(&value)) {
        return fmt::format("connected({})", connected->identity.product.value_or("?"));
    }
    return is<NotPermitted>() ? "notPermitted" : "disconnected";
}

std::string_view description(HIDPPInputMonitoringAccess access) {
    switch (access) {
        case HIDPPInputMonitoringAccess::granted:
            return "granted";
        case HIDPPInputMonitoringAccess::denied:
            return "denied";
        case HIDPPInputMonitoringAccess::unknown:
            break;
    }
    return "unknown (never requested)";
}

std::string HIDPPTransportStatistics::description() const {
    return fmt::format(
        "sent={} matched={} staleDropped={} unmatchedDropped={} events={} peakQueue={}",
        requestsSent, repliesMatched, staleRepliesDropped, unmatchedReportsDropped,
        notificationsDelivered, peakQueueDepth);
}

}  // namespace tessara
