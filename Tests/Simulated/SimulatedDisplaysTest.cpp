#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDisplays.h"
#include "SimulatedDesktopTest.h"

namespace tessara::testing {
namespace {

class SimulatedDisplaysTest : public SimulatedDesktopTest {
  protected:
    SimulatedDisplaysTest() {
        // A gap of 100 points between the two, and the second one lower down.
        displays.arrange({{.x = 0, .y = 0, .width = 1000, .height = 800},
                          {.x = 1100, .y = 200, .width = 500, .height = 500}});
    }

    SimulatedDisplays& displays = desktop.displays();
};

TEST_F(SimulatedDisplaysTest, a_point_off_all_displays_is_pulled_to_the_nearest_pixel) {
    struct Case {
        CGPoint point, reached;
    };
    const std::vector<Case> cases{
        {{.x = 10, .y = 10}, {.x = 10, .y = 10}},
        {{.x = -5, .y = 900}, {.x = 0, .y = 799}},
        {{.x = 1000, .y = 0}, {.x = 999, .y = 0}},
        {{.x = 1040, .y = 300}, {.x = 999, .y = 300}},
        {{.x = 1070, .y = 300}, {.x = 1100, .y = 300}},
        {{.x = 1600, .y = 700}, {.x = 1599, .y = 699}},
        {{.x = 999.5, .y = 4}, {.x = 999.5, .y = 4}},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(displays.nearestReachable(expected.point), expected.reached)
            << expected.point.x << ", " << expected.point.y;
    }
}

TEST_F(SimulatedDisplaysTest, a_cursor_whose_display_goes_moves_to_the_nearest_that_is_left) {
    displays.moveCursor({.x = 1590, .y = 600});
    displays.arrange({{.x = 0, .y = 0, .width = 1000, .height = 800}});
    EXPECT_EQ(displays.cursor(), (CGPoint{.x = 999, .y = 600}));
    displays.arrange({});
    EXPECT_EQ(displays.cursor(), (CGPoint{.x = 999, .y = 600}));
}

TEST_F(SimulatedDisplaysTest, motion_stops_at_an_edge_and_the_deltas_tell_of_the_hand) {
    auto& mouse = desktop.attachForeignMouse();
    displays.moveCursor({.x = 990, .y = 10});
    mouse.setAcceleration(1);
    mouse.move(50, 0);
    const auto event = received().at(0);
    EXPECT_EQ(event.location, (CGPoint{.x = 999, .y = 10}));
    EXPECT_EQ(event.integerValue(CGEventField::mouseEventDeltaX), 50);
    EXPECT_EQ(displays.cursor(), event.location);
}

TEST_F(SimulatedDisplaysTest, a_tap_that_rewrites_a_motions_location_moves_the_cursor) {
    const auto tap = install([](CGEventType, CGEvent& event) {
        event.location = {.x = 20, .y = 30};
        return true;
    });
    desktop.attachTargetMouse().move(1, 1);
    desktop.settle();
    EXPECT_EQ(displays.cursor(), (CGPoint{.x = 20, .y = 30}));
}

}  // namespace
}  // namespace tessara::testing
