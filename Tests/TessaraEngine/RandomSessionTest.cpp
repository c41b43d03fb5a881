#include <array>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/ModifierKeys.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Support/GestureChecker.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/TessaraEngine.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;
using ::testing::IsSubsetOf;
using ::testing::IsSupersetOf;

constexpr int stepsPerSession = 3000;
constexpr std::array sessionKeys{std::uint16_t{0}, std::uint16_t{8}, std::uint16_t{49}};

class Dice {
  public:
    explicit Dice(unsigned seed) : random_(seed) {}

    int upTo(int greatest) { return std::uniform_int_distribution(0, greatest)(random_); }
    int between(int least, int greatest) { return least + upTo(greatest - least); }

    ModifierFlags modifiers() {
        constexpr std::array choices{ModifierFlags::none, ModifierFlags::shift,
                                     ModifierFlags::command,
                                     ModifierFlags::control | ModifierFlags::function};
        return choices[static_cast<std::size_t>(upTo(3))];
    }

    std::uint16_t key() { return sessionKeys[static_cast<std::size_t>(upTo(2))]; }

    Action action() {
        switch (upTo(5)) {
            case 0:
                return KeyStrokeAction{.code = key(), .modifiers = modifiers()};
            case 1:
                return HoldAction{.code = key(), .modifiers = modifiers()};
            case 2:
                return HoldAction{.code = modifierKeys[static_cast<std::size_t>(upTo(8))].code};
            case 3:
                return RepeatWhileHeldAction{.step = KeyStep{.code = key()}, .intervalMillis = 15};
            case 4:
                return SequenceAction{{KeyDownStep{.code = key(), .modifiers = modifiers()},
                                       DelayStep{.millis = 40}, MouseButtonStep{.number = upTo(3)},
                                       DelayStep{.millis = 40}, KeyUpStep{.code = key()}}};
            default:
                return LaunchAppAction{.bundleID = "org.example.1"};
        }
    }

    Profile profile(std::string id) {
        Profile profile = Profile::default_();
        profile.id = std::move(id);
        profile.pointer.isEnabled = upTo(1) == 0;
        if (upTo(3) == 0) profile.scroll = ScrollSettings::passThrough;
        for (std::int64_t button = 0; button < 6; ++button) {
            if (upTo(1) == 0) {
                profile.buttons.push_back(
                    {.button = button, .modifiers = modifiers(), .action = action()});
            }
        }
        return profile;
    }

    /// A document with a profile for each of three applications; off at times.
    Config config() {
        Config config{.isEnabled = upTo(9) != 0, .ruleSet = {.defaultProfileID = "0"}};
        for (const std::string id : {"0", "1", "2"}) {
            config.profiles.push_back(profile(id));
            config.ruleSet.rules.push_back(
                {.id = id, .pattern = ExactBundleID{"org.example." + id}, .profileID = id});
        }
        return config;
    }

  private:
    std::mt19937 random_;
};

/// Hands everything on to the desktop and watches the gestures on the way, while it is known which
/// axis each step belongs to.
class WatchedPoster final : public EventPosting {
  public:
    explicit WatchedPoster(EventServices& services)
        : sink_(services, CGEventTapLocation::session) {}

    void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                        ModifierFlags modifiers) override {
        gestures.step(axis, pixelDelta, phase);
        sink_.postScrollStep(axis, pixelDelta, phase, modifiers);
    }
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) override {
        sink_.postKey(code, isDown, modifiers);
    }
    void postMouseButton(std::int64_t number, bool isDown) override {
        sink_.postMouseButton(number, isDown);
    }

    testing::GestureChecker gestures;

  private:
    CGEventPoster sink_;
};

/// One user's hands on several devices, with the engine in between and the system being difficult.
class RandomSession {
  public:
    RandomSession(ManualDispatcher& dispatcher, unsigned seed)
        : dispatcher_(dispatcher),
          dice_(seed),
          mainQueue_(dispatcher.makeQueue("main", QualityOfService::userInteractive)),
          desktop_(dispatcher),
          poster_(std::make_shared<WatchedPoster>(desktop_.eventServices())),
          engine_(std::make_shared<TessaraEngine>(dice_.config(), options(), platform())),
          pointers_{&desktop_.attachTargetMouse(), &desktop_.attachForeignMouse(),
                    &desktop_.attachTrackpad(), &desktop_.attachMouseWithoutVendor()} {
        targets_.insert(pointers_[0]->id());
        for (const std::string number : {"0", "1", "2"})
            desktop_.workspace().install("org.example." + number, "Application " + number);
        onMain([this] { static_cast<void>(engine_->start()); });
    }

    void play() {
        for (int step = 0; step < stepsPerSession; ++step) {
            act();
            dispatcher_.advance(std::chrono::milliseconds(dice_.upTo(40)));
        }
        stop();
        letGo();
        dispatcher_.advance(5s);
    }

    void check() {
        EXPECT_THAT(desktop_.sessionState().keysDown(), IsEmpty());
        EXPECT_THAT(desktop_.sessionState().buttonsDown(), IsEmpty());
        EXPECT_THAT(poster_->gestures.faults(), IsEmpty());
        EXPECT_THAT(poster_->gestures.openAxes(), IsEmpty());

        std::int64_t suppressed = 0;
        std::set<CGEventType> posted;
        for (const SimulatedPassage& passage : desktop_.events().journal()) {
            const bool mayBeTouched =
                !passage.isPosted && targets_.contains(passage.entered.hidEventReference);
            if (!passage.delivered) ++suppressed;
            if (passage.isPosted) posted.insert(passage.entered.type);
            if (!mayBeTouched || (passage.delivered && !isMotion(passage.entered.type))) {
                EXPECT_EQ(passage.delivered, passage.entered);
            }
        }

        EXPECT_THAT(posted, IsSupersetOf({CGEventType::scrollWheel, CGEventType::keyDown,
                                          CGEventType::flagsChanged}));

        const EngineStatus& status = engine_->status();
        EXPECT_FALSE(status.isRunning);
        EXPECT_GT(status.scroll.inputsTransformed, 0);
        EXPECT_GT(status.buttons.suppressed, 0);
        EXPECT_GT(status.pointer.samplesTransformed, 0);
        EXPECT_GT(status.scope.foreign, 0);
        EXPECT_EQ(status.buttons.eventsSeen,
                  status.buttons.passedThrough + status.buttons.suppressed);
        EXPECT_EQ(status.pointer.samplesSeen,
                  status.pointer.samplesTransformed + status.pointer.samplesPassedThrough);
        EXPECT_EQ(suppressed, status.buttons.suppressed + status.scroll.inputsTransformed +
                                  status.scroll.inputsIgnored);
    }

  private:
    static bool isMotion(CGEventType type) {
        return type == CGEventType::mouseMoved || type == CGEventType::leftMouseDragged ||
               type == CGEventType::rightMouseDragged || type == CGEventType::otherMouseDragged;
    }

    TessaraEngine::Options options() {
        TessaraEngine::Options options;
        options.deviceMatches = {HIDPPDeviceMatch::g502X};
        options.poster = poster_;
        return options;
    }

    EnginePlatform platform() {
        return {.dispatcher = dispatcher_,
                .mainQueue = mainQueue_,
                .eventTaps = desktop_.taps(),
                .events = desktop_.eventServices(),
                .cursor = &desktop_.displays(),
                .hidEvents = desktop_.devices(),
                .hidRunLoop = std::make_shared<HIDPPRunLoop>(dispatcher_, transport_),
                .permissions = desktop_.permissions(),
                .workspace = desktop_.workspace(),
                .shortcuts = desktop_.shortcuts()};
    }

    void onMain(const std::function<void()>& work) {
        mainQueue_->post(work);
        mainQueue_->drain();
    }

    /// Stops the engine, after which applications take nothing to be down but what hands hold.
    void stop() {
        onMain([this] { engine_->stop(); });
        dispatcher_.runReady();
        EXPECT_THAT(desktop_.sessionState().keysDown(), IsSubsetOf(heldKeys_));
        std::set<std::int64_t> held;
        for (const auto& [which, buttons] : heldButtons_)
            held.insert(buttons.begin(), buttons.end());
        EXPECT_THAT(desktop_.sessionState().buttonsDown(), IsSubsetOf(held));
    }

    /// Any pointing device, the target mouse every other time.
    std::size_t somePointer() {
        return dice_.upTo(1) == 0 ? 0 : static_cast<std::size_t>(dice_.upTo(3));
    }

    void act() {
        switch (const int choice = dice_.upTo(99)) {
            case 0:
                desktop_.disableTapsByTimeout();
                break;
            case 1:
                desktop_.disableTapsByUserInput();
                break;
            case 2:
                stop();
                break;
            case 3:
            case 4:
                onMain([this] { static_cast<void>(engine_->start()); });
                break;
            case 5:
                onMain([this] { engine_->update(dice_.config()); });
                break;
            case 6:
                replug();
                break;
            case 7:
                desktop_.displays().refuseWarps(dice_.upTo(3));
                break;
            case 8:
                desktop_.workspace().announceWithoutApplication();
                break;
            case 9:
                desktop_.workspace().bringNoneToFront();
                break;
            default:
                if (choice < 15) {
                    desktop_.workspace().bringToFront("org.example." +
                                                      std::to_string(dice_.upTo(2)));
                } else if (choice < 25) {
                    typeKey();
                } else {
                    point(somePointer());
                }
        }
    }

    void point(std::size_t which) {
        SimulatedPointingDevice& device = *pointers_[which];
        switch (dice_.upTo(5)) {
            case 0:
                device.spin(dice_.between(-2, 2));
                break;
            case 1:
                device.spinSideways(dice_.between(-1, 1));
                break;
            case 2:
                device.move(dice_.between(-40, 40), dice_.between(-40, 40));
                break;
            case 3:
                device.swipe(dice_.between(-30, 30), dice_.between(-30, 30), 2);
                break;
            default:
                changeButton(which, dice_.upTo(5));
        }
    }

    /// Presses what is up, and releases what is down.
    void changeButton(std::size_t which, std::int64_t button) {
        if (heldButtons_[which].insert(button).second) {
            pointers_[which]->press(button);
        } else {
            heldButtons_[which].erase(button);
            pointers_[which]->release(button);
        }
    }

    void typeKey() {
        const std::uint16_t code = dice_.upTo(1) == 0
                                       ? dice_.key()
                                       : modifierKeys[static_cast<std::size_t>(dice_.upTo(8))].code;
        if (heldKeys_.insert(code).second) {
            desktop_.keyboard().press(code);
        } else {
            heldKeys_.erase(code);
            desktop_.keyboard().release(code);
        }
    }

    void replug() {
        pointers_[0]->detach();
        heldButtons_[0].clear();
        pointers_[0] = &desktop_.attachTargetMouse();
        targets_.insert(pointers_[0]->id());
    }

    void letGo() {
        for (std::size_t which = 0; which < pointers_.size(); ++which) {
            for (const auto button : std::set(heldButtons_[which]))
                changeButton(which, button);
        }
        for (const auto code : heldKeys_)
            desktop_.keyboard().release(code);
        dispatcher_.runReady();
    }

    ManualDispatcher& dispatcher_;
    Dice dice_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    SimulatedHIDTransport transport_;
    SimulatedDesktop desktop_;
    const std::shared_ptr<WatchedPoster> poster_;
    const std::shared_ptr<TessaraEngine> engine_;
    std::array<SimulatedPointingDevice*, 4> pointers_;
    std::set<std::uint64_t> targets_;  // each target mouse that there was
    std::map<std::size_t, std::set<std::int64_t>> heldButtons_;
    std::set<std::uint16_t> heldKeys_;
};

class RandomSessionTest : public testing::VirtualTimeTest {};

TEST_F(RandomSessionTest, nothing_stays_held_and_no_foreign_event_is_touched_whatever_happens) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomSession session(dispatcher, seed);
        session.play();
        session.check();
    }
}

}  // namespace
}  // namespace tessara
