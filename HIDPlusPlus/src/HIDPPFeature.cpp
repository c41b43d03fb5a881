#include "HIDPlusPlus/HIDPPFeature.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "BitNames.h"

namespace tessara {

namespace {

constexpr std::array allFeatures{
    HIDPPFeature::root,
    HIDPPFeature::featureSet,
    HIDPPFeature::featureInfo,
    HIDPPFeature::deviceInformation,
    HIDPPFeature::deviceNameType,
    HIDPPFeature::deviceFriendlyName,
    HIDPPFeature::unifiedBattery,
    HIDPPFeature::batteryStatus,
    HIDPPFeature::configChangeMonitor,
    HIDPPFeature::dfuControl,
    HIDPPFeature::manufacturingMode,
    HIDPPFeature::deviceReset,
    HIDPPFeature::oobState,
    HIDPPFeature::configurableProperties,
    HIDPPFeature::ledTest,
    HIDPPFeature::enableHiddenFeatures,
    HIDPPFeature::spiDirectAccess,
    HIDPPFeature::tdeAccess,
    HIDPPFeature::reprogControlsV4,
    HIDPPFeature::smartShift,
    HIDPPFeature::smartShiftEnhanced,
    HIDPPFeature::hiResWheel,
    HIDPPFeature::adjustableDPI,
    HIDPPFeature::extendedAdjustableDPI,
    HIDPPFeature::reportRate,
    HIDPPFeature::extendedReportRate,
    HIDPPFeature::onboardProfiles,
    HIDPPFeature::mouseButtonSpy,
};

}  // namespace

std::span<const HIDPPFeature> allHIDPPFeatures() {
    return allFeatures;
}

std::optional<HIDPPFeature> hidppFeature(std::uint16_t id) {
    const auto* found = std::ranges::find(allFeatures, static_cast<HIDPPFeature>(id));
    if (found == allFeatures.end()) return std::nullopt;
    return *found;
}

std::string_view name(HIDPPFeature feature) {
    switch (feature) {
        case HIDPPFeature::root:
            return "Root";
        case HIDPPFeature::featureSet:
            return "FeatureSet";
        case HIDPPFeature::featureInfo:
            return "FeatureInfo";
        case HIDPPFeature::deviceInformation:
            return "DeviceInformation";
        case HIDPPFeature::deviceNameType:
            return "DeviceNameType";
        case HIDPPFeature::deviceFriendlyName:
            return "DeviceFriendlyName";
        case HIDPPFeature::unifiedBattery:
            return "UnifiedBattery";
        case HIDPPFeature::batteryStatus:
            return "BatteryStatus";
        case HIDPPFeature::configChangeMonitor:
            return "ConfigChangeMonitor";
        case HIDPPFeature::dfuControl:
            return "DFUControl";
        case HIDPPFeature::manufacturingMode:
            return "ManufacturingMode";
        case HIDPPFeature::deviceReset:
            return "DeviceReset";
        case HIDPPFeature::oobState:
            return "OOBState";
        case HIDPPFeature::configurableProperties:
            return "ConfigurableDeviceProperties";
        case HIDPPFeature::ledTest:
            return "LEDTest";
        case HIDPPFeature::enableHiddenFeatures:
            return "EnableHiddenFeatures";
        case HIDPPFeature::spiDirectAccess:
            return "SPIDirectAccess";
        case HIDPPFeature::tdeAccess:
            return "TDEAccess";
        case HIDPPFeature::reprogControlsV4:
            return "ReprogrammableControlsV4";
        case HIDPPFeature::smartShift:
            return "SmartShift";
        case HIDPPFeature::smartShiftEnhanced:
            return "SmartShiftEnhanced";
        case HIDPPFeature::hiResWheel:
            return "HiResWheel";
        case HIDPPFeature::adjustableDPI:
            return "AdjustableDPI";
        case HIDPPFeature::extendedAdjustableDPI:
            return "ExtendedAdjustableDPI";
        case HIDPPFeature::reportRate:
            return "ReportRate";
        case HIDPPFeature::extendedReportRate:
            return "ExtendedReportRate";
        case HIDPPFeature::onboardProfiles:
            return "OnboardProfiles";
        case HIDPPFeature::mouseButtonSpy:
            return "MouseButtonSpy";
    }
    return "unknown";
}

std::string description(HIDPPFeature feature) {
    return fmt::format("0x{:04X} {}", featureID(feature), name(feature));
}

std::string HIDPPFeatureType::description() const {
    static constexpr std::array<BitName, 5> names{{
        {obsolete, "obsolete"},
        {hidden, "hidden"},
        {engineering, "engineering"},
        {manufacturingDeactivatable, "manufDeactivatable"},
        {complianceDeactivatable, "compliDeactivatable"},
    }};
    return joinBitNames(rawValue, names);
}

std::string_view HIDPPFeatureRecord::name() const {
    return feature ? tessara::name(*feature) : "unknown";
}

std::string HIDPPFeatureRecord::description() const {
    return fmt::format("idx 0x{:02X} -> 0x{:04X} {} v{} [{}]", index, id, name(), version,
                       type.description());
}

}  // namespace tessara
