#include <gmock/gmock.h>

#include "EngineOnDesktop.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/RecordingEventPoster.h"
#include "TessaraEngine/RecordingSideEffects.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

using std::chrono::milliseconds;
using StartError = EventTapController::StartError;

class TessaraEngineTest : public testing::VirtualTimeTest {
  protected:
    explicit TessaraEngineTest(Config config = documentOfTwoProfiles()) { use(std::move(config)); }

    void TearDown() override {
        engine().stop();
        playOut();
        EXPECT_THAT(on->desktop.sessionState().keysDown(), IsEmpty());
        EXPECT_THAT(on->desktop.sessionState().buttonsDown(), IsEmpty());
        EXPECT_EQ(on->desktop.taps().count(), 0U);
    }

    void use(Config config, const EngineOnDesktop::Adjustment& adjust = {}) {
        if (on) playOut();
        on.reset();
        on.emplace(dispatcher, std::move(config), adjust);
        dispatcher.runReady();
    }

    TessaraEngine& engine() { return *on->engine; }
    const EngineStatus& status() { return on->engine->status(); }

    void start() {
        ASSERT_TRUE(engine().start());
        dispatcher.runReady();
    }
    void bringToFront(SimulatedApplication& application) {
        on->desktop.workspace().bringToFront(application);
        dispatcher.runReady();
    }
    void playOut() { dispatcher.runUntilIdle(dispatcher.now() + std::chrono::minutes(1)); }

    /// What an application receives of what was done, at once.
    std::vector<std::string> received(SimulatedApplication& application) {
        dispatcher.runReady();
        return EngineOnDesktop::linesOf(application);
    }

    std::optional<EngineOnDesktop> on;
};

TEST_F(TessaraEngineTest, what_is_in_the_way_of_the_tap_is_told_once_the_status_is_refreshed) {
    start();
    on->desktop.taps().setLastRefusal("another program has the mouse");
    EXPECT_EQ(status().lastError, std::nullopt);
    engine().refreshMetrics();
    EXPECT_EQ(status().lastError, "another program has the mouse");
    on->desktop.taps().setLastRefusal({});
    engine().refreshMetrics();
    EXPECT_EQ(status().lastError, "another program has the mouse") << "a success does not clear it";
}

TEST_F(TessaraEngineTest, a_second_start_and_a_second_stop_change_nothing) {
    engine().stop();
    EXPECT_FALSE(status().isRunning);
    start();
    EXPECT_TRUE(status().isRunning && status().isTapEnabled && status().targetDeviceAttached);
    EXPECT_EQ(status().frontmostBundleID, "org.example.editor");
    on->mouse->press(3);
    dispatcher.runReady();
    start();
    EXPECT_EQ(on->desktop.taps().count(), 1U);
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 down")) << "the key is held still";

    engine().stop();
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 up"));
    const EngineStatus stopped = status();
    EXPECT_FALSE(stopped.isRunning || stopped.isTapEnabled);
    EXPECT_EQ(stopped.tap, TapMetrics{});
    engine().stop();
    EngineStatus again = status();
    EXPECT_EQ(again.buttons.resets, stopped.buttons.resets + 1);
    on->mouse->release(3);
    EXPECT_THAT(received(on->editor), ElementsAre("button 3 up"));
}

TEST_F(TessaraEngineTest, a_disabled_document_starts_nothing_until_it_is_enabled) {
    Config document = documentOfTwoProfiles();
    document.isEnabled = false;
    use(document);
    on->desktop.permissions().revokeInputMonitoring();
    on->desktop.devices().hide(HIDSymbol::ioHIDServiceClientSetProperty);
    start();
    EXPECT_EQ(status().lastError, "configuration is disabled");
    EXPECT_FALSE(status().isRunning || status().permissions.inputMonitoring);
    EXPECT_THAT(status().missingSPISymbols, ElementsAre("IOHIDServiceClientSetProperty"));
    EXPECT_EQ(on->desktop.taps().count(), 0U);
    bringToFront(on->game);
    EXPECT_EQ(status().activeProfileID, "default") << "nobody follows";

    const EngineStatus before = status();
    engine().update(document);
    EXPECT_EQ(status(), before);
    document.isEnabled = true;
    engine().update(document);
    dispatcher.runReady();
    EXPECT_TRUE(status().isRunning);
    EXPECT_EQ(status().activeProfileID, "game");
    EXPECT_EQ(status().lastError, "configuration is disabled") << "a start does not clear it";

    document.isEnabled = false;
    engine().update(document);
    dispatcher.runReady();
    EXPECT_FALSE(status().isRunning);
    EXPECT_EQ(engine().currentConfig(), document);
}

TEST_F(TessaraEngineTest, a_start_without_permission_fails_and_a_later_one_succeeds) {
    on->desktop.permissions().revokeAccessibility();
    EXPECT_EQ(engine().start(), std::unexpected(StartError::tapCreationFailed));
    dispatcher.runReady();
    EXPECT_FALSE(status().isRunning || status().isTapEnabled || status().permissions.accessibility);

    bringToFront(on->game);
    EXPECT_EQ(status().activeProfileID, "game") << "the watcher goes on";
    engine().update(documentOfTwoProfiles());
    dispatcher.runReady();
    EXPECT_FALSE(status().isRunning) << "a refused tap is not told by update, nor does it crash";

    on->desktop.permissions().grantAccessibility();
    engine().refreshPermissions();
    EXPECT_TRUE(status().permissions.accessibility);
    start();
    EXPECT_TRUE(status().isRunning);
    on->mouse->click(4);
    EXPECT_THAT(received(on->game), ElementsAre("key 50 down", "key 50 up"));
}

TEST_F(TessaraEngineTest, motion_is_tapped_only_while_some_profile_needs_it) {
    Config document = documentOfTwoProfiles();
    document.profiles[1].pointer.isEnabled = true;
    use(document);
    start();
    const auto eventsOfOneMove = [&] {
        engine().refreshMetrics();
        const std::int64_t before = status().tap.events;
        on->mouse->move(3, 3);
        dispatcher.runReady();
        engine().refreshMetrics();
        return status().tap.events - before;
    };
    EXPECT_EQ(eventsOfOneMove(), 1);
    on->mouse->press(3);
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 down"));

    document.profiles[1].pointer.isEnabled = false;
    engine().update(document);
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 up")) << "another tap, all let go";
    EXPECT_TRUE(status().isRunning);
    EXPECT_EQ(eventsOfOneMove(), 0);
    EXPECT_EQ(on->desktop.taps().count(), 1U);

    on->mouse->release(3);
    document.profiles[0].pointer.isEnabled = true;
    engine().update(document);
    dispatcher.runReady();
    EXPECT_EQ(eventsOfOneMove(), 1);
    EXPECT_EQ(status().pointer.samplesTransformed, 1);

    use(documentOfTwoProfiles(), [](TessaraEngine::Options& options, EngineOnDesktop&) {
        options.tap.eventsOfInterest = EventTapController::pointerMotionEventMask;
    });
    start();
    EXPECT_EQ(eventsOfOneMove(), 1) << "a mask of the program's own is taken as it stands";
}

TEST_F(TessaraEngineTest, a_profile_switch_lets_go_of_the_key_and_passes_the_buttons_release) {
    const auto effects = std::make_shared<RecordingSideEffects>();
    Config document = documentOfTwoProfiles();
    document.profiles[1].buttons.push_back(document.profiles[0].buttons[2]);
    use(document,
        [&](TessaraEngine::Options& options, EngineOnDesktop&) { options.sideEffects = effects; });
    start();
    on->mouse->press(3);
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 down"));
    bringToFront(on->game);
    EXPECT_EQ(status().activeProfileName, "Game");
    EXPECT_EQ(status().frontmostBundleID, "org.example.game");
    EXPECT_THAT(received(on->game), ElementsAre("key 40 up"));
    on->mouse->release(3);
    on->mouse->spin(1);
    EXPECT_THAT(received(on->game), ElementsAre("button 3 up", "wheel"));
    on->mouse->click(5);
    dispatcher.runReady();
    EXPECT_THAT(effects->effects(), ElementsAre(DPIRequest{shiftedDPI}, DPIRequest{1200}))
        << "a shift ends at the new profile's resolution";
}

TEST_F(TessaraEngineTest, no_event_sees_half_a_profile) {
    // Under the editor's profile all of these are swallowed, under the game's all pass.
    Config document = documentOfTwoProfiles();
    document.profiles[1].buttons.clear();
    constexpr int events = 12;
    for (std::int64_t button = 6; button < 6 + events / 2; ++button)
        document.profiles[0].buttons.push_back({.button = button, .action = KeyStrokeAction{1}});
    for (int switchAt = 0; switchAt <= events; ++switchAt) {
        SCOPED_TRACE(switchAt);
        use(document);
        start();
        on->desktop.events().takeJournal();
        for (int event = 0; event <= events; ++event) {
            if (event == switchAt) on->desktop.workspace().bringToFront(on->game);
            if (event == events) break;
            if (event % 2 == 0) on->mouse->spin(1);
            if (event % 2 == 1) on->mouse->press(6 + event / 2);
        }
        dispatcher.runReady();
        bool hasSwitched = false;
        for (const SimulatedPassage& passage : on->desktop.events().takeJournal()) {
            if (passage.isPosted) continue;
            EXPECT_TRUE(passage.delivered || !hasSwitched);
            hasSwitched = passage.delivered.has_value();
        }
        EXPECT_EQ(status().activeProfileID, "game");
        for (std::int64_t button = 6; button < 6 + events / 2; ++button)
            on->mouse->release(button);
        engine().stop();
    }

    use(documentOfTwoProfiles());
    start();
    on->mouse->press(4);
    engine().activateProfile("org.example.game");
    EXPECT_THAT(received(on->editor), ElementsAre("key 41 down"))
        << "an event that is on its way to the tap comes before the switch";
    on->mouse->release(4);
}

TEST_F(TessaraEngineTest, the_application_in_front_is_followed_also_where_the_profile_stays) {
    start();
    engine().refreshMetrics();
    const std::int64_t resets = status().buttons.resets;
    bringToFront(on->browser);
    engine().activateProfile("org.example.game");
    dispatcher.runReady();
    EXPECT_EQ(status().activeProfileID, "game") << "forced, whoever is in front";
    bringToFront(on->browser);
    engine().refreshMetrics();
    EXPECT_EQ(status().activeProfileID, "default");
    EXPECT_EQ(status().frontmostBundleID, "org.example.browser");
    EXPECT_EQ(status().buttons.resets - resets, 2) << "editor to browser is no switch";
    on->desktop.workspace().bringNoneToFront();
    dispatcher.runReady();
    engine().update(documentOfTwoProfiles());
    dispatcher.runReady();
    EXPECT_EQ(status().frontmostBundleID, std::nullopt);

    engine().stop();
    engine().activateProfile("org.example.game");
    EXPECT_EQ(status().activeProfileID, "game") << "at once, without a watcher";
}

TEST_F(TessaraEngineTest, a_start_begins_with_the_profile_of_the_application_in_front_then) {
    start();
    bringToFront(on->game);
    engine().stop();
    bringToFront(on->browser);
    start();
    EXPECT_EQ(status().activeProfileID, "default");
    on->mouse->spin(1);
    EXPECT_THAT(received(on->browser), Each("glide"));
    EXPECT_EQ(status().frontmostBundleID, "org.example.browser");

    // Also where an earlier choice is still on its way.
    engine().activateProfile("org.example.game");
    engine().stop();
    start();
    EXPECT_EQ(status().activeProfileID, "default");

    // Also where the document changed while nothing ran.
    engine().stop();
    Config document = documentOfTwoProfiles();
    document.profiles[0].scroll = ScrollSettings::passThrough;
    engine().update(document);
    playOut();
    received(on->browser);
    on->mouse->spin(1);
    EXPECT_THAT(received(on->browser), ElementsAre("wheel"));
}

TEST_F(TessaraEngineTest, a_new_document_is_applied_though_the_profile_is_the_same) {
    start();
    on->mouse->press(3);
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 down"));
    engine().update(documentOfTwoProfiles());
    EXPECT_THAT(received(on->editor), ElementsAre("key 40 up"));
    Config document = documentOfTwoProfiles();
    document.profiles[0].buttons[0].action = HoldAction{.code = 77};
    engine().update(document);
    on->mouse->release(3);
    EXPECT_THAT(received(on->editor), ElementsAre("button 3 up"));
    on->mouse->click(3);
    EXPECT_THAT(received(on->editor), ElementsAre("key 77 down", "key 77 up"));
}

TEST_F(TessaraEngineTest, a_tap_that_the_system_disabled_comes_back_with_nothing_held) {
    start();
    for (const auto reason : {TapDisableReason::timeout, TapDisableReason::userInput}) {
        SCOPED_TRACE(rawValue(reason));
        on->mouse->press(3);
        on->mouse->spin(2);
        EXPECT_THAT(received(on->editor), Contains("key 40 down"));
        dispatcher.advance(milliseconds(50));
        received(on->editor);

        if (reason == TapDisableReason::timeout) on->desktop.disableTapsByTimeout();
        if (reason == TapDisableReason::userInput) on->desktop.disableTapsByUserInput();
        EXPECT_THAT(received(on->editor), ::testing::UnorderedElementsAre("key 40 up", "glide"))
            << "the key, and the end of the gesture";
        playOut();
        EXPECT_THAT(received(on->editor), IsEmpty());
        EXPECT_TRUE(status().isTapEnabled);
        EXPECT_EQ(status().lastTapDisableReason, reason);
        on->mouse->release(3);
        EXPECT_THAT(received(on->editor), ElementsAre("button 3 up"));
    }
    engine().refreshMetrics();
    EXPECT_EQ(status().tap.reEnables, 2);
    EXPECT_EQ(status().scroll.gesturesForceClosed, 2);
}

TEST_F(TessaraEngineTest, a_stop_in_a_macros_delay_abandons_the_rest_and_lets_go) {
    start();
    on->mouse->click(4);
    dispatcher.runReady();
    dispatcher.advance(milliseconds(50));
    EXPECT_THAT(received(on->editor), ElementsAre("key 41 down"));
    engine().stop();
    on->desktop.settle();
    EXPECT_THAT(EngineOnDesktop::linesOf(on->editor), ElementsAre("key 41 up"))
        << "posted when stop returns";
    playOut();
    EXPECT_THAT(received(on->editor), IsEmpty());
}

TEST_F(TessaraEngineTest, every_listener_hears_the_present_status_first_and_then_only_changes) {
    std::vector<EngineStatus> heard;
    std::vector<EngineStatus> told;
    engine().setOnStatusChange([&](const EngineStatus& value) { told.push_back(value); });
    auto subscription = engine().statusStream(
        on->mainQueue, [&](const EngineStatus& value) { heard.push_back(value); });
    const EngineStatus built = status();
    start();
    ASSERT_FALSE(heard.empty());
    EXPECT_EQ(heard.front(), built);
    EXPECT_EQ(std::vector(heard.begin() + 1, heard.end()), told);
    EXPECT_EQ(told.back(), status());
    for (std::size_t i = 1; i < heard.size(); ++i)
        EXPECT_NE(heard[i], heard[i - 1]);

    engine().refreshMetrics();
    dispatcher.runReady();
    heard.clear();
    engine().refreshPermissions();
    engine().refreshMetrics();
    engine().setPausedByUser(false);
    dispatcher.runReady();
    EXPECT_THAT(heard, IsEmpty()) << "nothing differs";

    subscription.cancel();
    on->desktop.permissions().revokeInputMonitoring();
    engine().refreshPermissions();
    dispatcher.runReady();
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_FALSE(told.back().permissions.inputMonitoring);
    engine().setOnStatusChange({});
}

TEST_F(TessaraEngineTest, without_the_private_calls_it_starts_and_every_event_passes) {
    Config document = documentOfTwoProfiles();
    document.profiles[0].pointer.isEnabled = true;
    use(document, [](TessaraEngine::Options&, EngineOnDesktop& parts) {
        parts.desktop.devices().hide(HIDSymbol::cgEventCopyIOHIDEvent);
    });
    start();
    EXPECT_THAT(status().missingSPISymbols, ElementsAre("CGEventCopyIOHIDEvent"));
    on->mouse->spin(1);
    on->mouse->click(3);
    on->mouse->move(5, 5);
    dispatcher.runReady();
    for (const SimulatedPassage& passage : on->desktop.events().journal())
        EXPECT_EQ(passage.delivered, passage.entered);
}

TEST_F(TessaraEngineTest, a_mouse_that_is_unplugged_leaves_nothing_held) {
    on->mouse->detach();
    on->mouse = &on->desktop.attachTargetMouse();
    start();  // looks at the devices anew
    // The tap and the mouse go at once: the first reset's releases are still to be posted when the
    // second comes.
    on->mouse->press(0);
    dispatcher.runReady();
    on->desktop.disableTapsByUserInput();
    on->mainQueue->post([this] { engine().handleDeviceEvent({HIDPPEvent::DeviceRemoved{}}); });
    dispatcher.runReady();
    EXPECT_THAT(on->desktop.sessionState().buttonsDown(), IsEmpty());

    on->mouse->press(3);
    on->mouse->spin(1);
    EXPECT_THAT(received(on->editor), Contains("key 40 down"));
    on->mouse->vanish();
    engine().handleDeviceEvent({HIDPPEvent::DeviceRemoved{}});
    EXPECT_THAT(received(on->editor), Contains("key 40 up"));
    engine().refreshMetrics();
    EXPECT_FALSE(status().targetDeviceAttached);

    on->mouse = &on->desktop.attachTargetMouse();
    engine().handleDeviceEvent({HIDPPEvent::DeviceAttached{}});
    playOut();
    received(on->editor);
    on->mouse->spin(1);
    EXPECT_THAT(received(on->editor), Each("glide"));
}

TEST_F(TessaraEngineTest, applications_and_shortcuts_start_only_where_that_is_allowed) {
    Config document = documentOfTwoProfiles();
    document.profiles[0].buttons = {
        {.button = 3, .action = RunShortcutAction{.name = "Lights"}},
        {.button = 4, .action = LaunchAppAction{.bundleID = "org.example.unknown"}},
        {.button = 5, .action = LaunchAppAction{.bundleID = "org.example.game"}}};
    for (const bool areAllowed : {false, true}) {
        use(document, [&](TessaraEngine::Options& options, EngineOnDesktop&) {
            options.allowsAppLaunch = options.allowsShortcuts = areAllowed;
        });
        start();
        for (const std::int64_t button : {3, 4, 5})
            on->mouse->click(button);
        dispatcher.runReady();
        EXPECT_EQ(on->desktop.shortcuts().ran().size(), areAllowed ? 1U : 0U);
        EXPECT_EQ(status().frontmostBundleID,
                  areAllowed ? "org.example.game" : "org.example.editor");
    }
}

TEST_F(TessaraEngineTest, an_engine_that_nobody_stopped_lets_go_at_its_end) {
    const auto posted = std::make_shared<RecordingEventPoster>();
    use(documentOfTwoProfiles(),
        [&](TessaraEngine::Options& options, EngineOnDesktop&) { options.poster = posted; });
    start();
    on->mouse->press(3);
    on->mouse->spin(1);
    dispatcher.advance(milliseconds(10));
    on.reset();
    dispatcher.discard();  // the rest of the glide
    std::vector<std::string> lines;
    for (const Emission& emission : posted->emissions())
        lines.push_back(description(emission));
    EXPECT_THAT(lines, ElementsAre("key(40 down mods=0)", "scroll(vertical 5px began mods=0)",
                                   "key(40 up mods=0)", "scroll(vertical 0px ended mods=0)"));
    use(documentOfTwoProfiles());
}

}  // namespace
}  // namespace tessara
