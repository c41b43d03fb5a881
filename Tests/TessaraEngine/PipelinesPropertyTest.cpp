#include <random>
#include <set>

#include <gmock/gmock.h>

#include "EngineTest.h"
#include "Support/GestureChecker.h"
#include "TessaraCore/Overloaded.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/ScrollPipeline.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

constexpr std::int64_t baseDPI = 2000;
/// Keys and macro buttons of epoch n are numbered from n times this, so that each tells its epoch.
constexpr int epochStride = 10;

/// Random bindings and events, the same for each seed.
class Dice {
  public:
    explicit Dice(unsigned seed) : random_(seed) {}

    int upTo(int greatest) { return std::uniform_int_distribution(0, greatest)(random_); }
    bool oneIn(int chances) { return upTo(chances - 1) == 0; }

    ModifierFlags modifiers() {
        return oneIn(3)   ? ModifierFlags::shift
               : oneIn(3) ? ModifierFlags::control
                          : ModifierFlags();
    }

    std::vector<ButtonBinding> bindings(int epoch) {
        std::vector<ButtonBinding> bindings;
        for (int i = 0; i < 12; ++i) {
            bindings.push_back({.button = 3 + upTo(4),
                                .modifiers = modifiers(),
                                .action = action(epoch),
                                .isEnabled = !oneIn(8)});
        }
        return bindings;
    }

  private:
    /// Few keys, so that actions meet on them.
    std::uint16_t key(int epoch) {
        return static_cast<std::uint16_t>(epoch * epochStride + upTo(3));
    }

    MacroStep step(int epoch) {
        switch (upTo(4)) {
            case 0:
                return KeyStep{.code = key(epoch), .modifiers = modifiers()};
            case 1:
                return KeyDownStep{.code = key(epoch), .modifiers = modifiers()};
            case 2:
                return KeyUpStep{.code = key(epoch), .modifiers = modifiers()};
            case 3:
                return DelayStep{.millis = double(upTo(300) - 20)};
            default:
                return MouseButtonStep{.number = key(epoch)};
        }
    }

    Action action(int epoch) {
        switch (upTo(7)) {
            case 0:
                return PassThroughAction{};
            case 1:
                return KeyStrokeAction{.code = key(epoch), .modifiers = modifiers()};
            case 2:
            case 3: {
                SequenceAction sequence;
                for (int i = upTo(7); i > 0; --i)
                    sequence.steps.push_back(step(epoch));
                return sequence;
            }
            case 4:
            case 5:
                return HoldAction{.code = key(epoch), .modifiers = modifiers()};
            case 6:
                return RepeatWhileHeldAction{.step = step(epoch),
                                             .intervalMillis = double(upTo(40))};
            default:
                return DPIShiftAction{.toDPI = 400 * (1 + upTo(5))};
        }
    }

    std::mt19937 random_;
};

class PipelinesPropertyTest : public EngineTest {
  protected:
    /// Takes what was posted since the last call and says how much it was. Every key and macro
    /// button must be of the present epoch, unless it is let go of in the reset that ends its
    /// epoch.
    std::size_t observe(bool inReset = false) {
        const std::vector<Emission> emissions = poster->emissions();
        poster->reset();
        const auto isPresent = [&](std::int64_t number, bool isDown) {
            return number / epochStride == epoch || (inReset && !isDown);
        };
        for (const Emission& emission : emissions) {
            SCOPED_TRACE(description(emission));
            std::visit(Overloaded{
                           [&](const ScrollEmission& step) {
                               gestures.step(step.axis, step.pixelDelta, step.phase);
                           },
                           [&](const KeyEmission& key) {
                               EXPECT_TRUE(isPresent(key.code, key.isDown));
                               press(keysDown, key.code, key.isDown);
                           },
                           [&](const MouseButtonEmission& button) {
                               EXPECT_TRUE(isPresent(button.number, button.isDown));
                               press(buttonsDown, button.number, button.isDown);
                           },
                       },
                       emission);
        }
        EXPECT_THAT(gestures.faults(), IsEmpty());
        return emissions.size();
    }

    void wheel(Dice& dice) {
        const auto axis = dice.oneIn(3) ? ScrollAxis::horizontal : ScrollAxis::vertical;
        (void)scroll.handle({.lineDelta = dice.upTo(4) - 2,
                             .axis = axis,
                             .modifiers = dice.oneIn(6) ? dice.modifiers() : ModifierFlags(),
                             .timestampMillis = nowMillis()});
    }

    void pressOrRelease(Dice& dice) {
        const ButtonEvent event{.button = dice.upTo(7),
                                .isDown = dice.oneIn(2),
                                .modifiers = dice.modifiers(),
                                .timestampMillis = nowMillis()};
        if (buttons.handle(event) == ButtonDisposition::passThrough) {
            press(buttonsDown, event.button, event.isDown);
        }
    }

    void resetAndCheck(Dice& dice) {
        buttons.reset();
        scroll.reset();
        buttons.setBindings(dice.bindings(epoch + 1));
        dispatcher.runReady();
        observe(true);
        ++epoch;
        EXPECT_THAT(keysDown, IsEmpty());
        EXPECT_THAT(buttonsDown, IsEmpty());
        EXPECT_THAT(gestures.openAxes(), IsEmpty());
        EXPECT_THAT(executor->activeRepeatCount(), 0);
        if (const auto effects = sideEffects->effects(); !effects.empty()) {
            EXPECT_EQ(effects.back(), SideEffect(DPIRequest{baseDPI}));
        }
        if (dice.oneIn(3)) {
            dispatcher.advance(5s);
            EXPECT_EQ(observe(), 0U) << "nothing of the old epoch is left to post";
        }
    }

    template <typename Number>
    static void press(std::set<Number>& down, Number number, bool isDown) {
        if (isDown) {
            down.insert(number);
        } else {
            down.erase(number);
        }
    }

    const std::shared_ptr<MacroExecutor> executor =
        std::make_shared<MacroExecutor>(poster, sideEffects, dispatcher);
    ButtonPipeline buttons{ButtonRouter({}, baseDPI), executor};
    ScrollPipeline scroll{ScrollSettings{}, poster, dispatcher};

    int epoch = 0;
    std::set<std::uint16_t> keysDown;
    std::set<std::int64_t> buttonsDown;  // as applications see them, passed ones included
    testing::GestureChecker gestures;
};

TEST_F(PipelinesPropertyTest, whatever_happens_a_reset_leaves_nothing_down_and_nothing_to_come) {
    for (unsigned seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        Dice dice(seed);
        resetAndCheck(dice);
        for (int event = 0; event < 300 && !HasFailure(); ++event) {
            SCOPED_TRACE(::testing::Message() << "event " << event);
            switch (dice.upTo(9)) {
                case 0:
                case 1:
                case 2:
                    wheel(dice);
                    break;
                case 3:
                    dice.oneIn(3) ? resetAndCheck(dice) : wheel(dice);
                    break;
                case 4:
                case 5:
                    dispatcher.advance(std::chrono::milliseconds(dice.upTo(150)));
                    break;
                default:
                    pressOrRelease(dice);
                    break;
            }
            dispatcher.runReady();
            observe();
        }
        resetAndCheck(dice);
        EXPECT_TRUE(dispatcher.runUntilIdle(dispatcher.now() + 60s));
        EXPECT_EQ(scroll.inFlightPlanCount(), 0);
    }
}

}  // namespace
}  // namespace tessara
