#include <array>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Linux/VirtualDevices.h"
#include "RecordingFrameSink.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Frame = std::vector<FrameEvent>;

constexpr input_event key(std::uint16_t code, std::int32_t value) {
    return {.time = {}, .type = EV_KEY, .code = code, .value = value};
}
constexpr input_event relative(std::uint16_t code, std::int32_t value) {
    return {.time = {}, .type = EV_REL, .code = code, .value = value};
}
constexpr input_event report{.time = {}, .type = EV_SYN, .code = SYN_REPORT, .value = 0};

class VirtualMouseTest : public ::testing::Test {
  protected:
    RecordedFrames output;
    VirtualMouse mouse{output.opener()};
};

TEST_F(VirtualMouseTest, whatever_is_held_is_released_before_the_device_goes) {
    ASSERT_TRUE(mouse.open().has_value());
    ASSERT_TRUE(mouse.open().has_value());
    EXPECT_EQ(output.opened, 1);
    EXPECT_FALSE(mouse.write(std::array{key(BTN_MIDDLE, 1)})) << "a frame without its end";
    EXPECT_TRUE(mouse.write(std::array{key(BTN_SIDE, 1), relative(REL_X, 3), report}));
    mouse.setButton(0, true);
    mouse.setButton(15, true);
    mouse.setButton(0, false);
    mouse.setButton(16, true);
    mouse.setButton(-1, true);
    EXPECT_TRUE(mouse.isButtonDown(3));
    EXPECT_FALSE(mouse.isButtonDown(0));
    output.take();

    mouse.close();
    EXPECT_THAT(output.take(),
                ElementsAre(Frame{{EV_KEY, BTN_SIDE, 0}}, Frame{{EV_KEY, BTN_LEFT + 15, 0}}));
    EXPECT_FALSE(mouse.isButtonDown(3));
    EXPECT_EQ(output.alive, 0);
    EXPECT_FALSE(mouse.write(std::array{relative(REL_X, 1), report}));
}

TEST_F(VirtualMouseTest, a_release_that_cannot_be_written_is_made_good_later) {
    output.refuses = true;
    EXPECT_EQ(mouse.open().error(), std::errc::permission_denied);
    output.refuses = false;
    ASSERT_TRUE(mouse.open().has_value());
    mouse.setButton(0, true);
    output.refuses = true;
    mouse.setButton(0, false);
    mouse.setButton(1, true);
    EXPECT_TRUE(mouse.isButtonDown(0));
    EXPECT_FALSE(mouse.isButtonDown(1));
    output.refuses = false;
    output.take();
    mouse.releaseAll();
    EXPECT_THAT(output.take(), ElementsAre(Frame{{EV_KEY, BTN_LEFT, 0}}));
}

TEST_F(VirtualMouseTest,
       wheels_turn_in_their_own_directions_and_a_line_that_passes_turns_them_too) {
    ASSERT_TRUE(mouse.open().has_value());
    mouse.scroll(49, 49);
    mouse.scroll(1, 1);
    mouse.scroll(0, 0);
    EXPECT_THAT(output.take(), ElementsAre(Frame{{EV_REL, REL_WHEEL_HI_RES, 117},
                                                 {EV_REL, REL_HWHEEL_HI_RES, -117}},
                                           Frame{{EV_REL, REL_WHEEL, 1},
                                                 {EV_REL, REL_WHEEL_HI_RES, 3},
                                                 {EV_REL, REL_HWHEEL, -1},
                                                 {EV_REL, REL_HWHEEL_HI_RES, -3}}));
    // 49 pixels are on their way up and left when the wheel itself turns down and left.
    mouse.scroll(49, 49);
    EXPECT_TRUE(mouse.write(std::array{relative(REL_WHEEL, -1), relative(REL_HWHEEL, -1), report}));
    output.take();
    mouse.scroll(1, 1);
    EXPECT_THAT(output.take(), ElementsAre(Frame{{EV_REL, REL_WHEEL_HI_RES, 2},
                                                 {EV_REL, REL_HWHEEL, -1},
                                                 {EV_REL, REL_HWHEEL_HI_RES, -3}}));
}

TEST(VirtualDevices, a_mouse_without_a_keyboard_does_not_stay) {
    RecordedFrames mouseOutput;
    RecordedFrames keyboardOutput;
    keyboardOutput.refuses = true;
    VirtualDevices devices{.mouse = VirtualMouse(mouseOutput.opener()),
                           .keyboard = VirtualKeyboard(keyboardOutput.opener())};
    EXPECT_EQ(devices.open().error(), std::errc::permission_denied);
    EXPECT_EQ(mouseOutput.alive, 0);
    keyboardOutput.refuses = false;
    EXPECT_TRUE(devices.open().has_value());
    EXPECT_EQ(mouseOutput.alive, 1);
}

TEST(KeyboardState, a_key_is_down_while_any_keyboard_holds_it) {
    KeyboardState state;
    PressedKeys desk(state);
    {
        PressedKeys other(state);
        desk.set(KEY_LEFTSHIFT, true);
        other.set(KEY_LEFTSHIFT, true);
        other.set(KEY_LEFTSHIFT, true);
        desk.set(KEY_LEFTSHIFT, false);
        desk.set(0xFFFF, true);
        EXPECT_EQ(state.flags(), 0x20002U);
        other.setCapsLock(true);
        other.replace(PressedKeys::Keys().set(KEY_RIGHTALT).set(KEY_A));
        EXPECT_EQ(state.flags(), 0x80040U | 0x10000U);
        EXPECT_TRUE(state.isDown(KEY_A));
    }
    EXPECT_EQ(state.flags(), 0U);
    EXPECT_FALSE(state.isDown(KEY_A));
    EXPECT_FALSE(state.isDown(0xFFFF));
}

}  // namespace
}  // namespace tessara
