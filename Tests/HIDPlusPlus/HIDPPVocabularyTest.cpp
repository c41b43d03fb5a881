#include <set>

#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPConnectionState.h"
#include "HIDPlusPlus/HIDPPDeviceIdentity.h"
#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "HIDPlusPlus/HIDPPError.h"
#include "HIDPlusPlus/HIDPPFeature.h"
#include "HIDPlusPlus/HIDPPInputMonitoringAccess.h"
#include "HIDPlusPlus/HIDPPProtocolVersion.h"
#include "HIDPlusPlus/HIDPPTransportStatistics.h"
#include "HIDPlusPlus/HIDPPTransports.h"

namespace tessara {
namespace {

TEST(HIDPPFeature, every_feature_is_listed_once_found_by_its_identifier_and_named) {
    std::set<std::uint16_t> ids;
    std::set<std::string_view> names;
    for (const auto feature : allHIDPPFeatures()) {
        ids.insert(featureID(feature));
        names.insert(name(feature));
        EXPECT_EQ(hidppFeature(featureID(feature)), feature);
    }
    EXPECT_EQ(ids.size(), 28U);
    EXPECT_EQ(names.size(), 28U);
    EXPECT_FALSE(names.contains("unknown"));
    EXPECT_EQ(hidppFeature(0x2200), std::nullopt);
    EXPECT_EQ(description(HIDPPFeature::configurableProperties),
              "0x1806 ConfigurableDeviceProperties");
}

TEST(HIDPPVocabulary, values_describe_themselves) {
    const struct {
        std::string described;
        const char* text;
    } cases[] = {
        {HIDPPFeatureType{0x07}.description(), "-"},
        {HIDPPFeatureType{0xFF}.description(),
         "obsolete,hidden,engineering,manufDeactivatable,compliDeactivatable"},
        {HIDPPFeatureRecord{0x0B, 0x2201, HIDPPFeature::adjustableDPI, {0}, 2}.description(),
         "idx 0x0B -> 0x2201 AdjustableDPI v2 [-]"},
        {HIDPPFeatureRecord{0x10, 0x18B1, std::nullopt, {0x40}, 0}.description(),
         "idx 0x10 -> 0x18B1 unknown v0 [hidden]"},
        {HIDPPError(HIDPPError::Protocol20{{10}}).description(),
         "HID++ 2.0 error 0x0A (invalidDeviceIndex)"},
        {HIDPPError(HIDPPError::Protocol20{{11}}).description(),
         "HID++ 2.0 error 0x0B (vendor/unassigned)"},
        {ioReturnDescription(IOReturn::success), "0x00000000 (kIOReturnSuccess)"},
        {ioReturnDescription(IOReturn::offline), "0xE00002D7 (unknown)"},
        {HIDPPTransports{0x000F}.description(), "Bluetooth,BLE,eQuad,USB"},
        {HIDPPTransports{0xFF00}.description(), "-"},
        {std::string(description(HIDPPInputMonitoringAccess::unknown)),
         "unknown (never requested)"},
        {HIDPPTransportStatistics{1, 2, 3, 4, 5, 6}.description(),
         "sent=1 matched=2 staleDropped=3 unmatchedDropped=4 events=5 peakQueue=6"},
        {HIDPPDeviceMatch::g502X.description(), "046D:C099"},
        {HIDPPConnectionState(HIDPPConnectionState::Connected{}).description(), "connected(?)"},
    };
    for (const auto& [described, text] : cases)
        EXPECT_EQ(described, text);
    EXPECT_LT((HIDPPProtocolVersion{2, 9}), (HIDPPProtocolVersion{4, 0}));
}

TEST(HIDPPError, a_refusal_and_an_absence_are_one_error_each_whatever_the_platform_calls_them) {
    const struct {
        IOReturn code;
        HIDPPError error;
    } cases[] = {
        {IOReturn::notPermitted, HIDPPError::NotPermitted{}},
        {IOReturn::notPrivileged, HIDPPError::NotPermitted{}},
        {IOReturn::notOpen, HIDPPError::NotOpen{}},
        {IOReturn::noDevice, HIDPPError::DeviceRemoved{}},
        {IOReturn::notAttached, HIDPPError::DeviceRemoved{}},
        {IOReturn::offline, HIDPPError::DeviceRemoved{}},
        {IOReturn::busy, HIDPPError::IOKit{"IOHIDDeviceSetReport", IOReturn::busy}},
        {static_cast<IOReturn>(7),
         HIDPPError::IOKit{"IOHIDDeviceSetReport", static_cast<IOReturn>(7)}},
    };
    for (const auto& [code, error] : cases) {
        EXPECT_EQ(HIDPPError::from(code, "IOHIDDeviceSetReport"), error)
            << ioReturnDescription(code);
    }
}

TEST(HIDPPDeviceIdentity, only_a_vendor_collection_that_takes_long_reports_carries_the_protocol) {
    const struct {
        std::vector<HIDUsagePair> pairs;
        std::int64_t maxOutputReportSize;
        bool carries;
    } cases[] = {
        {{{1, 6}, {0xFF00, 2}}, 20, true}, {{{0xFF00, 1}}, 64, true}, {{{0xFF00, 2}}, 19, false},
        {{{1, 2}, {1, 6}}, 20, false},     {{}, 20, false},
    };
    for (const auto& [pairs, size, carries] : cases) {
        const HIDPPDeviceIdentity identity{.maxOutputReportSize = size, .usagePairs = pairs};
        EXPECT_EQ(identity.carriesHIDPP(), carries) << identity.description();
    }
}

TEST(HIDPPDeviceIdentity, what_the_platform_leaves_out_is_absent_or_0) {
    EXPECT_EQ(HIDPPDeviceIdentity::from({}), HIDPPDeviceIdentity{});

    const auto identity = HIDPPDeviceIdentity::from({.vendorID = 0x046D,
                                                     .productID = 0xC099,
                                                     .product = "Gaming Mouse",
                                                     .primaryUsagePage = 0xFF00,
                                                     .primaryUsage = 1,
                                                     .maxInputReportSize = 20,
                                                     .maxOutputReportSize = 20,
                                                     .usagePairs = {{0xFF00, 1}, {0xFF00, 2}}});
    EXPECT_EQ(identity.description(),
              "046D:C099 Gaming Mouse usage=FF00:01 maxIn=20 maxOut=20 pairs=[FF00:01,FF00:02]");
}

}  // namespace
}  // namespace tessara
