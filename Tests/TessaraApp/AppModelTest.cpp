#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraApp/DeviceMonitor.h"
#include "TessaraApp/LaunchAtLogin.h"
#include "TessaraApp/UpdaterController.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

using Problem = ConfigStore::Problem;

constexpr std::int64_t gestureEnded = 4;  // as events have it

class AppModelTest : public testing::VirtualTimeTest {
  protected:
    AppModelTest() { host.desktop.workspace().bringToFront(editor); }

    ~AppModelTest() override {
        model.reset();
        dispatcher.advance(seconds(20));
        EXPECT_EQ(host.hidTransport.openInterfaceCount(), 0) << "the connection was not closed";
    }

    void make() {
        model.reset();
        AppPlatform platform = host.appPlatform();
        platform.systemManagesWheel = [this] { return systemManagesWheel; };
        model.emplace(platform);
        count("config", &AppModel::configChanged);
        count("status", &AppModel::statusChanged);
        count("permissions", &AppModel::permissionsChanged);
        count("engine", &AppModel::engineChanged);
        count("menu bar", &AppModel::menuBarStatusChanged);
        count("frontmost", &AppModel::frontmostAppNameChanged);
        count("banner", &AppModel::needsBannerChanged);
    }
    /// Started, with the mouse plugged in, halfway between two polls.
    void launch() {
        if (!host.mouse) host.plugInMouse();
        make();
        model->start();
        dispatcher.advance(seconds(5));
        changes.clear();
    }

    /// The factory document under another name of its first profile.
    static Config named(const std::string& name) {
        Config config = Config::default_();
        config.profiles.front().name = name;
        return config;
    }
    std::optional<std::string> saved() const { return host.files.contents(host.configPath); }
    static std::string bytesOf(const Config& config) { return config.encoded().value(); }
    const Config& engineConfig() const { return model->engine()->currentConfig(); }

    /// What the editor received of one click of the wheel, and what of that was a glide.
    bool clickIsGlide() {
        editor.takeReceived();
        host.mouse->spin(1);
        dispatcher.advance(milliseconds(600));
        const auto received = editor.takeReceived();
        EXPECT_FALSE(received.empty());
        return received.front().integerValue(CGEventField::scrollWheelEventIsContinuous) != 0;
    }

    SimulatedAppHost host{dispatcher};
    SimulatedApplication& editor = host.desktop.workspace().install("org.example.editor", "Editor");
    bool systemManagesWheel = false;
    std::map<std::string, int> changes;
    std::optional<AppModel> model;

  private:
    void count(const std::string& name, void (AppModel::*signal)()) {
        QObject::connect(&*model, signal, [this, name] { ++changes[name]; });
    }
};

TEST_F(AppModelTest, reads_everything_when_it_is_made_and_starts_nothing) {
    host.files.putFile(host.configPath, bytesOf(named("mine")));
    host.defaults.values["device.manageSettings"] = false;
    host.desktop.permissions().revokeInputMonitoring();
    host.plugInMouse();
    make();
    dispatcher.advance(seconds(10));
    EXPECT_EQ(model->config(), named("mine"));
    EXPECT_FALSE(model->permissions().inputMonitoring);
    EXPECT_TRUE(model->permissions().accessibility);
    EXPECT_FALSE(model->deviceMonitor().control()->isEnabled());
    EXPECT_EQ(model->launchAtLogin().status(), LoginItemStatus::unknown);
    EXPECT_EQ(model->engine(), nullptr);
    EXPECT_EQ(host.firmware.requestCount(), 0U);
    EXPECT_FALSE(host.updater.hasStarted);
    EXPECT_THAT(changes, IsEmpty());
}

TEST_F(AppModelTest, a_launch_brings_engine_mouse_login_item_and_updater_up) {
    host.defaults.values["device.reportRateHertz"] = std::int64_t{500};
    host.defaults.values["updates.automaticChecks"] = false;
    host.loginItem.isRegistered = true;
    host.plugInMouse();
    make();
    model->start();
    model->start();
    dispatcher.advance(seconds(3));
    EXPECT_TRUE(model->status().isTapEnabled);
    EXPECT_TRUE(model->status().hidConnection.isConnected());
    EXPECT_TRUE(model->status().pointerTuning.isApplied);
    EXPECT_EQ(model->menuBarStatus(), (MenuBarStatus{"computermouse.fill", "Active", {}}));
    EXPECT_EQ(model->frontmostAppName().toStdString(), "Editor");
    EXPECT_FALSE(model->needsBanner());
    EXPECT_TRUE(model->launchAtLogin().isEnabled());
    EXPECT_TRUE(host.updater.hasStarted);
    EXPECT_FALSE(host.updater.wasAutomaticAtStart);
    EXPECT_EQ(host.firmware.dpi(), Profile::defaultDPI) << "the profile's, by the engine";
    EXPECT_EQ(host.firmware.reportInterval(), 2) << "the preference, by the monitor";
    EXPECT_TRUE(clickIsGlide());
    EXPECT_EQ(changes["engine"], 1);
    EXPECT_FALSE(saved()) << "a first start writes nothing";
}

TEST_F(AppModelTest, a_program_at_rest_tells_nobody_of_anything_and_goes_on_looking) {
    launch();
    dispatcher.advance(seconds(60));
    EXPECT_THAT(changes, IsEmpty());
    host.loginItem.isRegistered = true;
    dispatcher.advance(seconds(2));
    EXPECT_TRUE(model->launchAtLogin().isEnabled()) << "by the desktop's own settings";
}

TEST_F(AppModelTest, edits_reach_the_engine_250_ms_and_the_disk_1_s_after_the_last_of_them) {
    launch();
    model->setConfig(named("first"));
    dispatcher.advance(milliseconds(100));
    model->editConfig([](Config& config) { config.profiles.front().name = "second"; });

    dispatcher.advance(milliseconds(250) - nanoseconds(1));
    EXPECT_EQ(engineConfig(), Config::default_());
    dispatcher.advance(nanoseconds(1));
    EXPECT_EQ(engineConfig(), named("second"));

    const std::size_t stepsBefore = host.files.stepCount();
    dispatcher.advance(milliseconds(750) - nanoseconds(1));
    EXPECT_EQ(host.files.stepCount(), stepsBefore);
    dispatcher.advance(nanoseconds(1));
    EXPECT_EQ(saved(), bytesOf(named("second")));

    const std::size_t stepsAfter = host.files.stepCount();
    dispatcher.advance(seconds(10));
    EXPECT_EQ(host.files.stepCount(), stepsAfter);
    EXPECT_EQ(changes["config"], 2);
    EXPECT_EQ(model->status().activeProfileName, "second");
}

TEST_F(AppModelTest, an_equal_document_arms_nothing_and_tells_nobody) {
    launch();
    const auto nextDeadline = dispatcher.nextDeadline();  // the poll
    model->setConfig(Config::default_());
    Profile stranger = Profile::default_();
    stranger.id = "nobody";
    model->replaceProfile(stranger);
    EXPECT_EQ(dispatcher.nextDeadline(), nextDeadline);
    EXPECT_EQ(dispatcher.runReady(), 0U);

    Profile edited = model->config().profiles.back();
    edited.name = "Edited";
    model->replaceProfile(edited);
    EXPECT_EQ(model->config().profiles.back(), edited);
    EXPECT_EQ(dispatcher.nextDeadline(), dispatcher.now() + milliseconds(250));
    EXPECT_THAT(changes, ElementsAre(Pair("config", 1)));
}

TEST_F(AppModelTest, a_pause_right_after_an_edit_gives_the_engine_the_paused_form_once) {
    launch();
    model->setConfig(named("mine"));
    dispatcher.advance(milliseconds(100));
    model->setPausedByUser(true);
    EXPECT_EQ(engineConfig(), model->effectiveConfig());
    dispatcher.runReady();
    EXPECT_EQ(dispatcher.nextDeadline(), dispatcher.now() + milliseconds(900)) << "only the save";
    dispatcher.advance(milliseconds(900));
    EXPECT_EQ(saved(), bytesOf(named("mine"))) << "a pause is no part of the document";
}

TEST_F(AppModelTest, a_pause_leaves_the_mouse_alone_until_resumed_and_survives_a_relaunch) {
    launch();
    model->setPausedByUser(true);
    dispatcher.runReady();
    EXPECT_FALSE(clickIsGlide());
    for (const Profile& profile : engineConfig().profiles) {
        EXPECT_EQ(profile.scroll, ScrollSettings::passThrough);
        EXPECT_TRUE(!profile.pointer.isEnabled && profile.buttons.empty());
    }
    EXPECT_EQ(model->menuBarHeadline().toStdString(), "Paused");
    EXPECT_TRUE(model->needsBanner());
    EXPECT_EQ(changes["menu bar"], 1);
    EXPECT_EQ(changes["banner"], 1);

    host.desktop.workspace().bringToFront(
        host.desktop.workspace().install("com.figma.Desktop", "Canvas"));
    dispatcher.advance(seconds(1));
    EXPECT_EQ(model->status().activeProfileID, "canvas") << "profiles keep their ids";
    EXPECT_EQ(model->frontmostAppName().toStdString(), "Canvas");
    host.desktop.workspace().bringToFront(editor);

    model->editConfig([](Config& config) { config.profiles.front().name = "edited"; });
    launch();
    EXPECT_TRUE(model->engine()->isPausedByUser());
    EXPECT_FALSE(clickIsGlide());
    EXPECT_EQ(model->config(), named("edited")) << "edits made meanwhile are kept";
    model->setPausedByUser(false);
    dispatcher.runReady();
    EXPECT_TRUE(clickIsGlide());
    EXPECT_EQ(engineConfig(), named("edited"));
}

TEST_F(AppModelTest, quitting_twice_saves_what_was_not_yet_saved_and_is_harmless) {
    launch();
    const SimulatedHIDDevice& mouse = host.mouse->hid();
    const HIDValue corrected = mouse.copyProperty(PointerPropertyKey::resolution);
    model->setConfig(named("last words"));
    QObject::connect(&*model, &AppModel::engineChanged, [this] {
        EXPECT_EQ(saved(), bytesOf(named("last words"))) << "before the tap goes";
    });
    model->stop();
    EXPECT_NE(mouse.copyProperty(PointerPropertyKey::resolution), corrected) << "put back";
    EXPECT_EQ(saved(), bytesOf(named("last words")));
    EXPECT_EQ(model->engine(), nullptr);
    model->stop();
    EXPECT_EQ(saved(), bytesOf(named("last words")));
    EXPECT_EQ(changes["engine"], 1);
    const std::size_t steps = host.files.stepCount();
    dispatcher.advance(seconds(5));
    EXPECT_EQ(host.files.stepCount(), steps);
    EXPECT_EQ(host.hidTransport.openInterfaceCount(), 0);
    EXPECT_EQ(dispatcher.nextDeadline(), std::nullopt) << "neither a poll nor a debounce is left";
    model->restartEngineIfNeeded();
    EXPECT_FALSE(clickIsGlide());
    model->setConfig(named("as the windows went"));
    model.reset();
    EXPECT_EQ(saved(), bytesOf(named("as the windows went")));
}

TEST_F(AppModelTest, permissions_that_arrive_bring_the_tap_within_two_seconds) {
    host.desktop.permissions().revokeAccessibility();
    host.plugInMouse();
    make();
    model->start();
    dispatcher.advance(seconds(1));
    EXPECT_FALSE(model->status().isTapEnabled);
    EXPECT_TRUE(model->status().lastError) << "that the tap could not be made is told";
    host.desktop.taps().setLastRefusal("another program has the mouse");
    model->applyToEngineNow();
    dispatcher.runReady();
    EXPECT_EQ(model->status().lastError, "another program has the mouse") << "the engine knows";
    host.desktop.taps().setLastRefusal(std::nullopt);
    EXPECT_EQ(model->menuBarDetail().toStdString(), "Missing: Accessibility");
    EXPECT_TRUE(model->needsBanner());
    EXPECT_FALSE(clickIsGlide());

    host.desktop.permissions().grantAccessibility();
    const TimePoint poll = start + seconds(2);
    dispatcher.advanceTo(poll - nanoseconds(1));
    EXPECT_FALSE(model->permissions().accessibility);
    dispatcher.advanceTo(poll);
    EXPECT_TRUE(model->status().isTapEnabled);
    EXPECT_FALSE(model->status().lastError);
    EXPECT_TRUE(clickIsGlide());
}

TEST_F(AppModelTest, a_tap_that_an_edit_brings_ends_the_error_of_the_start) {
    host.desktop.taps().refuseTaps(1);
    launch();
    EXPECT_TRUE(model->status().lastError);
    model->setConfig(named("mine"));
    dispatcher.advance(seconds(1));
    EXPECT_TRUE(model->status().isTapEnabled);
    EXPECT_FALSE(model->status().lastError);
}

TEST_F(AppModelTest, permissions_that_go_are_told_and_a_tap_that_lives_on_is_left_alone) {
    launch();
    const auto engine = model->engine();
    host.desktop.permissions().revokeInputMonitoring();
    dispatcher.advance(seconds(2));
    EXPECT_EQ(model->menuBarDetail().toStdString(), "Missing: Input Monitoring");
    EXPECT_EQ(changes["permissions"], 1);
    EXPECT_TRUE(model->status().isTapEnabled);
    host.desktop.permissions().grantInputMonitoring();
    dispatcher.advance(seconds(2));
    EXPECT_EQ(model->engine(), engine) << "its tap was there all along";
    EXPECT_EQ(model->menuBarHeadline().toStdString(), "Active");

    host.desktop.permissions().revokeAccessibility();
    dispatcher.advance(seconds(2));
    EXPECT_FALSE(clickIsGlide());
    host.desktop.permissions().grantAccessibility();
    model->refreshPermissions();
    model->restartEngineIfNeeded();
    dispatcher.runReady();
    EXPECT_NE(model->engine(), engine);
    EXPECT_TRUE(clickIsGlide()) << "at once, for an interface that does not wait for the poll";
    const auto renewed = model->engine();
    model->restartEngineIfNeeded();
    EXPECT_EQ(model->engine(), renewed);
}

TEST_F(AppModelTest, the_three_ways_out_of_a_document_that_cannot_be_used) {
    const std::string bad = R"({"schemaVersion": 2})";
    host.files.putFile(host.configPath, bad);
    host.defaults.values["engine.pausedByUser"] = true;
    launch();
    EXPECT_EQ(model->config(), Config::default_());
    EXPECT_EQ(engineConfig(), model->effectiveConfig()) << "paused, and the factory's";
    EXPECT_TRUE(model->needsBanner());
    model->setPausedByUser(false);
    EXPECT_TRUE(model->needsBanner()) << "for the document alone now";
    model->revealConfigFile();
    EXPECT_THAT(host.shell.revealedFiles, ElementsAre(host.configPath));

    model->setConfig(named("not to be kept"));
    dispatcher.advance(seconds(2));
    model->retryReadingConfig();
    EXPECT_EQ(saved(), bad) << "not overwritten as long as the user has not decided";
    EXPECT_EQ(model->config(), Config::default_());
    EXPECT_TRUE(model->store().problem());

    host.files.putFile(host.configPath, bytesOf(named("repaired")));
    model->retryReadingConfig();
    EXPECT_EQ(engineConfig(), named("repaired")) << "without waiting for the debounce";
    EXPECT_FALSE(model->needsBanner());

    host.files.putFile(host.configPath, bad);
    model->retryReadingConfig();
    host.files.failEvery(SimulatedFileSystem::Step::rename, FileError::Kind::notPermitted);
    model->startFreshConfig();
    EXPECT_TRUE(model->store().problem()) << "the file could not be moved";
    EXPECT_EQ(saved(), bad);
    host.files.failEvery(SimulatedFileSystem::Step::rename, std::nullopt);
    model->startFreshConfig();
    EXPECT_FALSE(model->store().problem());
    EXPECT_EQ(saved(), bytesOf(Config::default_())) << "at once";
    EXPECT_EQ(engineConfig(), Config::default_());
}

TEST_F(AppModelTest, a_mouse_that_lost_its_settings_gets_them_but_for_a_wheel_of_the_systems) {
    systemManagesWheel = true;
    launch();
    model->setHighResolutionWheel(true);
    model->setReportRate(500);
    dispatcher.advance(seconds(1));
    EXPECT_EQ(host.firmware.wheelMode(), 0);
    for (const bool isTaken : {true, false}) {
        systemManagesWheel = isTaken;
        host.firmware.powerCycle();
        ASSERT_EQ(host.firmware.reportInterval(), 1);
        model->reapplyDeviceSettings();
        dispatcher.advance(seconds(1));
        EXPECT_EQ(host.firmware.reportInterval(), 2);
        EXPECT_EQ(host.firmware.dpi(), Profile::defaultDPI);
        EXPECT_EQ(host.firmware.wheelMode(), isTaken ? 0 : 2);
    }
}

TEST_F(AppModelTest, the_gate_for_device_settings_writes_all_of_them_when_it_opens) {
    host.defaults.values["device.manageSettings"] = false;
    launch();
    const std::uint16_t ownDPI = host.firmware.dpi();
    model->setReportRate(500);
    model->setHighResolutionWheel(true);
    dispatcher.advance(seconds(1));
    EXPECT_EQ(host.firmware.reportInterval(), 1);
    EXPECT_EQ(host.firmware.dpi(), ownDPI);
    EXPECT_NE(ownDPI, Profile::defaultDPI);

    model->setManagesDeviceSettings(true);
    dispatcher.advance(seconds(1));
    EXPECT_EQ(host.firmware.reportInterval(), 2);
    EXPECT_EQ(host.firmware.wheelMode(), 2);
    EXPECT_EQ(host.firmware.dpi(), Profile::defaultDPI);
    EXPECT_EQ(host.defaults.values["device.reportRateHertz"], DefaultsValue(std::int64_t{500}));

    const std::size_t requests = host.firmware.requestCount();
    model->setManagesDeviceSettings(false);
    dispatcher.advance(seconds(1));
    EXPECT_EQ(host.firmware.requestCount(), requests) << "closing it asks nothing of the mouse";
}

TEST_F(AppModelTest, what_happens_to_the_mouse_reaches_the_engine) {
    launch();
    host.unplugMouse();
    dispatcher.advance(seconds(3));
    EXPECT_EQ(model->menuBarHeadline().toStdString(), "Waiting for your mouse");
    EXPECT_EQ(changes["menu bar"], 1);
    EXPECT_FALSE(model->status().hidConnection.isConnected());
    host.plugInMouse();
    dispatcher.advance(seconds(3));
    EXPECT_EQ(model->menuBarHeadline().toStdString(), "Active");
    EXPECT_EQ(host.firmware.dpi(), Profile::defaultDPI);
    EXPECT_TRUE(clickIsGlide());
}

TEST_F(AppModelTest, the_application_in_front_goes_by_its_name_or_else_by_its_identifier) {
    launch();
    model->engine()->activateProfile("org.example.unknown");
    dispatcher.runReady();
    EXPECT_EQ(model->frontmostAppName().toStdString(), "org.example.unknown");
    model->engine()->activateProfile(std::nullopt);
    dispatcher.runReady();
    EXPECT_EQ(model->frontmostAppName().toStdString(), "");
    EXPECT_EQ(changes["frontmost"], 2);
}

TEST_F(AppModelTest, a_model_that_goes_without_a_farewell_still_saves_and_lets_go) {
    launch();
    model->setConfig(named("unsaved"));
    host.mouse->spin(1);
    dispatcher.advance(milliseconds(50));  // in the middle of a glide
    model.reset();
    EXPECT_EQ(saved(), bytesOf(named("unsaved")));
    dispatcher.advance(seconds(5));
    EXPECT_EQ(editor.takeReceived().back().integerValue(CGEventField::scrollWheelEventScrollPhase),
              gestureEnded);
    EXPECT_FALSE(clickIsGlide());
    dispatcher.discard();  // the rest of the glide
}

}  // namespace
}  // namespace tessara
