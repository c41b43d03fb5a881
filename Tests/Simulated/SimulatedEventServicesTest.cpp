#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedEventServices.h"
#include "SimulatedDesktopTest.h"

namespace tessara::testing {
namespace {

using enum CGEventField;

class SimulatedEventServicesTest : public SimulatedDesktopTest {
  protected:
    SimulatedEventServices& services = desktop.eventServices();
};

TEST_F(SimulatedEventServicesTest, events_inherit_their_sources_data_and_its_states_flags) {
    desktop.keyboard().press(55);
    desktop.settle();
    desktop.displays().moveCursor({.x = 7, .y = 8});
    const auto ofSession = services.makeSource(EventSourceState::combinedSession);
    const auto ofItsOwn = services.makeSource(EventSourceState::privateState);
    ofItsOwn->setUserData(99);

    const auto key = services.makeKeyboardEvent(*ofSession, 8, true);
    EXPECT_EQ(key->type, CGEventType::keyDown);
    EXPECT_EQ(key->integerValue(keyboardEventKeycode), 8);
    EXPECT_EQ(key->flags, CGEventFlagMask::command | 0x8);
    EXPECT_EQ(key->integerValue(eventSourceUserData), 0);

    const auto click = services.makeMouseEvent(*ofItsOwn, CGEventType::otherMouseUp, {1, 2}, 4);
    EXPECT_EQ(click->location, (CGPoint{.x = 1, .y = 2}));
    EXPECT_EQ(click->integerValue(mouseEventButtonNumber), 4);
    EXPECT_EQ(click->flags, 0U);
    EXPECT_EQ(click->integerValue(eventSourceUserData), 99);

    const auto wheel = services.makeScrollWheelEvent(*ofItsOwn, ScrollEventUnit::line, 3, -2);
    EXPECT_EQ(wheel->integerValue(scrollWheelEventDeltaAxis1), 3);
    EXPECT_EQ(wheel->integerValue(scrollWheelEventDeltaAxis2), -2);
    EXPECT_EQ(wheel->integerValue(scrollWheelEventIsContinuous), 0);
    EXPECT_EQ(wheel->location, (CGPoint{.x = 7, .y = 8}));
    EXPECT_EQ(services.makeEvent()->location, (CGPoint{.x = 7, .y = 8}));
}

TEST_F(SimulatedEventServicesTest,
       a_posted_mouse_event_moves_the_cursor_and_a_wheel_event_does_not) {
    const auto source = services.makeSource(EventSourceState::privateState);
    services.post(*services.makeMouseEvent(*source, CGEventType::leftMouseDown, {30, 40}, 0),
                  CGEventTapLocation::session);
    desktop.settle();
    EXPECT_EQ(desktop.displays().cursor(), (CGPoint{.x = 30, .y = 40}));

    auto wheel = services.makeScrollWheelEvent(*source, ScrollEventUnit::pixel, 1, 0);
    wheel->location = {.x = 500, .y = 500};
    wheel->timestampNanos = 5;
    services.post(*wheel, CGEventTapLocation::session);
    EXPECT_EQ(received().at(1).timestampNanos, 5U);
    EXPECT_EQ(desktop.displays().cursor(), (CGPoint{.x = 30, .y = 40}));
}

}  // namespace
}  // namespace tessara::testing
