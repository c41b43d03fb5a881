#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/DeviceScope.h"
#include "TessaraEngine/EngineSPIDiagnostics.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Counters = DeviceScope::Counters;

class DeviceScopeTest : public testing::VirtualTimeTest {
  protected:
    /// A scope for the mouse; its first refresh has run.
    std::unique_ptr<DeviceScope> makeScope() {
        auto scope = std::make_unique<DeviceScope>(std::vector{HIDPPDeviceMatch::g502X},
                                                   desktop.devices(), dispatcher);
        dispatcher.runReady();
        return scope;
    }

    static CGEvent eventOf(std::uint64_t sender, CGEventType type = CGEventType::mouseMoved) {
        CGEvent event;
        event.type = type;
        event.hidEventReference = sender;
        return event;
    }

    static std::vector<std::uint64_t> idsOf(const std::vector<ScopedDevice>& devices) {
        std::vector<std::uint64_t> ids;
        for (const ScopedDevice& device : devices)
            ids.push_back(device.registryID);
        return ids;
    }

    static ScopeDecision unidentified(UnidentifiedReason reason) {
        return UnidentifiedDevice{reason};
    }
    static ScopeDecision target(std::uint64_t id) { return TargetDevice{DeviceID{id}}; }
    static ScopeDecision foreign(std::uint64_t id) { return ForeignDevice{DeviceID{id}}; }

    SimulatedDesktop desktop{dispatcher};
    SimulatedPointingDevice& mouse = desktop.attachTargetMouse();
};

TEST_F(DeviceScopeTest, devices_are_told_apart_once_the_first_refresh_has_run) {
    const std::uint64_t other = desktop.attachForeignMouse().id();
    const std::uint64_t nameless = desktop.attachMouseWithoutVendor().id();
    DeviceScope scope({HIDPPDeviceMatch::g502X}, desktop.devices(), dispatcher);
    EXPECT_EQ(scope.decide(eventOf(mouse.id())), unidentified(UnidentifiedReason::unknownSender));
    EXPECT_FALSE(scope.isTargetAttached());

    dispatcher.runReady();
    EXPECT_EQ(scope.decide(eventOf(mouse.id())), target(mouse.id()));
    EXPECT_EQ(scope.decide(eventOf(other)), foreign(other));
    EXPECT_EQ(scope.decide(eventOf(nameless)), foreign(nameless));
    EXPECT_EQ(scope.decide(eventOf(0)), unidentified(UnidentifiedReason::noHIDEvent));
    EXPECT_TRUE(scope.isTargetAttached());
    EXPECT_THAT(idsOf(scope.targetDevices()), ElementsAre(mouse.id()));
    EXPECT_THAT(idsOf(scope.knownDevices()),
                ElementsAre(desktop.keyboard().hid().id(), mouse.id(), other, nameless))
        << "in rising order";

    const Counters counters = scope.snapshotCounters();
    EXPECT_EQ(counters, (Counters{.target = 1,
                                  .foreign = 2,
                                  .unidentifiedNoHIDEvent = 1,
                                  .unidentifiedUnknownSender = 1,
                                  .refreshes = 1}));
    EXPECT_EQ(counters.total(), 5);
    scope.resetCounters();
    EXPECT_EQ(scope.snapshotCounters(), Counters{});
}

TEST_F(DeviceScopeTest, an_unknown_device_sets_off_its_own_discovery_at_most_once_a_second) {
    const auto scope = makeScope();
    const std::uint64_t late = desktop.attachForeignMouse().id();
    const auto refreshesAfter = [&](milliseconds wait) {
        dispatcher.advance(wait);
        for (int i = 0; i < 1000; ++i)
            (void)scope->decide(eventOf(late));
        dispatcher.runReady();
        return desktop.devices().enumerationCount();
    };
    EXPECT_EQ(refreshesAfter(milliseconds(999)), 1);
    EXPECT_EQ(scope->decide(eventOf(late)), unidentified(UnidentifiedReason::unknownSender));
    EXPECT_EQ(refreshesAfter(milliseconds(1)), 2);
    EXPECT_EQ(scope->decide(eventOf(late)), foreign(late));
}

TEST_F(DeviceScopeTest, forced_refreshes_run_at_once_and_those_during_one_make_one_more) {
    const auto scope = makeScope();
    scope->refresh(false);
    dispatcher.runReady();
    EXPECT_EQ(desktop.devices().enumerationCount(), 1) << "too early for one that nobody forces";

    desktop.devices().duringNextEnumeration([&] {
        scope->refresh(false);
        for (int i = 0; i < 5; ++i)
            scope->refresh(true);
    });
    scope->refresh(true);
    dispatcher.runReady();
    EXPECT_EQ(desktop.devices().enumerationCount(), 3);
    EXPECT_EQ(scope->snapshotCounters().refreshes, 3);

    scope->refreshNow();
    EXPECT_EQ(desktop.devices().enumerationCount(), 4) << "on the spot";
}

TEST_F(DeviceScopeTest, other_matches_count_from_the_refresh_on_that_they_force) {
    const std::uint64_t other = desktop.attachForeignMouse().id();
    const auto scope = makeScope();
    const SimulatedDeviceDescription description = SimulatedDeviceDescription::foreignMouse();
    const std::vector<HIDPPDeviceMatch> matches{
        {.vendorID = *description.vendorID, .productID = *description.productID}};
    scope->setMatches(matches);
    EXPECT_EQ(scope->matches(), matches);
    EXPECT_EQ(scope->decide(eventOf(mouse.id())), target(mouse.id())) << "not yet";
    dispatcher.runReady();
    EXPECT_EQ(scope->decide(eventOf(mouse.id())), foreign(mouse.id()));
    EXPECT_EQ(scope->decide(eventOf(other)), target(other));
}

TEST_F(DeviceScopeTest, a_list_that_fails_or_is_empty_leaves_the_tables_as_they_were) {
    const auto scope = makeScope();
    const auto refreshed = [&] {
        scope->refreshNow();
        return scope->snapshotCounters().refreshes;
    };
    desktop.devices().enumerateNothing();
    EXPECT_EQ(refreshed(), 1);
    desktop.devices().enumerateNothing(false);
    desktop.devices().refuseEnumerations(1);
    EXPECT_EQ(refreshed(), 1);
    EXPECT_EQ(scope->decide(eventOf(mouse.id())), target(mouse.id()));

    const std::uint64_t gone = mouse.id();
    mouse.detach();
    dispatcher.runReady();
    EXPECT_TRUE(scope->isTargetAttached()) << "until the next refresh";
    EXPECT_EQ(refreshed(), 2);
    EXPECT_FALSE(scope->isTargetAttached());
    EXPECT_EQ(scope->decide(eventOf(gone)), unidentified(UnidentifiedReason::unknownSender));
}

TEST_F(DeviceScopeTest, services_without_a_proper_number_are_left_out) {
    for (const HIDValue& value :
         {HIDValue{}, HIDValue{std::int64_t{0}}, HIDValue{std::string("17")}}) {
        desktop.attachTargetMouse().hid().answerRegistryIDWith(value);
    }
    auto& odd = desktop.attachForeignMouse();
    odd.hid().give("Product", std::int64_t{5});
    odd.hid().give("VendorID", std::string("0x046D"));
    const auto scope = makeScope();
    const auto known = scope->knownDevices();
    EXPECT_THAT(idsOf(known), ElementsAre(desktop.keyboard().hid().id(), mouse.id(), odd.id()));
    EXPECT_EQ(known.back().product, std::nullopt) << "a property of another type is absent";
    EXPECT_EQ(known.back().vendorID, std::nullopt);
}

TEST_F(DeviceScopeTest, an_event_that_no_hid_event_stands_behind_may_name_its_sender_in_a_field) {
    const auto scope = makeScope();
    const auto decide = [&](CGEventType type, std::int64_t field) {
        CGEvent event = eventOf(0, type);
        event.setIntegerValue(CGEventField::mouseEventSenderID, field);
        return scope->decide(event);
    };
    const auto id = static_cast<std::int64_t>(mouse.id());
    for (const std::uint32_t type : {1U, 2U, 3U, 4U, 6U, 7U, 25U, 26U, 27U})
        EXPECT_EQ(decide(CGEventType{type}, id), target(mouse.id())) << type;
    for (const std::uint32_t type : {5U, 10U, 22U})
        EXPECT_EQ(decide(CGEventType{type}, id), unidentified(UnidentifiedReason::noHIDEvent));
    EXPECT_EQ(decide(CGEventType::leftMouseDown, 42),
              unidentified(UnidentifiedReason::unknownSender));
    EXPECT_EQ(decide(CGEventType::leftMouseDown, 0), unidentified(UnidentifiedReason::noHIDEvent));
    EXPECT_EQ(decide(CGEventType::leftMouseDown, -1), unidentified(UnidentifiedReason::noHIDEvent));
}

TEST_F(DeviceScopeTest, a_call_that_the_system_lacks_degrades_no_more_than_what_rests_on_it) {
    const ScopeDecision blind = unidentified(UnidentifiedReason::spiUnavailable);
    const struct {
        HIDSymbol symbol;
        const char* name;
        ScopeDecision decision;
    } rows[] = {
        {HIDSymbol::cgEventCopyIOHIDEvent, "CGEventCopyIOHIDEvent", blind},
        {HIDSymbol::ioHIDEventGetSenderID, "IOHIDEventGetSenderID", blind},
        {HIDSymbol::ioHIDEventSystemClientCreateSimpleClient,
         "IOHIDEventSystemClientCreateSimpleClient", blind},
        {HIDSymbol::ioHIDEventSystemClientCopyServices, "IOHIDEventSystemClientCopyServices",
         blind},
        {HIDSymbol::ioHIDServiceClientGetRegistryIDRaw, "IOHIDServiceClientGetRegistryID", blind},
        {HIDSymbol::ioHIDServiceClientCopyProperty, "IOHIDServiceClientCopyProperty",
         foreign(mouse.id())},
        {HIDSymbol::ioHIDServiceClientSetProperty, "IOHIDServiceClientSetProperty",
         target(mouse.id())},
    };
    EXPECT_THAT(EngineSPIDiagnostics::missingSymbols(desktop.devices()), IsEmpty());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        desktop.devices().hide(row.symbol);
        const auto scope = makeScope();
        EXPECT_EQ(scope->decide(eventOf(mouse.id())), row.decision);
        EXPECT_EQ(scope->snapshotCounters().unidentifiedSPIUnavailable, row.decision == blind);
        EXPECT_THAT(EngineSPIDiagnostics::missingSymbols(desktop.devices()), ElementsAre(row.name));
        desktop.devices().reveal(row.symbol);
    }
}

TEST_F(DeviceScopeTest, the_diagnosis_reads_services_only_by_calls_that_are_there) {
    auto& devices = desktop.devices();
    devices.hide(HIDSymbol::ioHIDServiceClientGetRegistryIDRaw);
    devices.hide(HIDSymbol::ioHIDEventSystemClientCopyServices);
    devices.hide(HIDSymbol::ioHIDServiceClientSetProperty);
    EXPECT_THAT(EngineSPIDiagnostics::services(devices), IsEmpty());
    EXPECT_EQ(EngineSPIDiagnostics::registryID(devices, mouse.hid()), std::nullopt);
    EXPECT_FALSE(EngineSPIDiagnostics::canSetServiceProperties(devices));
}

TEST_F(DeviceScopeTest, events_with_the_synthetic_tag_count_as_the_targets_without_any_lookup) {
    const auto scope = makeScope();
    CGEvent event = eventOf(0);
    event.setIntegerValue(CGEventField::eventSourceUserData, 77);
    EXPECT_EQ(scope->decide(event), unidentified(UnidentifiedReason::noHIDEvent));
    scope->syntheticSourceTag = 77;
    EXPECT_EQ(scope->decide(event), target(0xC099000000000001));
    EXPECT_EQ(scope->snapshotCounters().target, 1);
}

TEST(ScopedDevice, a_label_shows_what_is_known_and_what_is_not) {
    const ScopedDevice whole{.registryID = 1,
                             .vendorID = 0x46D,
                             .productID = 0xC099,
                             .product = "Mouse",
                             .transport = "USB",
                             .primaryUsagePage = 1,
                             .primaryUsage = 2};
    EXPECT_EQ(whole.label(), "Mouse [0x046D:0xC099] usage 1/2");

    ScopedDevice bare;
    EXPECT_EQ(bare.label(), "(unnamed) [?:?] usage -1/-1");
    bare.productID = 0xC099;
    EXPECT_FALSE(bare.matches(HIDPPDeviceMatch::g502X));
}

}  // namespace
}  // namespace tessara
