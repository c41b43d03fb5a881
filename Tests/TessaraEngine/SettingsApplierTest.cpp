#include <fmt/format.h>
#include <gmock/gmock.h>

#include "EngineOnDesktop.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/SettingsApplier.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using DPI = std::optional<std::int64_t>;
using Calls = std::vector<std::string>;

/// Answers as it is told to, and writes down what it is asked.
class ScriptedControl final : public HIDPPControlling {
  public:
    HIDPPTask<std::int64_t> setDPI(std::int64_t dpi) override {
        calls.push_back(fmt::format("dpi {}", dpi));
        if (dpiError) co_return std::unexpected(*dpiError);
        if (!isDeaf) current = dpi;
        co_return current;
    }
    HIDPPTask<void> setReportRate(std::int64_t hertz) override {
        calls.push_back(fmt::format("rate {}", hertz));
        if (rateError) co_return std::unexpected(*rateError);
        co_return HIDPPResult<void>();
    }
    HIDPPTask<bool> setWheelHighResolution(bool isHighResolution) override {
        calls.push_back(fmt::format("wheel {}", isHighResolution));
        if (wheelError) co_return std::unexpected(*wheelError);
        co_return isHighResolution;
    }
    HIDPPTask<std::int64_t> readDPI() override {
        calls.emplace_back("read");
        if (readError) co_return std::unexpected(*readError);
        co_return current;
    }

    Calls calls;
    std::int64_t current = 800;
    bool isDeaf = false;  // takes a resolution and does not change it
    std::optional<HIDPPError> dpiError, rateError, wheelError, readError;
};

class SettingsApplierTest : public testing::VirtualTimeTest {
  protected:
    static constexpr DesiredDeviceSettings all{
        .dpi = 1600, .reportRateHertz = 500, .highResolutionWheel = true};

    Calls takeCalls() {
        dispatcher.runReady();
        return std::exchange(control->calls, {});
    }
    std::shared_ptr<SettingsApplier> applierOf(const DesiredDeviceSettings& desired) {
        return std::make_shared<SettingsApplier>(control, desired, dispatcher);
    }

    const std::shared_ptr<ScriptedControl> control = std::make_shared<ScriptedControl>();
};

TEST_F(SettingsApplierTest, writes_in_one_order_up_to_the_first_failure) {
    const HIDPPError error = HIDPPError::InvalidArgument{"no"};
    const SettingsApplyState failed = SettingsFailed{"invalid argument: no"};
    struct Row {
        const char* name;
        DesiredDeviceSettings desired;
        std::optional<HIDPPError> ScriptedControl::* broken;
        Calls calls;
        SettingsApplyState state;
        DPI reported;
    };
    const Row rows[] = {
        {"all",
         all,
         nullptr,
         {"dpi 1600", "rate 500", "wheel true", "read"},
         SettingsApplied{1600},
         1600},
        {"nothing wanted", {}, nullptr, {"read"}, SettingsApplied{}, 800},
        {"dpi fails", all, &ScriptedControl::dpiError, {"dpi 1600"}, failed, {}},
        {"rate fails", all, &ScriptedControl::rateError, {"dpi 1600", "rate 500"}, failed, {}},
        {"wheel fails",
         all,
         &ScriptedControl::wheelError,
         {"dpi 1600", "rate 500", "wheel true"},
         failed,
         {}},
        {"read fails",
         all,
         &ScriptedControl::readError,
         {"dpi 1600", "rate 500", "wheel true", "read"},
         SettingsApplied{1600},
         {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        *control = {};
        if (row.broken != nullptr) (*control).*(row.broken) = error;
        const auto applier = applierOf(row.desired);
        EXPECT_THAT(takeCalls(), IsEmpty()) << "nothing is applied at creation";
        std::vector<SettingsApplyState> states;
        applier->onStateChange([&](const auto& state) { states.push_back(state); });
        applier->applyNow();
        EXPECT_EQ(takeCalls(), row.calls);
        EXPECT_EQ(states,
                  (std::vector<SettingsApplyState>{SettingsIdle{}, SettingsApplying{}, row.state}));
        EXPECT_EQ(applier->deviceReportedDPI(), row.reported);
    }
}

TEST_F(SettingsApplierTest, each_error_becomes_the_state_that_the_user_can_act_on) {
    const std::pair<HIDPPError, SettingsApplyState> rows[] = {
        {HIDPPError::NotPermitted{}, SettingsNotPermitted{}},
        {HIDPPError::DeviceNotFound{}, SettingsIdle{}},
        {HIDPPError::NotOpen{}, SettingsIdle{}},
        {HIDPPError::NotConnected{}, SettingsIdle{}},
        {HIDPPError::DeviceRemoved{}, SettingsIdle{}},
        {HIDPPError::Protocol20{HIDPP20ErrorCode::busy},
         SettingsFailed{HIDPPError(HIDPPError::Protocol20{HIDPP20ErrorCode::busy}).description()}},
    };
    const auto applier = applierOf({.dpi = 1600});
    for (const auto& [error, state] : rows) {
        control->dpiError.reset();
        applier->applyNow();
        dispatcher.runReady();
        control->dpiError = error;
        applier->setDPIOverride(900);
        dispatcher.runReady();
        EXPECT_EQ(applier->state(), state) << error.description();
        EXPECT_EQ(applier->lastAppliedDPI(), applier->deviceReportedDPI()) << "kept";
    }
}

TEST_F(SettingsApplierTest, a_shift_lies_over_the_wanted_resolution_until_it_is_taken_away) {
    const auto applier = applierOf(all);
    std::vector<SettingsApplyState> states;
    applier->applyNow();
    dispatcher.runReady();
    applier->onStateChange([&](const auto& state) { states.push_back(state); });
    control->calls.clear();

    applier->setDPIOverride(800);
    EXPECT_THAT(takeCalls(), ElementsAre("dpi 800", "read")) << "rate and wheel are let alone";
    applier->update(all);
    EXPECT_THAT(takeCalls(), ElementsAre("dpi 800", "rate 500", "wheel true", "read"));
    EXPECT_EQ(applier->effectiveDPI(), 800);
    applier->setDPIOverride(std::nullopt);
    EXPECT_THAT(takeCalls(), ElementsAre("dpi 1600", "read"));
    EXPECT_EQ(states, (std::vector<SettingsApplyState>{SettingsApplied{1600}, SettingsApplied{800},
                                                       SettingsApplying{}, SettingsApplied{800},
                                                       SettingsApplied{1600}}))
        << "only the full apply shows as one";

    const auto withoutDPI = applierOf({});
    withoutDPI->setDPIOverride(std::nullopt);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(withoutDPI->state(), SettingsApplyState(SettingsIdle{}));
}

TEST_F(SettingsApplierTest, its_observer_hears_the_present_resolution_and_then_only_changes) {
    const auto applier = applierOf({});
    std::vector<DPI> heard;
    const auto observe = [&] {
        applier->onDeviceDPIChange([&](DPI dpi) { heard.push_back(dpi); });
    };
    observe();
    for (const std::int64_t dpi : {1200, 1200, 0, -5, 1200, 1600}) {
        control->current = dpi;
        applier->applyNow();
        dispatcher.runReady();
    }
    EXPECT_THAT(heard, ElementsAre(DPI(), DPI(1200), DPI(1600)));
    observe();
    dispatcher.runReady();
    EXPECT_EQ(heard.back(), DPI(1600));
    EXPECT_EQ(heard.size(), 4U);

    // What the mouse says that it was set to, and what it says that it runs at, are two things.
    control->isDeaf = true;
    control->current = 700;
    applier->setDPIOverride(900);
    dispatcher.runReady();
    EXPECT_EQ(applier->lastAppliedDPI(), 700);
    applier->setDPIOverride(std::nullopt);
    applier->applyNow();
    dispatcher.runReady();
    EXPECT_EQ(applier->state(), SettingsApplyState(SettingsApplied{700})) << "none was written";
}

TEST_F(SettingsApplierTest, a_mouse_that_becomes_ready_gets_its_settings_again) {
    const auto applier = applierOf(all);
    std::vector<std::string> order;
    int changes = 0;
    applier->onDeviceReady([&] { order.push_back(control->calls.empty() ? "ready" : "late"); });
    applier->onDeviceDPIChange([&](DPI) { ++changes; });
    applier->setDPIOverride(800);
    takeCalls();
    EXPECT_EQ(changes, 2);

    applier->handle(HIDPPEvent::DeviceRemoved{});
    applier->handle(HIDPPEvent::DeviceAttached{});
    applier->handle(HIDPPEvent::Notification{});
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(applier->state(), SettingsApplyState(SettingsIdle{}));
    EXPECT_EQ(applier->lastAppliedDPI(), std::nullopt);
    EXPECT_EQ(applier->deviceReportedDPI(), 800) << "kept";

    applier->handle(HIDPPEvent::DeviceReady{});
    EXPECT_THAT(takeCalls(), ElementsAre("dpi 800", "rate 500", "wheel true", "read"));
    EXPECT_EQ(order.size(), 1U);
    EXPECT_EQ(changes, 2) << "the same as before the removal";

    applier->handle(HIDPPEvent::StateChanged{HIDPPConnectionState::Disconnected{}});
    dispatcher.runReady();
    EXPECT_EQ(applier->state(), SettingsApplyState(SettingsApplied{800}));
    applier->handle(HIDPPEvent::StateChanged{HIDPPConnectionState::NotPermitted{}});
    dispatcher.runReady();
    EXPECT_EQ(applier->state(), SettingsApplyState(SettingsNotPermitted{}));
}

/// The applier, the client and a mouse, down to the bytes.
class SettingsApplierOnMouse : public testing::VirtualTimeTest {
  protected:
    static constexpr HIDPPDeviceMatch match = HIDPPDeviceMatch::g502X;

    ~SettingsApplierOnMouse() override {
        disconnect(device, *queue);
        dispatcher.advance(std::chrono::seconds(5));
    }

    void connect() {
        transport.plug(mouse);
        tessara::connect(device, *queue);
        dispatcher.advance(std::chrono::seconds(2));
    }

    SettingsApplyState stateAfter(const DesiredDeviceSettings& desired) {
        applier->update(desired);
        bool hasEnded = false;
        applier->waitForApply([&] { hasEnded = true; });
        dispatcher.advance(std::chrono::seconds(4));
        EXPECT_TRUE(hasEnded);
        return applier->state();
    }

    SimulatedMouse mouse;  // outlives the transport
    SimulatedHIDTransport transport;
    const std::shared_ptr<DispatchQueue> queue =
        dispatcher.makeQueue("test", QualityOfService::userInitiated);
    std::shared_ptr<HIDPPDevice> device =
        std::make_shared<HIDPPDevice>(match, std::make_shared<HIDPPRunLoop>(dispatcher, transport));
    const std::shared_ptr<SettingsApplier> applier = std::make_shared<SettingsApplier>(
        std::make_shared<LiveHIDPPControl>(device), DesiredDeviceSettings{}, dispatcher);
};

TEST_F(SettingsApplierOnMouse, the_mouse_is_set_or_the_reason_is_told) {
    bool hasWaited = false;
    applier->waitForApply([&] { hasWaited = true; });
    dispatcher.runReady();
    EXPECT_TRUE(hasWaited) << "nothing to wait for";
    EXPECT_EQ(stateAfter({.dpi = 1600}), SettingsApplyState(SettingsIdle{})) << "no mouse";

    connect();
    EXPECT_EQ(stateAfter({.dpi = 1610, .reportRateHertz = 500, .highResolutionWheel = true}),
              SettingsApplyState(SettingsApplied{1600}))
        << "the nearest that the sensor takes";
    EXPECT_EQ(mouse.dpi(), 1600);
    EXPECT_EQ(mouse.reportInterval(), 2);
    EXPECT_EQ(mouse.wheelMode() & 2, 2);

    EXPECT_EQ(
        stateAfter({.dpi = 1000, .reportRateHertz = 300, .highResolutionWheel = false}),
        SettingsApplyState(SettingsFailed{"invalid argument: unsupported report rate 300 Hz"}));
    EXPECT_EQ(mouse.dpi(), 1000) << "it comes first";
    EXPECT_EQ(mouse.wheelMode() & 2, 2) << "it comes last";
    EXPECT_EQ(stateAfter({.reportRateHertz = 0}),
              SettingsApplyState(SettingsFailed{"invalid argument: unsupported report rate 0 Hz"}));
    EXPECT_EQ(stateAfter({.reportRateHertz = 200}),
              SettingsApplyState(SettingsFailed{
                  "invalid argument: report rate 200 Hz (5 ms) is not supported (bitmap 0x8B)"}));

    // The mouse answers one request no more: the next apply makes up for it.
    mouse.injectFault(SimulatedMouse::Fault::noReply);
    EXPECT_TRUE(std::holds_alternative<SettingsFailed>(stateAfter({.dpi = 1200})));
    EXPECT_EQ(stateAfter({.dpi = 1200}), SettingsApplyState(SettingsApplied{1200}));

    // A shift right behind an apply: both run, the later one counts.
    applier->update({.dpi = 3000});
    applier->setDPIOverride(400);
    applier->waitForApply([&] { EXPECT_EQ(mouse.dpi(), 400); });
    dispatcher.advance(std::chrono::seconds(1));
    EXPECT_EQ(mouse.dpi(), 400);
    EXPECT_EQ(applier->deviceReportedDPI(), 400);
}

}  // namespace
}  // namespace tessara
