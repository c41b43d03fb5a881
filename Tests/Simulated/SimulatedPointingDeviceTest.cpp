#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedPointingDevice.h"
#include "SimulatedDesktopTest.h"

namespace tessara::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using enum CGEventField;

class SimulatedPointingDeviceTest : public SimulatedDesktopTest {
  protected:
    SimulatedPointingDevice& mouse = desktop.attachTargetMouse();
};

TEST_F(SimulatedPointingDeviceTest,
       motion_moves_the_cursor_and_carries_raw_and_accelerated_deltas) {
    desktop.displays().moveCursor({.x = 100, .y = 100});
    mouse.setAcceleration(1.5);
    desktop.keyboard().press(56);
    mouse.move(10, -4);
    mouse.move(1, 0);

    const auto event = received().at(1);
    EXPECT_EQ(event.type, CGEventType::mouseMoved);
    EXPECT_EQ(event.location, (CGPoint{.x = 115, .y = 94}));
    EXPECT_EQ(event.integerValue(mouseEventDeltaX), 15);
    EXPECT_EQ(event.integerValue(mouseEventDeltaY), -6);
    EXPECT_EQ(event.doubleValue(unacceleratedPointerMovementX), 10);
    EXPECT_EQ(event.doubleValue(unacceleratedPointerMovementY), -4);
    EXPECT_EQ(event.flags, CGEventFlagMask::shift | 0x2);
    EXPECT_EQ(event.timestampNanos, 1'000'000'000U);
    EXPECT_EQ(desktop.devices().senderID(event), mouse.id());
    EXPECT_EQ(desktop.displays().cursor(), (CGPoint{.x = 117, .y = 94}));
}

TEST_F(SimulatedPointingDeviceTest, figures_that_are_none_show_in_the_raw_fields_only) {
    mouse.move(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity());
    const auto event = received().at(0);
    EXPECT_TRUE(std::isnan(event.doubleValue(unacceleratedPointerMovementX)));
    EXPECT_TRUE(std::isinf(event.doubleValue(unacceleratedPointerMovementY)));
    EXPECT_EQ(event.integerValue(mouseEventDeltaX), 0);
    EXPECT_EQ(event.location, (CGPoint{.x = 960, .y = 540}));
}

TEST_F(SimulatedPointingDeviceTest, buttons_and_drags_have_the_types_of_their_numbers) {
    struct Case {
        std::int64_t button;
        CGEventType down, dragged, up;
    };
    using enum CGEventType;
    const std::vector<Case> cases{{0, leftMouseDown, leftMouseDragged, leftMouseUp},
                                  {1, rightMouseDown, rightMouseDragged, rightMouseUp},
                                  {2, otherMouseDown, otherMouseDragged, otherMouseUp},
                                  {7, otherMouseDown, otherMouseDragged, otherMouseUp}};
    for (const auto& expected : cases) {
        mouse.press(expected.button);
        mouse.move(1, 1);
        mouse.release(expected.button);
        mouse.move(1, 1);
        const auto events = received();
        ASSERT_THAT(events, SizeIs(4));
        EXPECT_EQ(events[0].type, expected.down);
        EXPECT_EQ(events[1].type, expected.dragged);
        EXPECT_EQ(events[2].type, expected.up);
        EXPECT_EQ(events[3].type, mouseMoved);
        EXPECT_EQ(events[0].integerValue(mouseEventButtonNumber), expected.button);
        EXPECT_EQ(events[1].integerValue(mouseEventButtonNumber), expected.button);
    }
}

TEST_F(SimulatedPointingDeviceTest, a_wheel_steps_by_lines_and_a_trackpad_glides_by_pixels) {
    mouse.spin(2);
    mouse.spinSideways(-1);
    desktop.attachTrackpad().swipe(100, -7, 3);
    const auto events = received();
    ASSERT_THAT(events, SizeIs(6));

    EXPECT_EQ(events[0].integerValue(scrollWheelEventIsContinuous), 0);
    EXPECT_EQ(events[0].integerValue(scrollWheelEventDeltaAxis1), 2);
    EXPECT_EQ(events[0].integerValue(scrollWheelEventPointDeltaAxis1), 20);
    EXPECT_EQ(events[1].integerValue(scrollWheelEventDeltaAxis2), -1);

    std::int64_t vertical = 0;
    std::int64_t horizontal = 0;
    std::vector<std::int64_t> phases;
    for (std::size_t index = 2; index < events.size(); ++index) {
        EXPECT_EQ(events[index].integerValue(scrollWheelEventIsContinuous), 1);
        vertical += events[index].integerValue(scrollWheelEventPointDeltaAxis1);
        horizontal += events[index].integerValue(scrollWheelEventPointDeltaAxis2);
        phases.push_back(events[index].integerValue(scrollWheelEventScrollPhase));
    }
    EXPECT_EQ(vertical, 100);
    EXPECT_EQ(horizontal, -7);
    EXPECT_THAT(phases, ElementsAre(1, 2, 2, 4));
}

TEST_F(SimulatedPointingDeviceTest, unplugging_lets_buttons_go_and_vanishing_says_nothing) {
    mouse.press(0);
    mouse.detach();
    EXPECT_EQ(received().at(1).type, CGEventType::leftMouseUp);

    auto& again = desktop.attachTargetMouse();
    EXPECT_NE(again.id(), mouse.id());
    again.press(3);
    again.vanish();
    EXPECT_THAT(received(), SizeIs(1));
    EXPECT_THAT(desktop.hardwareState().buttonsDown(), IsEmpty());
    EXPECT_DEATH(again.spin(1), "is not attached");
}

TEST_F(SimulatedPointingDeviceTest, events_name_their_sender_as_the_system_does) {
    struct Case {
        SenderReporting reporting;
        bool inHIDEvent, inField;
    };
    const std::vector<Case> cases{{SenderReporting::hidEvent, true, false},
                                  {SenderReporting::fieldOnly, false, true},
                                  {SenderReporting::none, false, false}};
    const auto id = static_cast<std::int64_t>(mouse.id());
    for (const auto& expected : cases) {
        desktop.devices().reportSendersBy(expected.reporting);
        mouse.press(0);
        mouse.spin(1);
        mouse.release(0);
        const auto events = received();
        ASSERT_THAT(events, SizeIs(3));
        EXPECT_EQ(desktop.devices().senderID(events[1]).has_value(), expected.inHIDEvent);
        EXPECT_EQ(events[0].integerValue(mouseEventSenderID), expected.inField ? id : 0);
        EXPECT_EQ(events[1].integerValue(mouseEventSenderID), 0);
    }
}

}  // namespace
}  // namespace tessara::testing
