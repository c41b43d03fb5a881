#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDevices.h"

namespace tessara::testing {
namespace {

using ::testing::SizeIs;

HIDValue number(std::int64_t value) {
    return value;
}

TEST(SimulatedDevices, a_service_tells_what_its_description_says_and_nothing_else) {
    SimulatedDevices devices;
    const auto target = devices.attach(SimulatedDeviceDescription::targetMouse());
    const auto nameless = devices.attach(SimulatedDeviceDescription::mouseWithoutVendor());
    const auto services = devices.services();
    ASSERT_TRUE(services);
    ASSERT_THAT(*services, SizeIs(2));
    const auto& service = *services->front();
    EXPECT_EQ(service.registryID(), number(static_cast<std::int64_t>(target->id())));
    EXPECT_EQ(service.copyProperty("VendorID"), number(0x046D));
    EXPECT_EQ(service.copyProperty("ProductID"), number(0xC099));
    EXPECT_EQ(service.copyProperty("PrimaryUsage"), number(2));
    EXPECT_EQ(service.copyProperty("Transport"), HIDValue("USB"));
    EXPECT_EQ(service.copyProperty("Colour"), HIDValue{});
    EXPECT_EQ(services->back()->copyProperty("VendorID"), HIDValue{});
    EXPECT_NE(nameless->id(), target->id());
}

TEST(SimulatedDevices, a_detached_device_leaves_the_list_and_answers_with_nothing) {
    SimulatedDevices devices;
    const auto device = devices.attach(SimulatedDeviceDescription::targetMouse());
    const auto before = devices.services();
    devices.detach(*device);
    EXPECT_THAT(*devices.services(), SizeIs(0));
    EXPECT_EQ(before->front()->registryID(), HIDValue{});
    EXPECT_EQ(before->front()->copyProperty("VendorID"), HIDValue{});
    EXPECT_FALSE(before->front()->setProperty("HIDPointerResolution", number(1)));
    EXPECT_NE(devices.attach(SimulatedDeviceDescription::targetMouse())->id(), device->id());
}

TEST(SimulatedDevices, properties_can_be_set_unless_they_are_refused) {
    SimulatedDevices devices;
    const auto device = devices.attach(SimulatedDeviceDescription::targetMouse());
    device->give("HIDPointerResolution", number(26214400));
    EXPECT_TRUE(device->setProperty("HIDPointerResolution", number(7)));
    EXPECT_EQ(device->copyProperty("HIDPointerResolution"), number(7));
    device->refuseProperty("HIDPointerResolution");
    EXPECT_FALSE(device->setProperty("HIDPointerResolution", number(8)));
    EXPECT_EQ(device->copyProperty("HIDPointerResolution"), number(7));
    device->answerRegistryIDWith("none");
    EXPECT_EQ(device->registryID(), HIDValue("none"));
}

TEST(SimulatedDevices, an_enumeration_can_be_refused_empty_or_overtaken) {
    SimulatedDevices devices;
    const auto device = devices.attach(SimulatedDeviceDescription::targetMouse());
    devices.refuseEnumerations(1);
    EXPECT_FALSE(devices.services());
    devices.enumerateNothing();
    EXPECT_THAT(*devices.services(), SizeIs(0));
    devices.enumerateNothing(false);
    devices.duringNextEnumeration(
        [&] { (void)devices.attach(SimulatedDeviceDescription::foreignMouse()); });
    EXPECT_THAT(*devices.services(), SizeIs(1)) << "attached after the list was drawn up";
    EXPECT_THAT(*devices.services(), SizeIs(2));
    EXPECT_EQ(devices.enumerationCount(), 4);
}

TEST(SimulatedDevices, each_symbol_can_be_hidden_by_itself) {
    SimulatedDevices devices;
    for (const auto& [hidden, name] : hidSymbolNames) {
        devices.hide(hidden);
        for (const auto& [symbol, otherName] : hidSymbolNames)
            EXPECT_EQ(devices.resolves(symbol), symbol != hidden) << name << ", " << otherName;
        devices.reveal(hidden);
        EXPECT_TRUE(devices.resolves(hidden));
    }
}

}  // namespace
}  // namespace tessara::testing
