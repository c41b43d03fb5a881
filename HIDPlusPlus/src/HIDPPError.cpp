#include "HIDPlusPlus/HIDPPError.h"

#include <array>

#include <fmt/format.h>

namespace tessara {

namespace {

std::string_view ioReturnName(IOReturn code) {
    switch (code) {
        case IOReturn::success:
            return "kIOReturnSuccess";
        case IOReturn::notOpen:
            return "kIOReturnNotOpen";
        case IOReturn::notPermitted:
            return "kIOReturnNotPermitted";
        case IOReturn::notPrivileged:
            return "kIOReturnNotPrivileged";
        case IOReturn::exclusiveAccess:
            return "kIOReturnExclusiveAccess";
        case IOReturn::unsupported:
            return "kIOReturnUnsupported";
        case IOReturn::noDevice:
            return "kIOReturnNoDevice";
        case IOReturn::notAttached:
            return "kIOReturnNotAttached";
        case IOReturn::badArgument:
            return "kIOReturnBadArgument";
        case IOReturn::timeout:
            return "kIOReturnTimeout";
        case IOReturn::busy:
            return "kIOReturnBusy";
        case IOReturn::error:
            return "kIOReturnError";
        case IOReturn::offline:
            break;
    }
    return "unknown";
}

struct Describe {
    std::string operator()(const HIDPPError::IOKit& error) const {
        return fmt::format("{} failed: {}", error.operation, ioReturnDescription(error.code));
    }
    std::string operator()(const HIDPPError::Timeout& error) const {
        return fmt::format("{} timed out", error.operation);
    }
    std::string operator()(const HIDPPError::FeatureUnsupported& error) const {
        return fmt::format("feature {} is not supported by this device",
                           description(error.feature));
    }
    std::string operator()(const HIDPPError::Protocol20& error) const {
        return fmt::format("HID++ 2.0 error 0x{:02X} ({})", error.code.rawValue, error.code.name());
    }
    std::string operator()(const HIDPPError::Protocol10& error) const {
        return fmt::format("HID++ 1.0 error 0x{:02X}", error.code);
    }
    std::string operator()(const HIDPPError::MalformedResponse& error) const {
        return fmt::format("malformed response: {}", error.text);
    }
    std::string operator()(const HIDPPError::InvalidArgument& error) const {
        return fmt::format("invalid argument: {}", error.text);
    }
    std::string operator()(const HIDPPError::DeviceNotFound&) const {
        return "no HID++ collection found for the requested device";
    }
    std::string operator()(const HIDPPError::NotPermitted&) const {
        return "not permitted: Input Monitoring is denied for this process";
    }
    std::string operator()(const HIDPPError::NotOpen&) const { return "device is not open"; }
    std::string operator()(const HIDPPError::NotConnected&) const { return "not connected"; }
    std::string operator()(const HIDPPError::DeviceRemoved&) const { return "device was removed"; }
};

}  // namespace

std::string_view HIDPP20ErrorCode::name() const {
    static constexpr std::array<std::string_view, 11> names{
        "noError",       "unknown",        "invalidArgument",     "outOfRange",
        "hardwareError", "vendorInternal", "invalidFeatureIndex", "invalidFunctionId",
        "busy",          "unsupported",    "invalidDeviceIndex",
    };
    return rawValue < names.size() ? names[rawValue] : "vendor/unassigned";
}

HIDPPError HIDPPError::from(IOReturn code, std::string_view operation) {
    switch (code) {
        case IOReturn::notPermitted:
        case IOReturn::notPrivileged:
            return NotPermitted{};
        case IOReturn::notOpen:
            return NotOpen{};
        case IOReturn::noDevice:
        case IOReturn::notAttached:
        case IOReturn::offline:
            return DeviceRemoved{};
        default:
            return IOKit{std::string(operation), code};
    }
}

std::string HIDPPError::description() const {
    return std::visit(Describe{}, value);
}

std::string ioReturnDescription(IOReturn code) {
    return fmt::format("0x{:08X} ({})", static_cast<std::uint32_t>(code), ioReturnName(code));
}

}  // namespace tessara
