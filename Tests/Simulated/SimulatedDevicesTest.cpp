#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDevices.h"

namespace tessara::testing {
namespace {

using ::testing::SizeIs;

HIDValue number(std::int64_t value) {
    return value;
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

}  // namespace
}  // namespace tessara::testing
