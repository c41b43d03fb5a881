#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDevices.h"

namespace tessara::testing {
namespace {

using ::testing::SizeIs;

TEST(SimulatedDevices, a_detached_device_leaves_the_list_and_answers_with_nothing) {
    SimulatedDevices devices;
    const auto device = devices.attach(SimulatedDeviceDescription::targetMouse());
    const auto before = devices.services();
    devices.detach(*device);
    EXPECT_THAT(*devices.services(), SizeIs(0));
    EXPECT_EQ(before->front()->registryID(), HIDValue{});
    EXPECT_EQ(before->front()->copyProperty("VendorID"), HIDValue{});
    EXPECT_FALSE(before->front()->setProperty("HIDPointerResolution", std::int64_t{1}));
    EXPECT_NE(devices.attach(SimulatedDeviceDescription::targetMouse())->id(), device->id());
}

}  // namespace
}  // namespace tessara::testing
