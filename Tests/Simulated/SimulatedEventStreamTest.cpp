#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedEventStream.h"
#include "SimulatedDesktopTest.h"

namespace tessara::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using enum CGEventTapLocation;
using enum CGEventTapPlacement;

CGEvent wheelEvent() {
    CGEvent event;
    event.type = CGEventType::scrollWheel;
    event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, 1);
    return event;
}

std::int64_t lines(const CGEvent& event) {
    return event.integerValue(CGEventField::scrollWheelEventDeltaAxis1);
}

class SimulatedEventStreamTest : public SimulatedDesktopTest {
  protected:
    SimulatedPointingDevice& mouse = desktop.attachTargetMouse();
};

TEST_F(SimulatedEventStreamTest, an_event_passes_the_taps_by_location_and_then_by_placement) {
    std::vector<std::string> seen;
    std::vector<std::unique_ptr<EventTap>> taps;
    const auto place = [&](const char* name, CGEventTapLocation location,
                           CGEventTapPlacement placement) {
        taps.push_back(
            install({.location = location, .placement = placement, .eventsOfInterest = allEvents},
                    [&seen, name](CGEventType, CGEvent&) {
                        seen.emplace_back(name);
                        return true;
                    }));
    };
    place("annotated", annotatedSession, headInsert);
    place("session 2", session, headInsert);
    place("session 3", session, tailAppend);
    place("hid 1", hid, tailAppend);
    place("session 1", session, headInsert);
    place("hid 2", hid, tailAppend);

    mouse.spin(1);
    desktop.settle();
    EXPECT_THAT(seen,
                ElementsAre("hid 1", "hid 2", "session 1", "session 2", "session 3", "annotated"));

    const std::vector<std::pair<CGEventTapLocation, std::size_t>> posts{
        {hid, 6}, {session, 4}, {annotatedSession, 1}};
    for (const auto& [location, count] : posts) {
        seen.clear();
        desktop.eventServices().post(wheelEvent(), location);
        desktop.settle();
        EXPECT_THAT(seen, SizeIs(count)) << "posted at " << static_cast<int>(location);
    }
    EXPECT_THAT(received(), SizeIs(4));
}

TEST_F(SimulatedEventStreamTest, what_a_tap_changes_goes_on_and_what_it_drops_does_not) {
    const auto doubling = install([](CGEventType, CGEvent& event) {
        event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, lines(event) * 2);
        return lines(event) != 6;
    });
    for (const int count : {1, 3, 5})
        mouse.spin(count);

    const auto events = received();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(lines(events[0]), 2);
    EXPECT_EQ(lines(events[1]), 10);

    const auto journal = desktop.events().takeJournal();
    ASSERT_THAT(journal, SizeIs(3));
    EXPECT_EQ(lines(journal[1].entered), 3);
    EXPECT_FALSE(journal[1].delivered);
    EXPECT_EQ(journal[2].delivered, events[1]);
    EXPECT_EQ(journal[2].application, &editor);
}

TEST_F(SimulatedEventStreamTest, a_tap_that_only_listens_changes_nothing_and_sees_what_goes_by) {
    std::vector<std::int64_t> heard;
    const auto listener =
        install({.options = CGEventTapOptions::listenOnly, .eventsOfInterest = allEvents},
                [&](CGEventType, CGEvent& event) {
                    heard.push_back(lines(event));
                    event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, 99);
                    return false;
                });
    mouse.spin(1);
    mouse.spin(2);
    const auto events = received();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(lines(events[0]), 1);
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre(1, 2));
}

TEST_F(SimulatedEventStreamTest, a_tap_sees_the_types_that_it_asked_for) {
    std::vector<CGEventType> seen;
    const auto tap = install({.eventsOfInterest = std::uint64_t{1} << 22 | std::uint64_t{1} << 29},
                             [&](CGEventType type, CGEvent&) {
                                 seen.push_back(type);
                                 return true;
                             });
    CGEvent gesture;
    gesture.type = CGEventType{29};
    CGEvent beyond;
    beyond.type = CGEventType{64 + 22};

    mouse.spin(1);
    mouse.click(0);
    mouse.send(gesture);
    mouse.send(beyond);
    EXPECT_THAT(received(), SizeIs(5));
    EXPECT_THAT(seen, ElementsAre(CGEventType::scrollWheel, CGEventType{29}));
}

TEST_F(SimulatedEventStreamTest, the_system_does_not_wait_for_the_verdict_of_a_tap_it_disables) {
    const auto tap = install([&](CGEventType type, CGEvent& event) {
        if (type != CGEventType::scrollWheel) return true;
        event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, 99);
        desktop.disableTapsByTimeout();
        return false;
    });
    mouse.spin(1);
    mouse.spin(2);
    const auto events = received();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(lines(events[0]), 1);
    EXPECT_EQ(lines(events[1]), 2);
    dispatcher.runReady();
}

TEST_F(SimulatedEventStreamTest, a_tap_can_go_away_while_an_event_is_on_its_way) {
    auto later = install([](CGEventType, CGEvent&) { return false; });
    std::unique_ptr<EventTap> earlier;
    earlier = install([&](CGEventType, CGEvent&) {
        later.reset();
        earlier.reset();
        return true;
    });
    mouse.spin(1);
    mouse.spin(2);
    EXPECT_THAT(received(), SizeIs(2));
    EXPECT_EQ(desktop.taps().count(), 0U);
}

TEST_F(SimulatedEventStreamTest, taps_and_posts_need_permission) {
    const auto drops = [](CGEventType, CGEvent&) { return false; };
    const EventTapRequest listening{.options = CGEventTapOptions::listenOnly};

    const auto tap = install(drops);
    desktop.permissions().revokeAccessibility();
    EXPECT_FALSE(tap->isEnabled());
    tap->setEnabled(true);
    EXPECT_FALSE(tap->isEnabled());
    EXPECT_FALSE(install(drops));
    EXPECT_TRUE(install(listening, drops));
    desktop.eventServices().post(wheelEvent(), session);
    EXPECT_THAT(received(), IsEmpty());
    mouse.spin(1);
    EXPECT_THAT(received(), SizeIs(1));
    dispatcher.runReady();

    desktop.permissions().grantAccessibility();
    EXPECT_TRUE(install(drops));
    tap->setEnabled(true);
    EXPECT_TRUE(tap->isEnabled());
    desktop.permissions().revokeInputMonitoring();
    EXPECT_FALSE(install(listening, drops));

    desktop.taps().refuseTaps(1);
    EXPECT_FALSE(install(drops));
    EXPECT_TRUE(install(drops));
}

TEST_F(SimulatedEventStreamTest, posted_keys_count_for_the_states_behind_their_entrance) {
    const auto isDown = [&](EventSourceState state) {
        return desktop.eventServices().keyState(state, 12);
    };
    const auto post = [&](CGEventType type, CGEventTapLocation location) {
        CGEvent key;
        key.type = type;
        key.setIntegerValue(CGEventField::keyboardEventKeycode, 12);
        desktop.eventServices().post(key, location);
        desktop.settle();
    };
    for (const auto location : {hid, session, annotatedSession}) {
        post(CGEventType::keyDown, location);
        EXPECT_EQ(isDown(EventSourceState::hidSystem), location == hid);
        EXPECT_TRUE(isDown(EventSourceState::combinedSession));
        EXPECT_FALSE(isDown(EventSourceState::privateState));
        post(CGEventType::keyUp, location);
        EXPECT_FALSE(isDown(EventSourceState::hidSystem));
        EXPECT_FALSE(isDown(EventSourceState::combinedSession));
    }
}

TEST_F(SimulatedEventStreamTest, a_dropped_press_is_down_for_the_hardware_alone) {
    auto tap = install([](CGEventType, CGEvent&) { return false; });
    mouse.press(0);
    desktop.settle();
    EXPECT_THAT(desktop.hardwareState().buttonsDown(), ElementsAre(0));
    EXPECT_THAT(desktop.sessionState().buttonsDown(), IsEmpty());

    tap.reset();
    mouse.move(3, 0);
    EXPECT_EQ(received().at(0).type, CGEventType::leftMouseDragged);
}

}  // namespace
}  // namespace tessara::testing
