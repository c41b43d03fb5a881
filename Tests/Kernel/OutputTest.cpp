#include <algorithm>
#include <chrono>
#include <csignal>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <linux/input.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Kernel/EngineSession.h"
#include "Kernel/EventNode.h"
#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/VirtualDeviceIdentity.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "TessaraEngine/EngineStatus.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara::testing {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using namespace std::chrono_literals;

constexpr std::uint16_t keyA = 0;
constexpr std::uint16_t keyB = 11;

/// The key and button events of frames, in order.
std::vector<NodeEvent> keysOf(const std::vector<NodeFrame>& frames) {
    std::vector<NodeEvent> keys;
    for (const auto& frame : frames)
        std::ranges::copy_if(frame.events, std::back_inserter(keys),
                             [](const NodeEvent& event) { return event.type == EV_KEY; });
    return keys;
}

std::int64_t sumOf(const std::vector<NodeFrame>& frames, std::uint16_t axis) {
    std::int64_t sum = 0;
    for (const auto& frame : frames)
        sum += frame.sumOf(EV_REL, axis);
    return sum;
}

/// A document of one profile that tunes no motion.
Config document(std::vector<ButtonBinding> buttons = {}, ScrollSettings scroll = {}) {
    Profile profile{.id = "default",
                    .name = "Default",
                    .scroll = scroll,
                    .pointer = {.isEnabled = false},
                    .buttons = std::move(buttons)};
    return {.profiles = {std::move(profile)}, .ruleSet = {.defaultProfileID = "default"}};
}

/// A node of the program's, found by name.
std::unique_ptr<EventNode> nodeOf(const VirtualDeviceIdentity& identity) {
    const auto path = EventNode::pathNamed(identity.name);
    if (!path) throw std::runtime_error(std::string(identity.name) + " has no node");
    return std::make_unique<EventNode>(*path);
}

/// Drops what has come until now.
void forget(EventNode& node) {
    while (node.next(0s)) {
    }
}

/// The mouse in the kernel and the engine between it and whoever reads the virtual devices.
class OutputTest : public ::testing::Test {
  protected:
    void start(const Config& config) {
        mouse.plug();
        session = std::make_unique<EngineSession>(config);
        outMouse = nodeOf(virtualMouseIdentity);
        outKeyboard = nodeOf(virtualKeyboardIdentity);
        meetMouse();
    }

    /// Waits until the engine takes the mouse's events for its own and would hear of an unplug.
    void meetMouse() {
        const auto isKnown = [this] {
            const std::int64_t before = status().scope.target;
            mouse.pointer().press(1);
            mouse.pointer().release(1);
            static_cast<void>(outMouse->next(20ms));
            forget(*outMouse);
            const EngineStatus after = status();
            return after.scope.target > before && after.hidConnection.isConnected();
        };
        EXPECT_TRUE(waitFor(isKnown, 3 * patience)) << "the mouse is not taken up";
        static_cast<void>(outMouse->framesUntilQuiet());
    }

    EngineStatus status() {
        EngineStatus status;
        session->run([&status](TessaraEngine& engine) {
            engine.refreshMetrics();
            status = engine.status();
        });
        return status;
    }

    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse{dispatcher, firmware};
    std::unique_ptr<EngineSession> session;
    std::unique_ptr<EventNode> outMouse;
    std::unique_ptr<EventNode> outKeyboard;
};

TEST_F(OutputTest, a_click_comes_out_as_a_glide_of_one_detent) {
    struct Case {
        PointerReport report;
        std::uint16_t lines;
        std::uint16_t units;
        int sign;
    };
    start(document());
    for (const auto& [report, lines, units, sign] :
         {Case{{.wheel = 1}, REL_WHEEL, REL_WHEEL_HI_RES, 1},
          Case{{.wheel = -1}, REL_WHEEL, REL_WHEEL_HI_RES, -1},
          Case{{.pan = 1}, REL_HWHEEL, REL_HWHEEL_HI_RES, 1},
          Case{{.pan = -1}, REL_HWHEEL, REL_HWHEEL_HI_RES, -1}}) {
        mouse.pointer().send(report);
        const auto frames = outMouse->framesUntil({EV_REL, lines, sign});  // the detent's end
        EXPECT_THAT(frames, SizeIs(22));  // one for each step that moves
        EXPECT_EQ(sumOf(frames, units), 120 * sign);
        EXPECT_EQ(sumOf(frames, lines), sign);
        EXPECT_THAT(outMouse->framesUntilQuiet(), IsEmpty());
    }
}

TEST_F(OutputTest, chained_clicks_add_up_to_the_unit_and_a_reversal_starts_afresh) {
    start(document());
    for (int click = 0; click < 4; ++click)
        mouse.pointer().spin(1);
    const auto chain = outMouse->framesUntilQuiet(1s);
    const std::int64_t pixels = status().scroll.pixelsPosted;
    EXPECT_GT(pixels, 4 * 50);
    EXPECT_EQ(sumOf(chain, REL_WHEEL_HI_RES), pixels * 120 / 50);
    EXPECT_EQ(sumOf(chain, REL_WHEEL), pixels / 50);

    mouse.pointer().spin(1);
    ASSERT_TRUE(outMouse->next().has_value());
    mouse.pointer().spin(-1);
    auto frames = outMouse->framesUntil({EV_REL, REL_WHEEL, -1});
    std::erase_if(frames,
                  [](const NodeFrame& frame) { return frame.sumOf(EV_REL, REL_WHEEL_HI_RES) > 0; });
    EXPECT_EQ(sumOf(frames, REL_WHEEL_HI_RES), -120);
    EXPECT_EQ(sumOf(frames, REL_WHEEL), -1);
}

TEST_F(OutputTest, unbound_buttons_pass_and_bound_ones_do_what_they_are_bound_to) {
    std::vector<ButtonBinding> bindings;
    for (std::int64_t button = 8; button < 15; ++button)
        bindings.push_back({.button = button, .action = KeyStrokeAction{.code = keyA}});
    bindings.push_back(
        {.button = 15, .action = SequenceAction{.steps = {MouseButtonStep{.number = 9}}}});
    start(document(bindings));

    std::vector<NodeEvent> expectedButtons;
    std::vector<NodeEvent> expectedKeys;
    for (unsigned button = 0; button < 16; ++button) {
        mouse.pointer().press(button);
        mouse.pointer().release(button);
        const bool strokes = button >= 8 && button < 15;
        const auto code =
            static_cast<std::uint16_t>(strokes ? KEY_A : BTN_LEFT + (button == 15 ? 9 : button));
        auto& expected = strokes ? expectedKeys : expectedButtons;
        expected.push_back({EV_KEY, code, 1});
        expected.push_back({EV_KEY, code, 0});
    }
    EXPECT_THAT(keysOf(outMouse->framesUntilQuiet(1s)), ElementsAreArray(expectedButtons));
    EXPECT_THAT(keysOf(outKeyboard->framesUntilQuiet()), ElementsAreArray(expectedKeys));
}

TEST_F(OutputTest, a_chord_is_pressed_in_order_and_an_unplug_lets_go_of_what_is_held) {
    start(document(
        {{.button = 3,
          .action =
              HoldAction{.code = keyA, .modifiers = ModifierFlags::control | ModifierFlags::shift}},
         {.button = 4,
          .action = RepeatWhileHeldAction{.step = KeyStep{.code = keyB}, .intervalMillis = 10}}}));
    const auto press = [](std::uint16_t code) { return NodeEvent{EV_KEY, code, 1}; };
    const auto release = [](std::uint16_t code) { return NodeEvent{EV_KEY, code, 0}; };

    mouse.pointer().press(3);
    EXPECT_THAT(keysOf(outKeyboard->framesUntil(press(KEY_A))),
                ElementsAreArray({press(KEY_LEFTCTRL), press(KEY_LEFTSHIFT), press(KEY_A)}));
    mouse.pointer().press(0);
    static_cast<void>(outMouse->framesUntil(press(BTN_LEFT)));
    mouse.pointer().press(4);
    for (int stroke = 0; stroke < 3; ++stroke)
        static_cast<void>(outKeyboard->framesUntil(press(KEY_B)));

    mouse.unplug();
    static_cast<void>(outMouse->framesUntil(release(BTN_LEFT)));
    auto last = keysOf(outKeyboard->framesUntil(release(KEY_LEFTCTRL)));
    // The button of the repeat counts as released after that of the chord.
    EXPECT_THAT(outKeyboard->framesUntilQuiet(), SizeIs(::testing::Le(2)));
    std::erase_if(last, [](const NodeEvent& event) { return event.code == KEY_B; });
    EXPECT_THAT(last,
                ElementsAreArray({release(KEY_A), release(KEY_LEFTSHIFT), release(KEY_LEFTCTRL)}));
    EXPECT_THAT(outKeyboard->heldKeys(), IsEmpty());

    mouse.plug();
    meetMouse();
    mouse.pointer().press(3);
    static_cast<void>(outKeyboard->framesUntil(press(KEY_A)));
}

TEST_F(OutputTest, random_sessions_end_with_nothing_held) {
    start(document({
        {.button = 3, .action = HoldAction{.code = keyA, .modifiers = ModifierFlags::command}},
        {.button = 4,
         .action = RepeatWhileHeldAction{.step = KeyStep{.code = keyB}, .intervalMillis = 40}},
        {.button = 5,
         .action = SequenceAction{.steps = {KeyDownStep{.code = 8}, MouseButtonStep{.number = 1},
                                            DelayStep{.millis = 20}, KeyUpStep{.code = 8}}}},
        {.button = 6, .action = SequenceAction{.steps = {KeyDownStep{.code = 60}}}},
    }));
    std::mt19937 random(20);
    const auto upTo = [&random](int most) {
        return std::uniform_int_distribution(0, most)(random);
    };
    for (int round = 0; round < 6; ++round) {
        for (int event = 0; event < 150; ++event) {
            const auto button = static_cast<unsigned>(upTo(7));
            switch (upTo(3)) {
                case 0:
                    mouse.pointer().release(button);
                    break;
                case 1:
                    mouse.pointer().press(button);
                    break;
                case 2:
                    mouse.pointer().spin(static_cast<std::int8_t>(upTo(2) - 1));
                    break;
                default:
                    mouse.pointer().move(1, 1);
            }
            forget(*outKeyboard);
            forget(*outMouse);
        }
        if (round % 2 == 0) {
            mouse.unplug();
            EXPECT_TRUE(waitFor([&] {
                return outKeyboard->heldKeys().empty() && outMouse->heldKeys().empty();
            })) << round;
            mouse.plug();
            meetMouse();
        } else {
            session->run([](TessaraEngine& engine) { engine.activateProfile(std::nullopt); });
        }
    }
    session->run([](TessaraEngine& engine) { engine.stop(); });
    EXPECT_TRUE(waitFor([this] { return outMouse->heldKeys().empty(); }));
    EXPECT_THAT(outKeyboard->heldKeys(), IsEmpty());
}

/// A process that runs the engine, to be killed. Made before this one has threads.
pid_t forkSession(const Config& config) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    const EngineSession session(config);
    while (true)
        ::pause();
}

TEST(KilledSession, the_mouse_works_as_before_and_nothing_is_held) {
    const pid_t child = forkSession(document({{.button = 3, .action = HoldAction{.code = keyA}}}));
    ASSERT_GT(child, 0);
    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse(dispatcher, firmware);
    mouse.plug();
    {
        const auto outKeyboard = nodeOf(virtualKeyboardIdentity);
        EXPECT_TRUE(waitFor([&] {  // until the engine knows the mouse, its buttons pass
            mouse.pointer().press(3);
            if (outKeyboard->next(100ms)) return true;
            mouse.pointer().release(3);
            return outKeyboard->next(20ms).has_value();
        }));
        const auto outMouse = nodeOf(virtualMouseIdentity);
        mouse.pointer().press(0);
        static_cast<void>(outMouse->framesUntil({EV_KEY, BTN_LEFT, 1}));
    }
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);

    EXPECT_TRUE(waitFor([] {
        return !EventNode::exists(virtualMouseIdentity.name) &&
               !EventNode::exists(virtualKeyboardIdentity.name);
    }));
    EventNode node(mouse.pointer().eventNode());
    mouse.pointer().release(0);
    mouse.pointer().press(1);
    EXPECT_THAT(keysOf(node.framesUntil({EV_KEY, BTN_RIGHT, 1})),
                ElementsAreArray({NodeEvent{EV_KEY, BTN_LEFT, 0}, {EV_KEY, BTN_RIGHT, 1}}));
    EXPECT_TRUE(node.grab(true));
}

}  // namespace
}  // namespace tessara::testing
