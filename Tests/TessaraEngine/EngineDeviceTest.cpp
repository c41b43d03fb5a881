#include <gmock/gmock.h>

#include "EngineOnDesktop.h"
#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/FakePointerPropertyBackend.h"
#include "TessaraEngine/PointerHardwareTuning.h"

namespace tessara {
namespace {

using std::chrono::seconds;

constexpr std::uint8_t highResolution = 2;

class EngineDevice : public testing::VirtualTimeTest {
  protected:
    void TearDown() override {
        if (!on) return;
        engine().stop();
        if (device) disconnect(device, *on->mainQueue);
        dispatcher.advance(seconds(5));
        EXPECT_EQ(on->hidTransport.openInterfaceCount(), 0);
    }

    void use(const EngineOnDesktop::Adjustment& adjust, PointerHardwareTuning* tuning = nullptr) {
        on.emplace(
            dispatcher, documentOfTwoProfiles(),
            [&](TessaraEngine::Options& options, EngineOnDesktop& parts) {
                options.reportRateHertz = 500;
                options.highResolutionWheel = true;
                adjust(options, parts);
            },
            tuning);
        dispatcher.runReady();
    }
    void useOwnConnection(PointerHardwareTuning* tuning = nullptr) {
        use([](TessaraEngine::Options& options,
               EngineOnDesktop&) { options.connectsToDevice = true; },
            tuning);
        on->hidTransport.plug(hardware);
    }
    void start() {
        EXPECT_TRUE(engine().start());
        dispatcher.advance(seconds(2));
    }
    void bringToFront(SimulatedApplication& application) {
        on->desktop.workspace().bringToFront(application);
        dispatcher.advance(seconds(1));
    }
    /// The resolution inside the mouse, after something was done.
    std::int64_t dpiAfter(const std::function<void()>& act) {
        act();
        dispatcher.advance(seconds(2));
        return hardware.dpi();
    }
    void expectAllSet(std::int64_t dpi) {
        EXPECT_EQ(hardware.dpi(), dpi);
        EXPECT_EQ(hardware.reportInterval(), 2);
        EXPECT_EQ(hardware.wheelMode() & highResolution, highResolution);
        EXPECT_EQ(status().deviceSettings, SettingsApplyState(SettingsApplied{dpi}));
    }
    void replug() {
        on->hidTransport.unplug(hardware);
        dispatcher.advance(seconds(1));
        EXPECT_EQ(status().deviceSettings, SettingsApplyState(SettingsIdle{}));
        EXPECT_EQ(status().hidConnection, HIDPPConnectionState());
        hardware.powerCycle();
        on->hidTransport.plug(hardware);
        dispatcher.advance(seconds(3));
    }
    /// What must hold whoever owns the connection.
    void expectTheMouseToFollow() {
        expectAllSet(2000);
        EXPECT_TRUE(status().hidConnection.isConnected());
        EXPECT_EQ(dpiAfter([&] { on->mouse->press(5); }), shiftedDPI);
        EXPECT_EQ(dpiAfter([&] { on->mouse->release(5); }), 2000);
        EXPECT_EQ(engine().settingsApplier()->effectiveDPI(), 2000);

        // A profile switch ends the shift, and the release finds nothing to undo.
        on->mouse->press(5);
        bringToFront(on->game);
        expectAllSet(1200);
        EXPECT_EQ(dpiAfter([&] { on->mouse->release(5); }), 1200);

        replug();
        expectAllSet(1200);
        bringToFront(on->editor);
        on->mouse->press(5);
        dispatcher.advance(seconds(1));
        replug();
        expectAllSet(2000);
        EXPECT_EQ(dpiAfter([&] { on->mouse->release(5); }), 2000) << "the shift went with it";
    }

    TessaraEngine& engine() { return *on->engine; }
    const EngineStatus& status() { return on->engine->status(); }

    SimulatedMouse hardware;
    std::shared_ptr<HIDPPDevice> device;
    EventSubscription deviceEvents;
    std::optional<EngineOnDesktop> on;
};

TEST_F(EngineDevice, its_own_connection_keeps_the_mouse_at_the_profiles_settings) {
    useOwnConnection();
    start();
    expectTheMouseToFollow();

    // Another mask takes the connection down and up again.
    Config document = documentOfTwoProfiles();
    document.profiles[0].pointer = {.isEnabled = true, .dpi = 3200};
    engine().update(document);
    dispatcher.advance(seconds(3));
    expectAllSet(3200);
    EXPECT_EQ(on->hidTransport.openInterfaceCount(), 1);
}

TEST_F(EngineDevice, a_connection_of_the_applications_is_written_through_and_listened_to) {
    use([&](TessaraEngine::Options& options, EngineOnDesktop& parts) {
        device = std::make_shared<HIDPPDevice>(
            HIDPPDeviceMatch::g502X,
            std::make_shared<HIDPPRunLoop>(dispatcher, parts.hidTransport));
        options.hidControl = std::make_shared<LiveHIDPPControl>(device);
    });
    on->hidTransport.plug(hardware);
    start();
    EXPECT_EQ(status().deviceSettings, SettingsApplyState(SettingsIdle{})) << "not connected yet";
    deviceEvents = device->makeEventStream(
        on->mainQueue, [this](const HIDPPEvent& event) { engine().handleDeviceEvent(event); });
    connect(device, *on->mainQueue);
    dispatcher.advance(seconds(3));
    expectTheMouseToFollow();
    deviceEvents.cancel();
}

TEST_F(EngineDevice, without_a_way_to_the_mouse_nothing_is_written_to_it) {
    use([](TessaraEngine::Options&, EngineOnDesktop&) {});
    on->hidTransport.plug(hardware);
    start();
    bringToFront(on->game);
    on->mouse->click(5);
    dispatcher.advance(seconds(1));
    EXPECT_EQ(engine().settingsApplier(), nullptr);
    EXPECT_EQ(hardware.requestCount(), 0U);
}

TEST_F(EngineDevice, a_mouse_that_cannot_be_reached_leaves_the_input_reshaped_and_is_told_of) {
    useOwnConnection();
    EXPECT_TRUE(engine().start());
    engine().stop();
    dispatcher.advance(seconds(2));
    EXPECT_EQ(status().lastError, std::nullopt) << "the stop ended the attempt";
    on->hidTransport.setListenEventAccess(HIDListenEventAccess::denied);
    start();
    EXPECT_EQ(status().deviceSettings, SettingsApplyState(SettingsNotPermitted{}));
    EXPECT_EQ(status().lastError, std::nullopt);
    EXPECT_TRUE(status().isRunning);
    on->mouse->click(3);
    dispatcher.runReady();
    EXPECT_THAT(EngineOnDesktop::linesOf(on->editor),
                ::testing::ElementsAre("key 40 down", "key 40 up"));

    engine().stop();
    on->hidTransport.setListenEventAccess(HIDListenEventAccess::granted);
    on->hidTransport.unplug(hardware);
    start();
    EXPECT_EQ(status().lastError, HIDPPError(HIDPPError::DeviceNotFound{}).description());
    on->hidTransport.plug(hardware);
    dispatcher.advance(seconds(3));
    expectAllSet(2000);
}

TEST_F(EngineDevice, the_pointer_figures_follow_the_resolution_inside_the_mouse) {
    constexpr std::uint64_t registryID = 9;
    constexpr std::int64_t fixedOne = 65536;
    const std::string& key = PointerPropertyKey::resolution;
    FakePointerPropertyBackend backend;
    SimulatedUserDefaults defaults;
    SimulatedFileSystem files;
    SimulatedWallClock wallClock;
    backend.identities = {{.registryID = registryID,
                           .vendorID = HIDPPDeviceMatch::g502X.vendorID,
                           .productID = HIDPPDeviceMatch::g502X.productID,
                           .primaryUsagePage = 1,
                           .primaryUsage = 2}};
    backend.values[registryID] = {{key, 400 * fixedOne},
                                  {PointerPropertyKey::mouseAcceleration, 45000}};
    const auto original = backend.values;
    const auto cpi = [&] { return backend.values[registryID][key] / fixedOne; };
    PointerHardwareTuning tuning({.backend = backend,
                                  .defaults = defaults,
                                  .files = files,
                                  .wallClock = wallClock,
                                  .capturePath = "/support/capture.json"},
                                 {});
    useOwnConnection(&tuning);
    start();
    EXPECT_EQ(cpi(), 2000);
    EXPECT_TRUE(status().pointerTuning.isApplied);
    on->mouse->press(5);
    dispatcher.advance(seconds(1));
    EXPECT_EQ(cpi(), shiftedDPI);
    on->mouse->release(5);
    dispatcher.advance(seconds(1));

    engine().setPausedByUser(true);
    EXPECT_EQ(backend.values, original);
    EXPECT_FALSE(status().pointerTuning.isApplied);
    engine().setPausedByUser(true);
    engine().setPausedByUser(false);
    EXPECT_EQ(cpi(), 2000);
    engine().setPointerTuningEnabled(false);
    EXPECT_EQ(backend.values, original);

    // What the system refuses at first is tried again with every look at the metrics.
    backend.keysRefusedEverywhere = {key, PointerPropertyKey::mouseAcceleration};
    engine().setPointerTuningEnabled(true);
    EXPECT_FALSE(status().pointerTuning.isApplied);
    backend.keysRefusedEverywhere.clear();
    engine().refreshMetrics();
    EXPECT_TRUE(status().pointerTuning.isApplied);

    engine().stop();
    EXPECT_EQ(backend.values, original);
    EXPECT_EQ(status().pointerTuning.lastRestoreReason, PointerTuningRestoreReason::engineStopped);
    engine().refreshMetrics();
    dispatcher.advance(seconds(3));
    EXPECT_EQ(backend.values, original) << "a stopped engine tries nothing";
    EXPECT_FALSE(files.contents("/support/capture.json"));
    TearDown();
    on.reset();
}

}  // namespace
}  // namespace tessara
