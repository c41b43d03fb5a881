#include <map>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TessaraCore/ButtonRouter.h"
#include "TessaraCore/Overloaded.h"

namespace tessara {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr ModifierFlags none = ModifierFlags::none;
constexpr ModifierFlags shift = ModifierFlags::shift;
constexpr ModifierFlags control = ModifierFlags::control;
constexpr ModifierFlags command = ModifierFlags::command;
constexpr ModifierFlags capsLock = ModifierFlags::capsLock;

using Intents = std::vector<ButtonIntent>;

ButtonRouter routerOf(std::vector<ButtonBinding> bindings) {
    return {std::move(bindings), 2000};
}

TEST(ButtonRouter, each_action_asks_for_its_own_at_the_press_and_at_the_release) {
    struct Case {
        const char* name;
        Action action;
        Intents atPress;
        Intents atRelease;
    };
    const MacroStep key = KeyStep{4, none};
    const Case cases[] = {
        {"pass through",
         PassThroughAction{},
         {PassThroughButtonIntent{4, true}},
         {PassThroughButtonIntent{4, false}}},
        {"key stroke",
         KeyStrokeAction{8, shift},
         {KeyDownIntent{8, shift}, KeyUpIntent{8, shift}},
         {}},
        {"sequence",
         SequenceAction{{KeyDownStep{8, shift}, DelayStep{5}, KeyUpStep{8, shift},
                         MouseButtonStep{3}, DelayStep{-5}}},
         {KeyDownIntent{8, shift}, DelayIntent{5}, KeyUpIntent{8, shift}, MouseButtonDownIntent{3},
          MouseButtonUpIntent{3}, DelayIntent{0}},
         {}},
        {"empty sequence", SequenceAction{}, {}, {}},
        {"hold", HoldAction{8, shift}, {KeyDownIntent{8, shift}}, {KeyUpIntent{8, shift}}},
        {"repeat",
         RepeatWhileHeldAction{key, 30},
         {KeyDownIntent{4, none}, KeyUpIntent{4, none},
          StartRepeatIntent{{.id = 4, .step = key, .intervalMillis = 30, .startedAtMillis = 100}}},
         {StopRepeatIntent{4}}},
        {"repeat without a pause",
         RepeatWhileHeldAction{DelayStep{1}, 0},
         {DelayIntent{1},
          StartRepeatIntent{
              {.id = 4, .step = DelayStep{1}, .intervalMillis = 1, .startedAtMillis = 100}}},
         {StopRepeatIntent{4}}},
        {"resolution", DPIShiftAction{400}, {SetDPIIntent{400}}, {SetDPIIntent{2000}}},
        {"same resolution", DPIShiftAction{2000}, {}, {}},
        {"launch", LaunchAppAction{"org.a"}, {LaunchAppIntent{"org.a"}}, {}},
        {"shortcut", RunShortcutAction{"Tidy"}, {RunShortcutIntent{"Tidy"}}, {}}};
    for (const auto& [name, action, atPress, atRelease] : cases) {
        SCOPED_TRACE(name);
        ButtonRouter router = routerOf({{.button = 4, .action = action}});
        EXPECT_EQ(router.handle(ButtonEvent::down(4, 100)), atPress);
        EXPECT_EQ(router.heldAction(4), action);
        EXPECT_EQ(router.held().at(4), (ButtonRouter::HeldState{action, 100, none}));
        EXPECT_THAT(router.handle(ButtonEvent::down(4, 105)), IsEmpty()) << "a second press";
        EXPECT_EQ(router.handle(ButtonEvent::up(4, 110)), atRelease);
        EXPECT_EQ(router, routerOf({{.button = 4, .action = action}}));
    }
}

TEST(ButtonRouter, the_binding_that_asks_for_most_of_what_is_held_is_chosen) {
    const auto bound = [](ModifierFlags modifiers, std::int64_t dpi, std::int64_t button = 4,
                          bool isEnabled = true) {
        return ButtonBinding{.button = button,
                             .modifiers = modifiers,
                             .action = DPIShiftAction{dpi},
                             .isEnabled = isEnabled};
    };
    const std::vector<ButtonBinding> ladder{bound(none, 1), bound(shift, 2), bound(control, 3),
                                            bound(shift | control, 4)};
    struct Case {
        const char* name;
        std::vector<ButtonBinding> bindings;
        ModifierFlags held;
        std::int64_t dpi;  // 0 for pass-through
    };
    const Case cases[] = {
        {"nothing held", ladder, none, 1},
        {"one held", ladder, control, 3},
        {"two and another held", ladder, shift | control | command, 4},
        {"caps lock held", ladder, shift | capsLock, 2},
        {"the lower bit wins", {bound(command, 5), bound(shift, 6)}, shift | command, 6},
        {"the earlier wins", {bound(shift, 5), bound(shift, 6)}, shift, 5},
        {"stored bits that do not count",
         {bound(shift | capsLock, 5), bound(shift | ModifierFlags{64U}, 6)},
         shift,
         5},
        {"not enough held", {bound(shift, 5)}, command, 0},
        {"disabled", {bound(none, 5, 4, false)}, none, 0},
        {"another button", {bound(none, 5, 5)}, none, 0},
        {"no bindings", {}, none, 0}};
    for (const auto& [name, bindings, held, dpi] : cases) {
        const Action expected = dpi == 0 ? Action{PassThroughAction{}} : DPIShiftAction{dpi};
        EXPECT_EQ(routerOf(bindings).action(4, held), expected) << name;
    }
}

TEST(ButtonRouter, a_release_ends_what_the_press_began_whatever_has_changed_since) {
    ButtonRouter router =
        routerOf({{.button = 4, .action = HoldAction{1, none}},
                  {.button = 4, .modifiers = shift, .action = HoldAction{2, shift}}});
    EXPECT_THAT(router.press(ButtonEvent::down(4, 0, shift)), ElementsAre(KeyDownIntent{2, shift}));
    router.setBindings({});
    EXPECT_THAT(router.release(ButtonEvent::up(4, 1, none)), ElementsAre(KeyUpIntent{2, shift}));
}

TEST(ButtonRouter, a_key_that_two_buttons_hold_goes_down_once_and_up_once) {
    ButtonRouter router = routerOf({{.button = 4, .action = HoldAction{7, shift}},
                                    {.button = 5, .action = HoldAction{7, shift}},
                                    {.button = 6, .action = HoldAction{7, none}}});
    EXPECT_THAT(router.press(ButtonEvent::down(4, 0)), ElementsAre(KeyDownIntent{7, shift}));
    EXPECT_THAT(router.press(ButtonEvent::down(5, 1)), IsEmpty());
    EXPECT_THAT(router.press(ButtonEvent::down(6, 2)), ElementsAre(KeyDownIntent{7, none}));
    EXPECT_THAT(router.release(ButtonEvent::up(4, 3)), IsEmpty());
    EXPECT_THAT(router.release(ButtonEvent::up(5, 4)), ElementsAre(KeyUpIntent{7, shift}));
    EXPECT_THAT(router.release(ButtonEvent::up(6, 5)), ElementsAre(KeyUpIntent{7, none}));
}

TEST(ButtonRouter, the_newest_shift_of_the_resolution_that_is_still_held_is_in_force) {
    struct Step {
        ButtonEvent event;
        Intents expected;
        std::int64_t dpi;
    };
    using E = ButtonEvent;
    const std::vector<std::vector<Step>> sequences{
        {{E::down(4, 0), {SetDPIIntent{800}}, 800},
         {E::down(5, 1), {SetDPIIntent{1600}}, 1600},
         {E::up(4, 2), {}, 1600},
         {E::up(5, 3), {SetDPIIntent{2000}}, 2000}},
        {{E::down(4, 0), {SetDPIIntent{800}}, 800},
         {E::down(5, 1), {SetDPIIntent{1600}}, 1600},
         {E::up(5, 2), {SetDPIIntent{800}}, 800},
         {E::up(4, 3), {SetDPIIntent{2000}}, 2000}},
        {{E::down(4, 0), {SetDPIIntent{800}}, 800},
         {E::down(6, 1), {}, 800},
         {E::up(4, 2), {}, 800},
         {E::up(6, 3), {SetDPIIntent{2000}}, 2000}},
    };
    for (const auto& sequence : sequences) {
        ButtonRouter router = routerOf({{.button = 4, .action = DPIShiftAction{800}},
                                        {.button = 5, .action = DPIShiftAction{1600}},
                                        {.button = 6, .action = DPIShiftAction{800}}});
        for (const auto& [event, expected, dpi] : sequence) {
            EXPECT_EQ(router.handle(event), expected) << event.timestampMillis;
            EXPECT_EQ(router.currentDPI(), dpi) << event.timestampMillis;
        }
    }
}

TEST(ButtonRouter, a_reset_takes_up_what_is_down_in_the_order_of_the_buttons) {
    ButtonRouter router = routerOf({{.button = 9, .action = HoldAction{7, shift}},
                                    {.button = 4, .action = HoldAction{7, shift}},
                                    {.button = 6, .action = RepeatWhileHeldAction{KeyStep{1}, 9}},
                                    {.button = 7, .action = DPIShiftAction{2000}},
                                    {.button = 8, .action = KeyStrokeAction{1}}});
    EXPECT_THAT(router.reset(), IsEmpty());
    for (const std::int64_t button : {9, 8, 7, 6, 4, 3}) {
        static_cast<void>(router.press(ButtonEvent::down(button, 0)));
    }
    EXPECT_EQ(router.heldButtons(), (std::set<std::int64_t>{3, 4, 6, 7, 8, 9}));
    router.setBaseDPI(1200);
    EXPECT_THAT(router.reset(), ElementsAre(PassThroughButtonIntent{3, false}, StopRepeatIntent{6},
                                            KeyUpIntent{7, shift}, SetDPIIntent{1200}));
    EXPECT_THAT(router.heldButtons(), IsEmpty());
    EXPECT_EQ(router.currentDPI(), 1200);
    EXPECT_THAT(router.release(ButtonEvent::up(9, 1)),
                ElementsAre(PassThroughButtonIntent{9, false}));
}

/// What an application would see of the intents: the balance of everything that can be left on.
class Outside {
  public:
    void take(const Intents& intents) {
        const auto change = [this](const char* kind, std::int64_t number, bool isOn) {
            balances_[{kind, number}] += isOn ? 1 : -1;
        };
        for (const ButtonIntent& intent : intents) {
            std::visit(
                Overloaded{
                    [&](const PassThroughButtonIntent& button) {
                        change("button", button.number, button.isDown);
                    },
                    [&](const KeyDownIntent& key) { change("key", idOf(key), true); },
                    [&](const KeyUpIntent& key) { change("key", idOf(key), false); },
                    [&](const StartRepeatIntent& repeat) {
                        change("repeat", repeat.token.id, true);
                    },
                    [&](const StopRepeatIntent& repeat) { change("repeat", repeat.id, false); },
                    [&](const SetDPIIntent& request) { dpi_ = request.dpi; },
                    [](const auto&) {},
                },
                intent);
        }
    }

    void expectNothingOn(std::int64_t baseDPI) const {
        for (const auto& [what, balance] : balances_)
            EXPECT_EQ(balance, 0) << what.first << ' ' << what.second;
        EXPECT_EQ(dpi_, baseDPI);
    }

  private:
    static std::int64_t idOf(const auto& key) {
        return key.code * 1000 + std::int64_t{key.modifiers.rawValue()};
    }

    std::map<std::pair<std::string, std::int64_t>, int> balances_;
    std::int64_t dpi_ = 2000;
};

TEST(ButtonRouter, whatever_a_random_hand_does_a_reset_leaves_nothing_on) {
    for (std::uint32_t seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](std::uint32_t limit) {
            return static_cast<std::uint32_t>(random() % limit);
        };
        const auto randomBindings = [&] {
            std::vector<ButtonBinding> bindings;
            for (std::uint32_t i = below(12); i > 0; --i) {
                const auto code = static_cast<std::uint16_t>(below(2));
                const ModifierFlags modifiers{below(8)};
                const Action actions[] = {PassThroughAction{},
                                          KeyStrokeAction{code, modifiers},
                                          SequenceAction{{KeyStep{code}}},
                                          HoldAction{code, modifiers},
                                          RepeatWhileHeldAction{KeyStep{code}, 5},
                                          DPIShiftAction{400 * (1 + std::int64_t{below(5)})}};
                bindings.push_back({.button = 3 + std::int64_t{below(5)},
                                    .modifiers = ModifierFlags{below(64)},
                                    .action = actions[below(6)],
                                    .isEnabled = below(8) != 0});
            }
            return bindings;
        };
        ButtonRouter router = routerOf(randomBindings());
        Outside outside;
        for (int i = 0; i < 200; ++i) {
            const std::int64_t button = 3 + std::int64_t{below(5)};
            // A mouse lets go only of what it pressed.
            const bool isDown = !router.heldButtons().contains(button);
            if (below(20) == 0) router.setBindings(randomBindings());
            outside.take(router.handle({.button = button,
                                        .isDown = isDown,
                                        .modifiers = ModifierFlags{below(64)},
                                        .timestampMillis = static_cast<double>(i)}));
        }
        outside.take(router.reset());
        outside.expectNothingOn(router.baseDPI());
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace tessara
