#include <array>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <poll.h>
#include <unistd.h>

#include "Kernel/EventNode.h"
#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Support/ProcessResources.h"

namespace tessara::testing {
namespace {

TEST(UHIDMouse, its_reports_are_events_of_the_kernel) {
    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse(dispatcher, firmware);
    mouse.plug();
    EventNode node(mouse.pointer().eventNode());

    mouse.pointer().send({.buttons = 0x8001, .x = 300, .y = -2, .wheel = -1, .pan = 1});
    mouse.pointer().release(15);
    const auto frames = node.framesUntil({EV_KEY, BTN_LEFT + 15, 0});
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].sumOf(EV_KEY, BTN_LEFT), 1);
    EXPECT_EQ(frames[0].sumOf(EV_KEY, BTN_LEFT + 15), 1);
    EXPECT_EQ(frames[0].sumOf(EV_REL, REL_X), 300);
    EXPECT_EQ(frames[0].sumOf(EV_REL, REL_Y), -2);
    EXPECT_EQ(frames[0].sumOf(EV_REL, REL_WHEEL), -1);
    EXPECT_EQ(frames[0].sumOf(EV_REL, REL_WHEEL_HI_RES), -120);
    EXPECT_EQ(frames[0].sumOf(EV_REL, REL_HWHEEL), 1);
    EXPECT_EQ(frames[0].sumOf(EV_REL, REL_HWHEEL_HI_RES), 120);
    EXPECT_EQ(node.heldKeys(), std::vector<std::uint16_t>{BTN_LEFT});
}

TEST(UHIDMouse, the_firmware_answers_a_ping_over_its_hidraw_node) {
    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse(dispatcher, firmware);
    mouse.plug();

    const int fd = ::open(mouse.vendorNode().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    const std::array<std::uint8_t, 7> ping{0x10, 0xFF, 0x00, 0x18, 0, 0, 0x5A};
    EXPECT_EQ(::write(fd, ping.data(), ping.size()), static_cast<ssize_t>(ping.size()));
    pollfd waited{.fd = fd, .events = POLLIN, .revents = 0};
    EXPECT_EQ(::poll(&waited, 1, 5000), 1);
    std::array<std::uint8_t, 64> answer{};
    EXPECT_EQ(::read(fd, answer.data(), answer.size()), 7);
    EXPECT_EQ(answer[3], 0x18);
    EXPECT_EQ(answer[6], 0x5A);
    ::close(fd);
}

TEST(UHIDMouse, an_unplug_leaves_nothing_behind) {
    NoLeakedResources noLeaks;
    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse(dispatcher, firmware);
    for (int plug = 0; plug < 3; ++plug) {
        mouse.plug();
        const std::string node = mouse.pointer().eventNode();
        EXPECT_TRUE(std::filesystem::exists(node));
        mouse.unplug();
        EXPECT_FALSE(std::filesystem::exists(node));
    }
}

TEST(UHIDKeyboard, its_keys_are_keys_of_the_kernel) {
    ThreadedDispatcher dispatcher;
    UHIDKeyboard keyboard(dispatcher, UHIDKeyboard::foreignKeyboard());
    EventNode node(keyboard.eventNode());
    keyboard.press(0xE1);
    keyboard.press(4);
    static_cast<void>(node.framesUntil({EV_KEY, KEY_A, 1}));
    EXPECT_EQ(node.heldKeys(), (std::vector<std::uint16_t>{KEY_A, KEY_LEFTSHIFT}));
}

}  // namespace
}  // namespace tessara::testing
