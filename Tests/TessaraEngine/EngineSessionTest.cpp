#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "EngineOnDesktop.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "Support/TestDispatcher.h"
#include "WatchedPoster.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using ::testing::IsEmpty;

constexpr int steps = 4000;

/// A user, a system and a program that do one thing after another, as dice will have it, and the
/// account of what came of it.
class Session {
  public:
    Session(ManualDispatcher& dispatcher, std::uint64_t seed)
        : dispatcher_(dispatcher),
          dice_(seed),
          on_(dispatcher, documents_[1],
              [this](TessaraEngine::Options& options, EngineOnDesktop&) {
                  options.poster =
                      std::make_shared<WatchedPoster>(std::move(options.poster), gestures_);
              }),
          foreign_{&on_.desktop.attachForeignMouse(), &on_.desktop.attachTrackpad(),
                   &on_.desktop.attachMouseWithoutVendor()},
          targets_{on_.mouse->id()} {
        dispatcher_.runReady();
    }

    void play() {
        change([&] { (void)engine().start(); });
        for (int step = 0; step < steps; ++step) {
            act();
            if (oneIn(3)) dispatcher_.runReady();
            if (oneIn(3)) dispatcher_.advance(milliseconds(below(40)));
            takeAccount();
        }
        letGo();
    }

    void expectNothingHeldAndAllCounted() {
        const EngineStatus& status = engine().status();
        for (const SimulatedInputState* state :
             {&on_.desktop.sessionState(), &on_.desktop.hardwareState()}) {
            EXPECT_THAT(state->keysDown(), IsEmpty());
            EXPECT_THAT(state->buttonsDown(), IsEmpty());
        }
        EXPECT_THAT(gestures_.faults(), IsEmpty());
        EXPECT_THAT(gestures_.openAxes(), IsEmpty());
        EXPECT_EQ(touchedForeignEvents_, 0);
        EXPECT_EQ(on_.desktop.taps().count(), 0U);

        // What the tap saw was looked up, unless it was own output.
        EXPECT_GE(tapEvents_, status.scope.total());
        EXPECT_LE(tapEvents_, status.scope.total() + ownInputEvents_);
        EXPECT_LE(status.scope.foreign, foreignEvents_);
        const auto scrollInputs = status.scroll.inputsTransformed +
                                  status.scroll.inputsPassedThrough + status.scroll.inputsIgnored;
        EXPECT_LE(scrollInputs + status.buttons.eventsSeen + status.pointer.samplesSeen,
                  status.scope.target);
        EXPECT_EQ(status.buttons.passedThrough + status.buttons.suppressed,
                  status.buttons.eventsSeen);
        EXPECT_EQ(status.pointer.samplesTransformed + status.pointer.samplesPassedThrough,
                  status.pointer.samplesSeen);
        // What was swallowed is what is missing, but for an event that a cut of the tap let go.
        const auto swallowed = status.buttons.suppressed + status.scroll.inputsTransformed +
                               status.scroll.inputsIgnored;
        EXPECT_LE(droppedEvents_, swallowed);
        EXPECT_GE(droppedEvents_ + cuts_, swallowed);
        EXPECT_EQ(ownScrollEvents_, status.scroll.stepsPosted + status.scroll.gesturesForceClosed);
        EXPECT_EQ(ownPixels_, status.scroll.pixelsPosted);
        EXPECT_LE(rewrittenMoves_, status.pointer.samplesTransformed);
        // The session was one worth the name.
        EXPECT_GT(status.scroll.gesturesForceClosed, 0);
        EXPECT_GT(status.pointer.samplesTransformed, 0);
        EXPECT_GT(std::min({cuts_, starts_, droppedEvents_, status.scope.foreign}), 10);
    }

  private:
    TessaraEngine& engine() { return *on_.engine; }
    std::int64_t below(std::int64_t limit) {
        return std::uniform_int_distribution<std::int64_t>(0, limit - 1)(dice_);
    }
    bool oneIn(std::int64_t number) { return below(number) == 0; }

    void act() {
        switch (below(24)) {
            case 0:
                return switchApplication();
            case 1:
                return change([&] {
                    engine().update(
                        documents_.at(static_cast<std::size_t>(below(std::ssize(documents_)))));
                });
            case 2:
                if (oneIn(2)) change([&] { engine().stop(); });
                return;
            case 3:
            case 4:
                return change([&] {
                    starts_ += engine().status().isRunning ? 0 : 1;
                    EXPECT_TRUE(engine().start());
                });
            case 5:
                ++cuts_;
                return oneIn(2) ? on_.desktop.disableTapsByTimeout()
                                : on_.desktop.disableTapsByUserInput();
            case 6:
                return replug();
            case 7:
                return engine().activateProfile(oneIn(2) ? "org.example.game"
                                                         : "org.example.editor");
            case 8:
            case 9:
                return useKeyboard();
            case 10:
                return on_.desktop.send({});
            case 11:
            case 12:
            case 13:
                return use(*foreign_.at(static_cast<std::size_t>(below(3))));
            default:
                return use(*on_.mouse);
        }
    }

    void switchApplication() {
        SimulatedWorkspace& workspace = on_.desktop.workspace();
        if (oneIn(5)) return workspace.bringNoneToFront();
        workspace.bringToFront(oneIn(2) ? on_.game : oneIn(2) ? on_.editor : on_.browser);
    }

    void use(SimulatedPointingDevice& device) {
        switch (below(6)) {
            case 0:
                return device.press(below(9));
            case 1:
                return device.release(below(9));
            case 2:
                return device.click(below(9));
            case 3:
                return &device == foreign_[1] ? device.swipe(below(90) - 45, below(90) - 45, 3)
                                              : device.spinSideways(below(5) - 2);
            case 4:
                return device.spin(below(7) - 3);
            default:
                return device.move(static_cast<double>(below(41) - 20),
                                   static_cast<double>(below(41) - 20));
        }
    }

    void useKeyboard() {
        static constexpr std::array<std::uint16_t, 6> keys{heldKey, macroKey, 7, 55, 56, 59};
        const auto key = keys.at(static_cast<std::size_t>(below(std::ssize(keys))));
        SimulatedKeyboard& keyboard = on_.desktop.keyboard();
        if (oneIn(9)) return keyboard.toggleCapsLock();
        oneIn(3) ? keyboard.press(key) : keyboard.release(key);
    }

    void replug() {
        dispatcher_.runReady();
        if (engine().status().isTapEnabled && oneIn(2)) {
            // With a button down, about which nobody says another word.
            releaseAll(*on_.mouse);
            on_.mouse->press(below(9));
            dispatcher_.runReady();
            on_.mouse->vanish();
        } else {
            on_.mouse->detach();
        }
        engine().handleDeviceEvent({HIDPPEvent::DeviceRemoved{}});
        if (oneIn(2)) dispatcher_.advance(milliseconds(20));
        on_.mouse = &on_.desktop.attachTargetMouse();
        targets_.insert(on_.mouse->id());
        if (oneIn(2)) engine().handleDeviceEvent({HIDPPEvent::DeviceAttached{}});
    }

    /// Calls the engine, which may put another tap in place of the one that was counting.
    template <typename Call>
    void change(Call call) {
        engine().refreshMetrics();
        const std::int64_t before = engine().status().tap.events;
        call();
        engine().refreshMetrics();
        if (engine().status().tap.events < before) tapEvents_ += before;
    }

    void takeAccount() {
        for (const SimulatedPassage& passage : on_.desktop.events().takeJournal())
            passage.isPosted ? accountOwn(passage) : accountInput(passage);
    }

    void accountInput(const SimulatedPassage& passage) {
        const auto sender = on_.desktop.devices().senderID(passage.entered);
        if (!sender || !targets_.contains(*sender)) {
            ++foreignEvents_;
            if (passage.delivered != passage.entered) ++touchedForeignEvents_;
            return;
        }
        if (!passage.delivered) ++droppedEvents_;
        if (passage.delivered && passage.delivered != passage.entered) ++rewrittenMoves_;
    }

    void accountOwn(const SimulatedPassage& passage) {
        const CGEvent& event = passage.entered;
        EXPECT_TRUE(isTessaraEmitted(event));
        EXPECT_EQ(passage.delivered, event) << "own output passes";
        if (event.type == CGEventType::keyDown || event.type == CGEventType::keyUp) return;
        ++ownInputEvents_;
        if (event.type != CGEventType::scrollWheel) return;
        ++ownScrollEvents_;
        const auto vertical = event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis1);
        const auto sideways = event.integerValue(CGEventField::scrollWheelEventPointDeltaAxis2);
        ownPixels_ += std::abs(vertical) + std::abs(sideways);
    }

    static void releaseAll(SimulatedPointingDevice& device) {
        for (std::int64_t button = 0; button < 9; ++button)
            device.release(button);
    }

    void letGo() {
        releaseAll(*on_.mouse);
        for (SimulatedPointingDevice* device : foreign_)
            releaseAll(*device);
        for (const std::uint16_t key : on_.desktop.hardwareState().keysDown())
            on_.desktop.keyboard().release(key);
        dispatcher_.runReady();
        change([&] { engine().stop(); });
        dispatcher_.runUntilIdle(dispatcher_.now() + std::chrono::minutes(1));
        engine().refreshMetrics();
        takeAccount();
    }

    ManualDispatcher& dispatcher_;
    std::mt19937_64 dice_;
    const std::vector<Config> documents_ = documentsOfAUser();
    testing::GestureChecker gestures_;
    EngineOnDesktop on_;
    const std::array<SimulatedPointingDevice*, 3> foreign_;
    std::set<std::uint64_t> targets_;

    std::int64_t tapEvents_ = 0;
    std::int64_t cuts_ = 0;
    std::int64_t starts_ = 0;
    std::int64_t foreignEvents_ = 0;
    std::int64_t touchedForeignEvents_ = 0;
    std::int64_t droppedEvents_ = 0;
    std::int64_t rewrittenMoves_ = 0;
    std::int64_t ownInputEvents_ = 0;
    std::int64_t ownScrollEvents_ = 0;
    std::int64_t ownPixels_ = 0;
};

class EngineSession : public testing::VirtualTimeTest,
                      public ::testing::WithParamInterface<std::uint64_t> {};

TEST_P(EngineSession, ends_with_nothing_held_nothing_touched_and_everything_counted) {
    SCOPED_TRACE(fmt::format("seed {}", GetParam()));
    Session session(dispatcher, GetParam());
    session.play();
    session.expectNothingHeldAndAllCounted();
}

INSTANTIATE_TEST_SUITE_P(Seeds, EngineSession, ::testing::Range<std::uint64_t>(1, 7));

}  // namespace
}  // namespace tessara
