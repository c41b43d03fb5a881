#include <gmock/gmock.h>

#include "Platform/Linux/LinuxEventServices.h"
#include "Platform/Linux/VirtualKeyboard.h"
#include "Platform/Linux/VirtualMouse.h"
#include "RecordingFrameSink.h"
#include "TessaraEngine/CGEventPoster.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Frame = std::vector<FrameEvent>;

constexpr std::uint16_t keyC = 8;
constexpr std::uint16_t keyLeftCommand = 55;
constexpr std::uint16_t keyRightShift = 60;

class LinuxEventServicesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(mouse.open().has_value());
        ASSERT_TRUE(keyboard.open().has_value());
    }

    static Frame keyFrame(int code, int value) { return {{EV_KEY, code, value}}; }

    RecordedFrames output;
    KeyboardState hardware;
    PressedKeys fingers{hardware};
    VirtualMouse mouse{output.opener()};
    VirtualKeyboard keyboard{output.opener()};
    LinuxEventServices services{mouse, keyboard, hardware};
    CGEventPoster poster{services, CGEventTapLocation::session};
};

TEST_F(LinuxEventServicesTest, a_chord_puts_its_modifiers_down_first_and_lifts_them_last) {
    const auto modifiers = ModifierFlags::command | ModifierFlags::shift;
    poster.postKey(keyC, true, modifiers);
    EXPECT_TRUE(services.keyState(EventSourceState::combinedSession, keyC));
    EXPECT_FALSE(services.keyState(EventSourceState::hidSystem, keyC));
    EXPECT_EQ(services.flagsState(EventSourceState::combinedSession), 0x12000AU);
    EXPECT_EQ(services.flagsState(EventSourceState::hidSystem), 0U);
    poster.postKey(keyC, false, modifiers);
    EXPECT_THAT(output.take(), ElementsAre(keyFrame(KEY_LEFTSHIFT, 1), keyFrame(KEY_LEFTMETA, 1),
                                           keyFrame(KEY_C, 1), keyFrame(KEY_C, 0),
                                           keyFrame(KEY_LEFTMETA, 0), keyFrame(KEY_LEFTSHIFT, 0)));
}

TEST_F(LinuxEventServicesTest, a_modifier_that_the_user_holds_is_neither_pressed_nor_released) {
    fingers.set(KEY_LEFTMETA, true);
    fingers.set(KEY_RIGHTSHIFT, true);
    EXPECT_TRUE(services.keyState(EventSourceState::hidSystem, keyLeftCommand));
    poster.postKey(keyC, true, ModifierFlags::command | ModifierFlags::control);
    poster.postKey(keyC, false, {});
    EXPECT_THAT(output.take(), ElementsAre(keyFrame(KEY_LEFTCTRL, 1), keyFrame(KEY_C, 1),
                                           keyFrame(KEY_C, 0), keyFrame(KEY_LEFTCTRL, 0)));

    // One that the user takes over goes up on the virtual keyboard, or it would stay down there.
    fingers.set(KEY_LEFTMETA, false);
    poster.postKey(keyC, true, ModifierFlags::command);
    fingers.set(KEY_LEFTMETA, true);
    poster.postKey(keyC, false, {});
    EXPECT_THAT(output.take(), ElementsAre(keyFrame(KEY_LEFTMETA, 1), keyFrame(KEY_C, 1),
                                           keyFrame(KEY_C, 0), keyFrame(KEY_LEFTMETA, 0)));

    // A held modifier of the other side does not keep one of ours from going up.
    poster.postKey(keyC, true, ModifierFlags::shift);
    poster.postKey(keyC, false, {});
    EXPECT_THAT(output.take(), ElementsAre(keyFrame(KEY_LEFTSHIFT, 1), keyFrame(KEY_C, 1),
                                           keyFrame(KEY_C, 0), keyFrame(KEY_LEFTSHIFT, 0)));
}

TEST_F(LinuxEventServicesTest, each_post_is_one_frame_on_the_device_it_belongs_to) {
    poster.postScrollStep(ScrollAxis::vertical, 50, ScrollPhase::began, ModifierFlags::shift);
    poster.postScrollStep(ScrollAxis::horizontal, 50, ScrollPhase::changed, {});
    poster.postScrollStep(ScrollAxis::vertical, 0, ScrollPhase::ended, {});
    poster.postMouseButton(2, true);
    poster.postMouseButton(2, false);
    poster.postKey(keyRightShift, true, {});
    poster.postKey(keyRightShift, false, {});
    poster.postKey(1000, true, {});
    EXPECT_THAT(output.take(),
                ElementsAre(Frame{{EV_REL, REL_WHEEL, 1}, {EV_REL, REL_WHEEL_HI_RES, 120}},
                            Frame{{EV_REL, REL_HWHEEL, -1}, {EV_REL, REL_HWHEEL_HI_RES, -120}},
                            keyFrame(BTN_MIDDLE, 1), keyFrame(BTN_MIDDLE, 0),
                            keyFrame(KEY_RIGHTSHIFT, 1), keyFrame(KEY_RIGHTSHIFT, 0)));

    const auto source = services.makeSource(EventSourceState::privateState);
    services.post(*services.makeScrollWheelEvent(*source, ScrollEventUnit::line, -2, 0),
                  CGEventTapLocation::session);
    services.post(*services.makeMouseEvent(*source, CGEventType::mouseMoved, {.x = 5, .y = 5}, 0),
                  CGEventTapLocation::session);
    EXPECT_THAT(output.take(),
                ElementsAre(Frame{{EV_REL, REL_WHEEL, -2}, {EV_REL, REL_WHEEL_HI_RES, -240}}));
}

}  // namespace
}  // namespace tessara
