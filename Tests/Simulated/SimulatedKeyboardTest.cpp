#include <gmock/gmock.h>

#include "Platform/ModifierKeys.h"
#include "Platform/Simulated/SimulatedKeyboard.h"
#include "SimulatedDesktopTest.h"

namespace tessara::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class SimulatedKeyboardTest : public SimulatedDesktopTest {
  protected:
    std::uint64_t flags(EventSourceState state) {
        desktop.settle();
        return desktop.eventServices().flagsState(state);
    }

    SimulatedKeyboard& keyboard = desktop.keyboard();
};

TEST_F(SimulatedKeyboardTest, each_modifier_shows_its_own_flags_while_it_is_held) {
    for (const auto& key : modifierKeys) {
        keyboard.press(key.code);
        EXPECT_EQ(flags(EventSourceState::hidSystem), key.familyFlag | key.deviceFlag);
        EXPECT_EQ(flags(EventSourceState::combinedSession), key.familyFlag | key.deviceFlag);
        EXPECT_TRUE(desktop.eventServices().keyState(EventSourceState::hidSystem, key.code));
        keyboard.release(key.code);
        EXPECT_EQ(flags(EventSourceState::hidSystem), 0U);

        const auto events = received();
        ASSERT_THAT(events, SizeIs(2));
        EXPECT_EQ(events[0].type, CGEventType::flagsChanged);
        EXPECT_EQ(events[0].flags, key.familyFlag | key.deviceFlag);
        EXPECT_EQ(events[1].flags, 0U);
    }
}

TEST_F(SimulatedKeyboardTest, the_right_key_of_a_pair_stays_down_when_the_left_one_goes_up) {
    keyboard.press(56);
    keyboard.press(60);
    keyboard.release(56);
    desktop.settle();
    EXPECT_THAT(desktop.sessionState().keysDown(), ElementsAre(60));
    EXPECT_THAT(desktop.hardwareState().keysDown(), ElementsAre(60));
    keyboard.release(60);
    desktop.settle();
    EXPECT_THAT(desktop.sessionState().keysDown(), IsEmpty());
}

TEST_F(SimulatedKeyboardTest, a_modifier_event_without_device_flags_is_believed_by_its_family) {
    CGEvent command;
    command.type = CGEventType::flagsChanged;
    command.flags = CGEventFlagMask::command;
    command.setIntegerValue(CGEventField::keyboardEventKeycode, 55);
    desktop.eventServices().post(command, CGEventTapLocation::session);
    EXPECT_EQ(flags(EventSourceState::combinedSession), CGEventFlagMask::command | 0x8);
    EXPECT_EQ(flags(EventSourceState::hidSystem), 0U);
    EXPECT_EQ(flags(EventSourceState::privateState), 0U);
}

}  // namespace
}  // namespace tessara::testing
