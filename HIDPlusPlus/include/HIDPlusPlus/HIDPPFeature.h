#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The features of a HID++ device by identifier, and the rows of a device's feature table.
///
/// A feature has a fixed 16-bit identifier and, on each device, an index of its own; only the index
/// goes on the wire. The list is wider than what the client can operate: it also gives names to
/// features that are merely shown. Identifiers are the protocol's and the same on every device that
/// has the feature.
///
/// Everything here is a value or a pure function. Any thread.

namespace tessara {

/// A feature the client knows by name. The raw value is the feature's identifier; a number outside
/// the list is no `HIDPPFeature`.
enum class HIDPPFeature : std::uint16_t {
    // What the device is. The root looks the others up and answers a ping; it is at index 0
    // everywhere. The feature set is the table of all of them.
    root = 0x0000,
    featureSet = 0x0001,
    featureInfo = 0x0002,
    deviceInformation = 0x0003,
    deviceNameType = 0x0005,
    deviceFriendlyName = 0x0007,
    // Shown by name only, down to the wheel.
    unifiedBattery = 0x1004,
    batteryStatus = 0x1000,
    configChangeMonitor = 0x0020,
    dfuControl = 0x00C2,
    manufacturingMode = 0x1801,
    deviceReset = 0x1802,
    oobState = 0x1805,
    configurableProperties = 0x1806,
    ledTest = 0x18A1,
    enableHiddenFeatures = 0x1E00,
    spiDirectAccess = 0x1E22,
    tdeAccess = 0x1EB0,
    reprogControlsV4 = 0x1B04,
    smartShift = 0x2110,
    smartShiftEnhanced = 0x2111,
    // What the client operates; the two extended ones stand beside these on newer devices and are
    // shown only, as is the last.
    hiResWheel = 0x2121,
    adjustableDPI = 0x2201,
    extendedAdjustableDPI = 0x2202,
    reportRate = 0x8060,
    extendedReportRate = 0x8061,
    onboardProfiles = 0x8100,
    mouseButtonSpy = 0x8110,
};

/// Every feature, in the order of declaration.
std::span<const HIDPPFeature> allHIDPPFeatures();

/// The feature with this identifier, or nothing when the client does not know it.
std::optional<HIDPPFeature> hidppFeature(std::uint16_t id);

/// The feature's identifier.
constexpr std::uint16_t featureID(HIDPPFeature feature) {
    return static_cast<std::uint16_t>(feature);
}

/// The feature's name, such as "AdjustableDPI".
std::string_view name(HIDPPFeature feature);

/// Identifier and name, such as "0x2201 AdjustableDPI".
std::string description(HIDPPFeature feature);

/// The type bits that a device reports with each feature. The three low bits have no meaning here
/// and are kept.
struct HIDPPFeatureType {
    /// Another feature has taken its place.
    static constexpr std::uint8_t obsolete = 0x80;
    /// Not meant for the user's software.
    static constexpr std::uint8_t hidden = 0x40;
    /// For the maker's own use.
    static constexpr std::uint8_t engineering = 0x20;
    /// Can be switched off for good, at the factory or for a test of compliance.
    static constexpr std::uint8_t manufacturingDeactivatable = 0x10;
    static constexpr std::uint8_t complianceDeactivatable = 0x08;

    /// The byte as read.
    std::uint8_t rawValue = 0;

    /// The words of the set bits joined by commas, "-" when no named bit is set.
    std::string description() const;

    bool operator==(const HIDPPFeatureType&) const = default;
};

/// One row of a device's feature table.
struct HIDPPFeatureRecord {
    /// The feature's index on this device.
    std::uint8_t index = 0;
    /// The feature's identifier as read.
    std::uint16_t id = 0;
    /// The feature of that identifier, absent when the client does not know it.
    std::optional<HIDPPFeature> feature = {};
    HIDPPFeatureType type = {};
    /// Of the feature, on this device.
    std::uint8_t version = 0;

    /// The feature's name, or "unknown".
    std::string_view name() const;

    /// One line for a table of features, such as "idx 0x05 -> 0x2201 AdjustableDPI v1 [-]".
    std::string description() const;

    bool operator==(const HIDPPFeatureRecord&) const = default;
};

}  // namespace tessara
