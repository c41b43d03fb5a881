#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/KeyboardEventPoster.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Lines = std::vector<std::string>;

constexpr ModifierFlags shift = ModifierFlags::shift;
constexpr ModifierFlags command = ModifierFlags::command;
constexpr std::uint16_t leftCommand = 55;
constexpr std::uint16_t letterC = 8;
constexpr std::uint16_t letterV = 9;

class KeyboardEventPosterTest : public testing::VirtualTimeTest {
  protected:
    KeyboardEventPosterTest() { desktop.workspace().bringToFront(application); }

    Lines press(std::uint16_t code, ModifierFlags modifiers = {}) {
        return posted(code, true, modifiers);
    }
    Lines release(std::uint16_t code, ModifierFlags modifiers = {}) {
        return posted(code, false, modifiers);
    }

    /// What the application is told of one stroke: kind, code and flags of each event.
    Lines posted(std::uint16_t code, bool isDown, ModifierFlags modifiers) {
        dispatcher.runReady();
        application.takeReceived();
        poster.post(code, isDown, modifiers, location);
        dispatcher.runReady();
        Lines lines;
        for (const CGEvent& event : application.takeReceived()) {
            EXPECT_TRUE(isTessaraEmitted(event));
            lines.push_back(fmt::format("{} {} {:x}", kind(event.type),
                                        event.integerValue(CGEventField::keyboardEventKeycode),
                                        event.flags));
        }
        return lines;
    }

    static const char* kind(CGEventType type) {
        switch (type) {
            case CGEventType::keyDown:
                return "down";
            case CGEventType::keyUp:
                return "up";
            case CGEventType::flagsChanged:
                return "flags";
            default:
                return "?";
        }
    }

    SimulatedDesktop desktop{dispatcher};
    SimulatedApplication& application = desktop.workspace().install("org.example.a", "A");
    CGEventTapLocation location = CGEventTapLocation::session;
    KeyboardEventPoster poster{desktop.eventServices()};
};

TEST_F(KeyboardEventPosterTest, each_modifier_key_goes_down_and_up_with_its_own_two_flags) {
    const struct {
        std::uint16_t code;
        std::uint64_t flags;
    } rows[] = {{59, 0x40001}, {58, 0x80020}, {56, 0x20002}, {55, 0x100008}, {63, 0x800000},
                {62, 0x42000}, {61, 0x80040}, {60, 0x20004}, {54, 0x100010}};
    for (const auto at : {CGEventTapLocation::session, CGEventTapLocation::hid}) {
        location = at;
        for (const auto& row : rows) {
            EXPECT_THAT(press(row.code),
                        ElementsAre(fmt::format("flags {} {:x}", row.code, row.flags)));
            EXPECT_THAT(release(row.code), ElementsAre(fmt::format("flags {} 0", row.code)));
        }
    }
}

TEST_F(KeyboardEventPosterTest, a_chord_goes_down_in_table_order_and_up_in_reverse) {
    EXPECT_THAT(press(letterC, ModifierFlags::bindable),
                ElementsAre("flags 59 40001", "flags 58 c0021", "flags 56 e0023", "flags 55 1e002b",
                            "flags 63 9e002b", "down 8 9e002b"));
    EXPECT_THAT(release(letterC), ElementsAre("up 8 9e002b", "flags 63 1e002b", "flags 55 e0023",
                                              "flags 56 c0021", "flags 58 40001", "flags 59 0"))
        << "the press's modifiers count, whatever the release says";
}

TEST_F(KeyboardEventPosterTest, a_modifier_as_the_key_takes_the_place_of_its_family) {
    constexpr std::uint16_t rightCommand = 54;
    constexpr std::uint16_t rightShift = 60;
    EXPECT_THAT(press(rightCommand, shift), ElementsAre("flags 56 20002", "flags 54 120012"));
    EXPECT_THAT(release(rightCommand), ElementsAre("flags 54 20002", "flags 56 0"));
    EXPECT_THAT(press(rightShift, shift | command),
                ElementsAre("flags 55 100008", "flags 60 12000c"));
    EXPECT_THAT(release(rightShift), ElementsAre("flags 60 100008", "flags 55 0"));
}

TEST_F(KeyboardEventPosterTest, a_modifier_that_the_user_holds_is_neither_pressed_nor_released) {
    desktop.keyboard().press(leftCommand);
    EXPECT_THAT(press(letterC, command), ElementsAre("down 8 100008"));
    EXPECT_THAT(release(letterC), ElementsAre("up 8 100008"));

    EXPECT_THAT(press(letterC, shift), ElementsAre("flags 56 12000a", "down 8 12000a"))
        << "what the user holds shows beside what is made";
    EXPECT_THAT(release(letterC), ElementsAre("up 8 12000a", "flags 56 100008"));

    EXPECT_THAT(press(letterC, command), ElementsAre("down 8 100008"));
    desktop.keyboard().release(leftCommand);
    EXPECT_THAT(release(letterC), ElementsAre("up 8 100008", "flags 55 0"))
        << "the user has let go of it meanwhile";
}

TEST_F(KeyboardEventPosterTest, a_modifier_that_the_user_takes_over_is_left_to_the_user) {
    EXPECT_THAT(press(letterC, command), ElementsAre("flags 55 100008", "down 8 100008"));
    desktop.keyboard().press(leftCommand);
    EXPECT_THAT(release(letterC), ElementsAre("up 8 100008"));
    desktop.keyboard().release(leftCommand);
    dispatcher.runReady();
    EXPECT_THAT(desktop.sessionState().keysDown(), IsEmpty());
}

TEST_F(KeyboardEventPosterTest, own_inventions_are_not_taken_for_the_users_fingers) {
    // At the HID location a post shows in the very state that tells what the user holds.
    location = CGEventTapLocation::hid;
    EXPECT_THAT(press(letterC, command), ElementsAre("flags 55 100008", "down 8 100008"));
    EXPECT_TRUE(desktop.hardwareState().isKeyDown(leftCommand));
    EXPECT_THAT(press(letterV, command | shift), ElementsAre("flags 56 12000a", "down 9 12000a"));
    EXPECT_THAT(release(letterV), ElementsAre("up 9 12000a", "flags 56 100008"));
    EXPECT_THAT(release(letterC), ElementsAre("up 8 100008", "flags 55 0"));
    EXPECT_FALSE(desktop.hardwareState().isKeyDown(leftCommand));

    desktop.keyboard().press(leftCommand);
    EXPECT_THAT(press(letterC, command), ElementsAre("down 8 100008")) << "the finger's own";
    EXPECT_THAT(release(letterC), ElementsAre("up 8 100008"));
}

TEST_F(KeyboardEventPosterTest, caps_lock_shows_while_it_is_on_and_where_a_stroke_asks_for_it) {
    EXPECT_THAT(press(letterC, ModifierFlags::capsLock), ElementsAre("down 8 10000"));
    EXPECT_THAT(release(letterC), ElementsAre("up 8 10000"));
    EXPECT_THAT(press(letterC, ModifierFlags::capsLock | command),
                ElementsAre("flags 55 100008", "down 8 110008"))
        << "the modifier's own event shows the real state";
    EXPECT_THAT(release(letterC), ElementsAre("up 8 110008", "flags 55 0"));

    desktop.keyboard().toggleCapsLock();
    EXPECT_THAT(press(letterC, command), ElementsAre("flags 55 110008", "down 8 110008"));
    EXPECT_THAT(release(letterC), ElementsAre("up 8 110008", "flags 55 10000"));
}

TEST_F(KeyboardEventPosterTest, a_release_of_a_key_that_is_not_held_goes_by_its_own_modifiers) {
    EXPECT_THAT(release(letterC, command), ElementsAre("up 8 0"));
    EXPECT_THAT(release(leftCommand), IsEmpty());
}

TEST_F(KeyboardEventPosterTest, what_the_system_will_not_make_is_dropped_and_the_books_go_on) {
    desktop.eventServices().refuseSources(1);
    EXPECT_THAT(press(letterC, command), IsEmpty());
    EXPECT_THAT(release(letterC, command), ElementsAre("up 8 0")) << "that press was never made";

    desktop.eventServices().refuseEvents(2);
    EXPECT_THAT(press(letterC, command), IsEmpty());
    EXPECT_THAT(release(letterC), ElementsAre("up 8 100008", "flags 55 0"));
}

}  // namespace
}  // namespace tessara
