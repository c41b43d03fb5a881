#include <gtest/gtest.h>

#include "Platform/Linux/HIDDeviceName.h"

namespace tessara {
namespace {

TEST(HIDDeviceName, a_node_belongs_to_the_nearest_device_on_the_way_up) {
    const struct {
        const char* path;
        std::optional<HIDDeviceName> name;
    } cases[] = {
        {"/sys/devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.2/0003:046D:C099.0007/hidraw/hidraw3",
         HIDDeviceName{3, 0x046D, 0xC099, 7}},
        {"/sys/devices/virtual/misc/uhid/0005:0000:0001.1A2B/input/input9/event5",
         HIDDeviceName{5, 0x0000, 0x0001, 0x1A2B}},
        {"/sys/devices/1-4:1.2/0003:046D:C52B.0003/0003:046D:4079.0006/hidraw/hidraw5",
         HIDDeviceName{3, 0x046D, 0x4079, 6}},
        {"0003:046D:C099.FFFFFFFF", HIDDeviceName{3, 0x046D, 0xC099, 0xFFFFFFFF}},
        {"/sys/devices/platform/i8042/serio1/input/input5/event3", std::nullopt},
        {"/sys/0003:046D:C099.0000/hidraw", std::nullopt},
        {"/sys/0003:046D:C099.100000000/hidraw", std::nullopt},
        {"/sys/0003:046D:C099.0007x/0003:046D:C099/:::./0003:-46D:C099.1", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [path, name] : cases)
        EXPECT_EQ(HIDDeviceName::inPath(path), name) << path;
}

TEST(HIDDeviceName, a_place_on_the_bus_is_a_byte_for_the_bus_and_one_for_each_port) {
    const struct {
        const char* name;
        std::optional<std::int64_t> location;
    } cases[] = {
        {"1-4", 0x01'04'00'00'00'00'00},
        {"1-4.2", 0x01'04'02'00'00'00'00},
        {"255-1.2.3.4.5.255", 0xFF'01'02'03'04'05'FF},
        {"1-1.2.3.4.5.6.7", std::nullopt},
        {"256-1", std::nullopt},
        {"1-256", std::nullopt},
        {"1-0", std::nullopt},
        {"1-4.", std::nullopt},
        {"1-4:1.2", std::nullopt},
        {"usb1", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [name, location] : cases)
        EXPECT_EQ(locationOfUSBDevice(name), location) << name;
}

}  // namespace
}  // namespace tessara
