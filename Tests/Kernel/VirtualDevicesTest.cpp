#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <linux/input.h>

#include "Kernel/EventNode.h"
#include "Platform/Linux/LinuxKeyTable.h"
#include "Platform/Linux/Udev.h"
#include "Platform/Linux/UinputDevice.h"
#include "Platform/Linux/VirtualDeviceIdentity.h"
#include "Platform/Linux/VirtualDevices.h"
#include "Support/ProcessResources.h"

namespace tessara::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

/// What udev tells desktops that the node is.
std::string udevProperty(const std::string& node, const char* property) {
    const auto devices = Udev().devices("input");
    const auto device = std::ranges::find(devices, node, &UdevDevice::node);
    return device == devices.end() ? "" : device->property(property).value_or("");
}

TEST(VirtualDevices, every_button_and_key_reaches_whoever_reads_their_nodes) {
    VirtualDevices devices;
    ASSERT_TRUE(devices.open().has_value());
    EventNode mouse(EventNode::pathNamed(virtualMouseIdentity.name).value());
    EventNode keyboard(EventNode::pathNamed(virtualKeyboardIdentity.name).value());
    for (std::uint16_t button = 0; button < VirtualMouse::buttonCount; ++button) {
        const auto code = static_cast<std::uint16_t>(BTN_LEFT + button);
        devices.mouse.setButton(button, true);
        EXPECT_THAT(mouse.framesUntil({EV_KEY, code, 1}), SizeIs(1)) << button;
    }
    for (const auto& key : LinuxKeyTable::keys) {
        devices.keyboard.setKey(key.virtualCode, true);
        EXPECT_THAT(keyboard.framesUntil({EV_KEY, key.kernelCode, 1}), SizeIs(1))
            << key.virtualCode;
    }
    EXPECT_THAT(keyboard.heldKeys(), SizeIs(LinuxKeyTable::keys.size()));
    devices.mouse.releaseAll();
    EXPECT_THAT(mouse.heldKeys(), IsEmpty());
}

TEST(VirtualDevices, desktops_take_them_for_a_mouse_and_a_keyboard) {
    const NoLeakedResources noLeaks;
    EXPECT_TRUE(canOpenUinput());
    VirtualDevices devices;
    ASSERT_TRUE(devices.open().has_value());
    const auto mouse = EventNode::pathNamed(virtualMouseIdentity.name).value();
    const auto keyboard = EventNode::pathNamed(virtualKeyboardIdentity.name).value();
    EXPECT_TRUE(waitFor([&] { return udevProperty(mouse, "ID_INPUT_MOUSE") == "1"; }));
    EXPECT_TRUE(waitFor([&] { return udevProperty(keyboard, "ID_INPUT_KEYBOARD") == "1"; }));
    EXPECT_EQ(udevProperty(mouse, "ID_INPUT_JOYSTICK"), "");
    devices.close();
    EXPECT_TRUE(waitFor([] {
        return !EventNode::exists(virtualMouseIdentity.name) &&
               !EventNode::exists(virtualKeyboardIdentity.name);
    }));
}

}  // namespace
}  // namespace tessara::testing
