#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "Platform/Linux/MouseFrameTranslator.h"

namespace tessara {
namespace {

constexpr std::uint64_t everything = ~std::uint64_t{0};
constexpr std::uint16_t side = BTN_LEFT + 3;

struct Code {
    std::uint16_t type;
    std::uint16_t code;
    std::int32_t value;
};
constexpr Code x(std::int32_t value) {
    return {EV_REL, REL_X, value};
}
constexpr Code y(std::int32_t value) {
    return {EV_REL, REL_Y, value};
}
constexpr Code wheel(std::int32_t lines) {
    return {EV_REL, REL_WHEEL, lines};
}
constexpr Code fine(std::int32_t units) {
    return {EV_REL, REL_WHEEL_HI_RES, units};
}
constexpr Code tilt(std::int32_t lines) {
    return {EV_REL, REL_HWHEEL, lines};
}
constexpr Code fineTilt(std::int32_t units) {
    return {EV_REL, REL_HWHEEL_HI_RES, units};
}
constexpr Code key(std::uint16_t code, bool isDown) {
    return {EV_KEY, code, isDown ? 1 : 0};
}
constexpr Code scan(std::int32_t usage) {
    return {EV_MSC, MSC_SCAN, usage};
}
using Codes = std::vector<Code>;

std::string inWords(MouseFrameTranslator::Frame frame) {
    std::vector<std::string> words;
    for (const input_event& event : frame)
        words.push_back(fmt::format("{}/{:x}={}", event.type, event.code, event.value));
    return fmt::format("{}", fmt::join(words, " "));
}

std::vector<input_event> frameOf(const Codes& codes) {
    std::vector<input_event> frame;
    for (const auto& [type, code, value] : codes)
        frame.push_back(
            {.time = {.tv_sec = 2, .tv_usec = 5}, .type = type, .code = code, .value = value});
    frame.push_back(
        {.time = {.tv_sec = 2, .tv_usec = 5}, .type = EV_SYN, .code = SYN_REPORT, .value = 0});
    return frame;
}

/// "" for a frame that is not written.
std::string written(const Codes& codes) {
    return codes.empty() ? "" : inWords(frameOf(codes));
}

/// A mouse whose tap writes down what it is shown, and refuses the types that it is told to.
class Mouse {
  public:
    explicit Mouse(std::uint64_t eventsOfInterest = everything)
        : translator_(7, eventsOfInterest) {}

    std::string send(const Codes& codes) {
        shown.clear();
        return inWords(translator_.translate(frameOf(codes), flags, tap_));
    }
    std::string letGo() { return inWords(translator_.releasePassed()); }

    std::vector<CGEventType> refused;
    std::optional<std::pair<std::int64_t, std::int64_t>> rewrittenMotion;
    std::uint64_t flags = CGEventFlagMask::shift;
    std::vector<CGEvent> shown;

  private:
    MouseFrameTranslator translator_;
    EventTapService::Callback tap_ = [this](CGEventType type, CGEvent& event) {
        shown.push_back(event);
        if (rewrittenMotion) {
            event.setIntegerValue(CGEventField::mouseEventDeltaX, rewrittenMotion->first);
            event.setIntegerValue(CGEventField::mouseEventDeltaY, rewrittenMotion->second);
        }
        return std::ranges::find(refused, type) == refused.end();
    };
};

TEST(MouseFrameTranslator,
     what_the_tap_lets_pass_goes_on_as_it_came_in_the_order_in_which_it_came) {
    const Codes all{scan(0x90001), key(BTN_LEFT, true), x(3),     y(-2),
                    wheel(1),      fine(120),           tilt(-1), fineTilt(-120)};
    Mouse mouse;
    EXPECT_EQ(mouse.send(all), written(all));
    ASSERT_EQ(mouse.shown.size(), 4U);
    EXPECT_EQ(mouse.shown[0].type, CGEventType::leftMouseDown);
    EXPECT_EQ(mouse.shown[1].type, CGEventType::leftMouseDragged);
    EXPECT_EQ(mouse.shown[1].integerValue(CGEventField::mouseEventDeltaX), 3);
    EXPECT_EQ(mouse.shown[1].integerValue(CGEventField::mouseEventDeltaY), -2);
    EXPECT_EQ(mouse.shown[1].doubleValue(CGEventField::unacceleratedPointerMovementY), -2);
    EXPECT_EQ(mouse.shown[2].type, CGEventType::scrollWheel);
    EXPECT_EQ(mouse.shown[2].integerValue(CGEventField::scrollWheelEventDeltaAxis1), 1);
    EXPECT_EQ(mouse.shown[3].integerValue(CGEventField::scrollWheelEventDeltaAxis1), 0);
    EXPECT_EQ(mouse.shown[3].integerValue(CGEventField::scrollWheelEventDeltaAxis2), 1)
        << "to the left, which is positive in events and negative in the kernel";
    for (const CGEvent& event : mouse.shown) {
        EXPECT_EQ(event.hidEventReference, 7U);
        EXPECT_EQ(event.flags, CGEventFlagMask::shift);
        EXPECT_EQ(event.timestampNanos, 2'000'005'000U);
    }
}

TEST(MouseFrameTranslator, a_motion_is_of_the_type_of_the_lowest_button_that_is_held) {
    struct Step {
        Codes frame;
        CGEventType motion;
        std::int64_t button;
    };
    const std::vector<Step> steps{
        {{x(1)}, CGEventType::mouseMoved, 0},
        {{key(side, true), x(1)}, CGEventType::otherMouseDragged, 3},
        {{key(BTN_RIGHT, true), key(BTN_MIDDLE, true), x(1)}, CGEventType::rightMouseDragged, 1},
        {{key(BTN_RIGHT, false), x(1)}, CGEventType::otherMouseDragged, 2},
        {{x(1), key(BTN_MIDDLE, false), key(side, false)}, CGEventType::otherMouseDragged, 2},
        {{y(1)}, CGEventType::mouseMoved, 0},
    };
    Mouse mouse;
    mouse.refused = {CGEventType::otherMouseDown};  // the hand holds it all the same
    for (const Step& step : steps) {
        mouse.send(step.frame);
        const auto motion = std::ranges::find_if(mouse.shown, [](const CGEvent& event) {
            return event.integerValue(CGEventField::mouseEventDeltaX) +
                       event.integerValue(CGEventField::mouseEventDeltaY) ==
                   1;
        });
        ASSERT_NE(motion, mouse.shown.end());
        EXPECT_EQ(motion->type, step.motion);
        EXPECT_EQ(motion->integerValue(CGEventField::mouseEventButtonNumber), step.button);
    }
}

TEST(MouseFrameTranslator, what_the_tap_refuses_is_left_out_of_the_frame) {
    struct Case {
        const char* name;
        CGEventType refused;
        Codes in;
        Codes out;
    };
    const std::vector<Case> cases{
        {"a button with its scan code",
         CGEventType::otherMouseDown,
         {scan(4), key(side, true), scan(1), key(BTN_LEFT, true), x(1)},
         {scan(1), key(BTN_LEFT, true), x(1)}},
        {"all there is", CGEventType::scrollWheel, {wheel(1), fine(120)}, {}},
        {"both wheels",
         CGEventType::scrollWheel,
         {x(1), wheel(1), fine(120), tilt(1), fineTilt(120)},
         {x(1)}},
        {"a motion",
         CGEventType::mouseMoved,
         {x(1), y(1), wheel(1), fine(120)},
         {wheel(1), fine(120)}},
    };
    for (const Case& one : cases) {
        Mouse mouse;
        mouse.refused = {one.refused};
        EXPECT_EQ(mouse.send(one.in), written(one.out)) << one.name;
    }
}

TEST(MouseFrameTranslator, a_rewritten_motion_goes_out_in_the_place_of_the_old_one) {
    const std::vector<std::pair<std::pair<std::int64_t, std::int64_t>, Codes>> cases{
        {{10, -20}, {x(10), y(-20), wheel(1), fine(120)}},
        {{0, 5}, {y(5), wheel(1), fine(120)}},
        {{0, 0}, {wheel(1), fine(120)}},
        {{std::int64_t{1} << 40, 0},
         {x(std::numeric_limits<std::int32_t>::max()), wheel(1), fine(120)}},
    };
    for (const auto& [motion, out] : cases) {
        Mouse mouse;
        mouse.rewrittenMotion = motion;
        EXPECT_EQ(mouse.send({x(3), wheel(1), fine(120)}), written(out));
    }
}

TEST(MouseFrameTranslator, a_fine_turn_without_a_line_shares_the_fate_of_its_wheels_lines) {
    struct Step {
        Codes in;
        bool refuses;
        Codes out;
    };
    const std::vector<Step> steps{
        // Not known yet: kept, and passed with the line.
        {{fine(30)}, false, {}},
        {{fine(60), x(1)}, false, {x(1)}},
        {{wheel(1), fine(30)}, false, {wheel(1), fine(120)}},
        // Lines pass, and so does what lies between them.
        {{fine(45)}, false, {fine(45)}},
        {{fineTilt(60)}, false, {}},
        {{fine(75), wheel(1)}, true, {}},
        // Lines are taken, and so is what lies between them.
        {{fine(-60)}, true, {}},
        {{wheel(-1), fine(-60)}, true, {}},
        {{fine(-20)}, false, {}},
        {{wheel(-1), fine(-100)}, false, {wheel(-1), fine(-120)}},
        {{fineTilt(60), tilt(1)}, false, {tilt(1), fineTilt(120)}},
        // A wheel without fine values gets them.
        {{wheel(2)}, false, {wheel(2), fine(240)}},
    };
    Mouse mouse;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        mouse.refused.clear();
        if (steps[i].refuses) mouse.refused = {CGEventType::scrollWheel};
        EXPECT_EQ(mouse.send(steps[i].in), written(steps[i].out)) << "step " << i;
    }
}

TEST(MouseFrameTranslator, a_button_that_was_let_down_is_always_let_up) {
    Mouse mouse;
    mouse.send({key(BTN_LEFT, true)});
    mouse.refused = {CGEventType::leftMouseUp, CGEventType::otherMouseDown,
                     CGEventType::otherMouseUp};
    EXPECT_EQ(mouse.send({key(side, true)}), "");
    EXPECT_EQ(mouse.send({key(side, false), key(BTN_LEFT, false)}),
              written({key(BTN_LEFT, false)}));
    EXPECT_EQ(mouse.shown.size(), 2U) << "the tap hears of both";
}

TEST(MouseFrameTranslator, a_mouse_that_is_let_go_of_is_forgotten_and_what_was_let_down_let_up) {
    Mouse mouse;
    mouse.refused = {CGEventType::otherMouseDown};
    mouse.send({key(BTN_LEFT, true), key(side, true), fine(30)});
    EXPECT_EQ(mouse.letGo(), written({key(BTN_LEFT, false)}));
    const Codes later{x(1), wheel(1), fine(90)};
    EXPECT_EQ(mouse.send(later), written(later));
    EXPECT_EQ(mouse.shown.front().type, CGEventType::mouseMoved);
}

TEST(MouseFrameTranslator, what_nobody_asks_for_is_not_shown_and_passes) {
    Mouse mouse(std::uint64_t{1} << static_cast<unsigned>(CGEventType::scrollWheel));
    mouse.refused = {CGEventType::leftMouseDown, CGEventType::scrollWheel};
    EXPECT_EQ(mouse.send({key(BTN_LEFT, true), x(1), wheel(1), fine(120)}),
              written({key(BTN_LEFT, true), x(1)}));
    EXPECT_EQ(mouse.shown.size(), 1U);
}

}  // namespace
}  // namespace tessara
