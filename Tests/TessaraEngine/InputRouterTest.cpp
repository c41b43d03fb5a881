#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "EventPath.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/InputRouter.h"

namespace tessara {
namespace {

using Metrics = InputRouter::Metrics;
using ::testing::IsEmpty;

constexpr std::uint16_t keyOfTheBinding = 8;

class InputRouterTest : public testing::VirtualTimeTest {
  protected:
    static EventPathOptions withABoundButton() {
        return {.buttons = {{.button = 4, .action = KeyStrokeAction{.code = keyOfTheBinding}}}};
    }

    static CGEvent ofType(CGEventType type) {
        CGEvent event;
        event.type = type;
        return event;
    }

    static CGEvent wheel(std::int64_t vertical, std::int64_t horizontal) {
        CGEvent event = ofType(CGEventType::scrollWheel);
        event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, vertical);
        event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis2, horizontal);
        return event;
    }

    /// Motion as the sensor counts it and as the system has accelerated it.
    static CGEvent motion(double rawX, double rawY, std::int64_t x, std::int64_t y) {
        CGEvent event = ofType(CGEventType::mouseMoved);
        event.setDoubleValue(CGEventField::unacceleratedPointerMovementX, rawX);
        event.setDoubleValue(CGEventField::unacceleratedPointerMovementY, rawY);
        event.setIntegerValue(CGEventField::mouseEventDeltaX, x);
        event.setIntegerValue(CGEventField::mouseEventDeltaY, y);
        return event;
    }
};

TEST_F(InputRouterTest, each_event_meets_the_verdict_of_its_kind_and_is_counted_once) {
    enum class Fate : std::uint8_t { unchanged, rewritten, suppressed };
    struct Row {
        const char* name;
        std::function<void(EventPath&)> act;
        Fate fate;
        Metrics counted;
    };
    const auto fromMouse = [](CGEvent event) {
        return [event](EventPath& path) { path.mouse.send(event); };
    };
    CGEvent continuous = wheel(3, 0);
    continuous.setIntegerValue(CGEventField::scrollWheelEventIsContinuous, 1);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr Metrics targetPassed{.fromTargetDevice = 1, .passedThrough = 1};
    constexpr Metrics targetMoved{.fromTargetDevice = 1, .pointerHandled = 1};
    constexpr Metrics foreignPassed{.fromForeignDevice = 1, .passedThrough = 1};

    const Row rows[] = {
        {"own output",
         [](EventPath& path) { path.poster->postMouseButton(4, true); },
         Fate::unchanged,
         {.selfEmittedSeen = 1}},
        {"bound button of another mouse",
         [](EventPath& path) {
             auto& foreign = path.desktop.attachForeignMouse();
             path.scope.refreshNow();
             foreign.press(4);
         },
         Fate::unchanged, foreignPassed},
        {"mouse that does not say who made it",
         [](EventPath& path) {
             auto& foreign = path.desktop.attachMouseWithoutVendor();
             path.scope.refreshNow();
             foreign.move(5, 5);
         },
         Fate::unchanged, foreignPassed},
        {"device that is in no table yet",
         [](EventPath& path) { path.desktop.attachForeignMouse().spin(1); },
         Fate::unchanged,
         {.unidentified = 1, .passedThrough = 1}},
        {"event without a device",
         [&](EventPath& path) { path.desktop.send(motion(5, 5, 10, 10)); },
         Fate::unchanged,
         {.unidentified = 1, .passedThrough = 1}},
        {"wheel",
         [](EventPath& path) { path.mouse.spin(-1); },
         Fate::suppressed,
         {.fromTargetDevice = 1, .scrollHandled = 1, .suppressed = 1}},
        {"continuous wheel", fromMouse(continuous), Fate::unchanged, targetPassed},
        {"wheel that does not move", fromMouse(wheel(0, 0)), Fate::unchanged, targetPassed},
        {"free button",
         [](EventPath& path) { path.mouse.press(3); },
         Fate::unchanged,
         {.fromTargetDevice = 1, .buttonsHandled = 1, .passedThrough = 1}},
        {"bound button",
         [](EventPath& path) { path.mouse.press(4); },
         Fate::suppressed,
         {.fromTargetDevice = 1, .buttonsHandled = 1, .suppressed = 1}},
        {"motion", [](EventPath& path) { path.mouse.move(4, -3); }, Fate::rewritten, targetMoved},
        {"drag of another button", fromMouse([] {
             CGEvent event = motion(4, -3, 8, -6);
             event.type = CGEventType::otherMouseDragged;
             return event;
         }()),
         Fate::rewritten, targetMoved},
        {"motion by nothing", fromMouse(motion(0, 0, 8, 8)), Fate::unchanged, targetPassed},
        {"motion by an infinity", fromMouse(motion(infinity, 1, 8, 8)), Fate::unchanged,
         targetPassed},
        {"motion by no number", fromMouse(motion(1, std::nan(""), 8, 8)), Fate::unchanged,
         targetPassed},
        {"type that has nothing to do with mice", fromMouse(ofType(CGEventType::keyDown)),
         Fate::unchanged, targetPassed},
        {"gesture", fromMouse(ofType(static_cast<CGEventType>(29))), Fate::unchanged, targetPassed},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EventPath path(dispatcher, withABoundButton());
        const SimulatedPassage passage = path.passageOf([&] { row.act(path); });
        Metrics counted = path.router.snapshotMetrics();
        if (row.fate == Fate::suppressed) {
            EXPECT_FALSE(passage.delivered);
            counted.selfEmittedSeen = 0;  // the key that the button was bound to has come back
        } else if (row.fate == Fate::unchanged) {
            EXPECT_EQ(passage.delivered, passage.entered);
        } else {
            ASSERT_TRUE(passage.delivered);
            EXPECT_EQ(passage.delivered->integerValue(CGEventField::mouseEventDeltaX), 4);
            EXPECT_EQ(passage.delivered->integerValue(CGEventField::mouseEventDeltaY), -3);
        }
        EXPECT_EQ(counted, row.counted);
        path.takeReceived();
    }
}

TEST_F(InputRouterTest, own_output_reaches_neither_the_scope_nor_a_pipeline) {
    EventPath path(dispatcher, withABoundButton());
    path.scope.resetCounters();
    path.poster->postScrollStep(ScrollAxis::vertical, 12, ScrollPhase::began, ModifierFlags::none);
    path.poster->postKey(keyOfTheBinding, true, ModifierFlags::none);
    EXPECT_EQ(path.takeReceived().size(), 2U);
    EXPECT_EQ(path.router.snapshotMetrics(), Metrics{.selfEmittedSeen = 2});
    EXPECT_EQ(path.scope.snapshotCounters(), DeviceScope::Counters{});
    EXPECT_EQ(path.scroll.snapshotMetrics(), ScrollPipeline::Metrics{});

    path.router.setSwallowsOwnOutput(true);
    path.poster->postMouseButton(4, false);
    EXPECT_THAT(path.takeReceived(), IsEmpty());
    EXPECT_EQ(path.router.snapshotMetrics(), Metrics{.selfEmittedSeen = 3});
}

TEST_F(InputRouterTest, a_click_of_the_wheel_reaches_the_application_as_one_gesture) {
    EventPath path(dispatcher);
    path.mouse.send(wheel(-2, 5));
    const auto received = path.takeReceived();
    ASSERT_GE(received.size(), 3U);
    std::int64_t vertical = 0;
    for (const CGEvent& event : received) {
        EXPECT_EQ(event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis2), 0)
            << "the vertical way wins over the sideways one";
        vertical += event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis1);
    }
    EXPECT_LT(vertical, 0);
    EXPECT_EQ(vertical, -path.scroll.snapshotMetrics().pixelsPosted);
    EXPECT_EQ(received.front().integerValue(CGEventField::scrollWheelEventScrollPhase), 1);
    EXPECT_EQ(received.back().integerValue(CGEventField::scrollWheelEventScrollPhase), 4);
}

TEST_F(InputRouterTest, motion_with_the_curve_off_is_the_systems) {
    EventPathOptions options;
    options.pointer.isEnabled = false;
    EventPath path(dispatcher, options);
    const auto passage = path.passageOf([&] { path.mouse.move(4, -3); });
    EXPECT_EQ(passage.delivered, passage.entered);
    EXPECT_EQ(path.router.snapshotMetrics(),
              (Metrics{.fromTargetDevice = 1, .pointerSkippedDisabled = 1, .passedThrough = 1}));
    EXPECT_EQ(path.pointer.snapshotMetrics().samplesSeen, 0);
}

TEST_F(InputRouterTest, motion_moves_the_cursor_by_the_curves_pixels_or_corrects_the_systems) {
    struct Row {
        const char* name;
        bool repositionsCursor;
        bool movesCursor;
        double dx;  // of the event's location, from where the cursor was
        std::int64_t delta;
    };
    // The system makes 10 points of 5 counts, and the curve half of what it is given.
    const Row rows[] = {
        {"raw counts, with a mover", true, true, 2, 2},
        {"the system's points, corrected", true, false, 5, 5},
        {"the system's points, the cursor left alone", false, false, 10, 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EventPathOptions options{.repositionsCursor = row.repositionsCursor,
                                 .movesCursor = row.movesCursor};
        options.pointer.curve.sensitivity = 0.5;
        EventPath path(dispatcher, options);
        const CGPoint before = path.desktop.displays().cursor();
        const auto passage = path.passageOf([&] { path.mouse.move(5, 0); });
        ASSERT_TRUE(passage.delivered);
        EXPECT_EQ(passage.delivered->location, (CGPoint{.x = before.x + row.dx, .y = before.y}));
        EXPECT_EQ(path.desktop.displays().cursor(), passage.delivered->location);
        EXPECT_EQ(passage.delivered->integerValue(CGEventField::mouseEventDeltaX), row.delta);
        EXPECT_EQ(path.router.snapshotMetrics().pointerHandled, 1);
    }
}

TEST_F(InputRouterTest,
       a_cursor_that_will_not_move_lets_the_event_through_and_drops_the_fractions) {
    EventPathOptions options;
    options.pointer.curve.sensitivity = 0.75;
    EventPath path(dispatcher, options);
    path.mouse.move(1, 0);  // three quarters of a pixel wait
    dispatcher.runReady();
    const auto resetsBefore = path.pointer.snapshotMetrics().accumulatorResets;

    path.desktop.displays().refuseWarps(1);
    const auto refused = path.passageOf([&] { path.mouse.move(1, 0); });
    EXPECT_EQ(refused.delivered, refused.entered);
    EXPECT_EQ(path.router.snapshotMetrics(),
              (Metrics{.fromTargetDevice = 2, .pointerHandled = 1, .passedThrough = 1}));
    EXPECT_EQ(path.pointer.snapshotMetrics().accumulatorResets, resetsBefore + 1);

    const auto next = path.passageOf([&] { path.mouse.move(1, 0); });
    ASSERT_TRUE(next.delivered);
    EXPECT_EQ(next.delivered->integerValue(CGEventField::mouseEventDeltaX), 0);
}

TEST_F(InputRouterTest, only_wheel_events_say_how_far_their_time_strays) {
    EventPath path(dispatcher);
    const auto sendAt = [&](CGEvent event, std::int64_t millisFromNow) {
        event.hidEventReference = path.mouse.id();
        const auto at = dispatcher.now() + std::chrono::milliseconds(millisFromNow);
        event.timestampNanos = static_cast<std::uint64_t>(at.time_since_epoch().count());
        path.desktop.send(event);
        dispatcher.runReady();
    };
    sendAt(motion(1, 1, 2, 2), -100);
    sendAt(wheel(1, 0), -7);
    sendAt(wheel(1, 0), 3);
    EXPECT_DOUBLE_EQ(path.router.snapshotMetrics().maxClockSkewMillis, 7);
    path.router.resetMetrics();
    CGEvent timeless = wheel(1, 0);
    timeless.hidEventReference = path.mouse.id();
    path.desktop.send(timeless);
    dispatcher.runReady();
    EXPECT_EQ(path.router.snapshotMetrics().maxClockSkewMillis, 0) << "it counts as of now";
    path.takeReceived();
}

TEST_F(InputRouterTest, a_reset_of_all_lets_go_of_keys_first_and_then_ends_gestures) {
    EventPathOptions options;
    options.buttons = {{.button = 4, .action = HoldAction{.code = keyOfTheBinding}}};
    options.pointer.curve.sensitivity = 0.75;
    EventPath path(dispatcher, options);
    path.mouse.press(4);
    path.mouse.spin(1);
    path.mouse.move(1, 0);
    dispatcher.advance(std::chrono::milliseconds(30));
    path.application.takeReceived();

    path.router.resetAll();
    const auto received = path.takeReceived();
    ASSERT_EQ(received.size(), 2U);
    EXPECT_EQ(received[0].type, CGEventType::keyUp);
    EXPECT_EQ(received[1].integerValue(CGEventField::scrollWheelEventScrollPhase), 4);
    EXPECT_EQ(path.pointer.snapshotMetrics().accumulatorResets, 2);
    EXPECT_THAT(path.desktop.sessionState().keysDown(), IsEmpty());

    const auto release = path.passageOf([&] { path.mouse.release(4); });
    EXPECT_EQ(release.delivered, release.entered) << "nobody is left to want it";
}

}  // namespace
}  // namespace tessara
