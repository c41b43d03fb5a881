#include <memory>
#include <string>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/DeviceMonitor.h"

namespace tessara {
namespace {

using Fault = SimulatedMouse::Fault;

class DeviceMonitorTest : public testing::VirtualTimeTest {
  protected:
    ~DeviceMonitorTest() override {
        if (monitor) monitor->stop();
        run();
        monitor = nullptr;
        run();
        EXPECT_EQ(transport.openInterfaceCount(), 0) << "the connection was not closed";
        dispatcher.discard();
    }

    /// Lets everything come to rest, timeouts and reconnects included.
    void run() { dispatcher.advance(std::chrono::seconds(20)); }

    void make(bool managesDeviceSettings = true) {
        monitor = std::make_unique<DeviceMonitor>(managesDeviceSettings, runLoop, main, wallClock);
        monitor->setOnDeviceEvent([this](const HIDPPEvent& event) {
            const bool hasGone = !events.empty() && events.back().is<HIDPPEvent::DeviceRemoved>();
            EXPECT_EQ(snapshot() == DeviceMonitor::Snapshot(), hasGone)
                << "events follow a refresh";
            events.push_back(event);
        });
        QObject::connect(monitor.get(), &DeviceMonitor::snapshotChanged,
                         [this] { ++snapshotChanges; });
    }

    void startWithMouse() {
        transport.plug(mouse);
        make();
        monitor->start();
        run();
    }

    void spawn(asio::awaitable<void> operation) {
        asio::co_spawn(main->executor(), std::move(operation), asio::detached);
    }

    const DeviceMonitor::Snapshot& snapshot() const { return monitor->snapshot(); }

    SimulatedWallClock wallClock;
    SimulatedMouse mouse;
    SimulatedHIDTransport transport;
    std::shared_ptr<DispatchQueue> main =
        dispatcher.makeQueue("main", QualityOfService::userInteractive);
    std::shared_ptr<const HIDPPRunLoop> runLoop =
        std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    std::vector<HIDPPEvent> events;
    int snapshotChanges = 0;
    std::unique_ptr<DeviceMonitor> monitor;
};

TEST_F(DeviceMonitorTest, a_mouse_that_is_there_shows_all_its_facts) {
    startWithMouse();

    EXPECT_TRUE(snapshot().connection.isConnected());
    EXPECT_EQ(snapshot().identity->product, "Gaming Mouse");
    EXPECT_EQ(snapshot().deviceName, "Gaming Mouse With A Long Name");
    EXPECT_EQ(snapshot().protocolVersion->description(), "HID++ 4.2");
    EXPECT_EQ(snapshot().information->unitIDHex(), "12345678");
    EXPECT_EQ(snapshot().dpi->current, 800);
    EXPECT_EQ(snapshot().dpiRange->maximum(), 25600);
    EXPECT_EQ(snapshot().reportRate->current.hertz(), 1000);
    EXPECT_FALSE(snapshot().wheelMode->highResolution);
    EXPECT_EQ(snapshot().wheelCapability->multiplier, 8);
    EXPECT_TRUE(snapshot().ratchet.has_value());
    EXPECT_EQ(snapshot().lastRefresh, wallClock.moment);
    EXPECT_FALSE(monitor->isRefreshing());
}

TEST_F(DeviceMonitorTest, a_mouse_plugged_in_later_is_announced_set_and_forgotten_again) {
    make();
    monitor->setDesiredReportRateHertz(500);
    monitor->setDesiredHighResolutionWheel(true);
    monitor->start();
    run();
    EXPECT_FALSE(snapshot().connection.isConnected());
    EXPECT_FALSE(snapshot().lastError) << "a mouse that is not there is no error";

    transport.plug(mouse);
    run();
    EXPECT_EQ(mouse.reportInterval(), 2);
    EXPECT_EQ(mouse.wheelMode(), 0x02);
    EXPECT_EQ(snapshot().reportRate->current.hertz(), 500);
    ASSERT_EQ(events.size(), 3U);
    EXPECT_TRUE(events[0].is<HIDPPEvent::StateChanged>());
    EXPECT_TRUE(events[1].is<HIDPPEvent::DeviceReady>());
    EXPECT_TRUE(events[2].is<HIDPPEvent::DeviceAttached>());

    transport.unplug(mouse);
    run();
    EXPECT_FALSE(snapshot().connection.isConnected());
    EXPECT_FALSE(snapshot().dpi);
    EXPECT_FALSE(snapshot().identity);

    transport.plug(mouse);
    run();
    EXPECT_EQ(mouse.reportInterval(), 2) << "the wanted rate is put back after the power cycle";
}

TEST_F(DeviceMonitorTest, a_closed_gate_stops_every_write_and_no_read) {
    transport.plug(mouse);
    make(/*managesDeviceSettings=*/false);
    monitor->setDesiredReportRateHertz(125);
    monitor->start();
    run();
    EXPECT_EQ(mouse.reportInterval(), 1);
    EXPECT_EQ(snapshot().dpi->current, 800);

    std::vector<std::string> answers;
    spawn([](GatedHIDPPControl& control, std::vector<std::string>& told) -> asio::awaitable<void> {
        told.push_back(std::to_string((co_await control.setDPI(1600)).value()));
        told.push_back((co_await control.setReportRate(7)) ? "ok" : "failed");
        told.push_back((co_await control.setWheelHighResolution(true)).value() ? "on" : "off");
        told.push_back(std::to_string((co_await control.readDPI()).value()));
        control.setEnabled(true);
        told.push_back(std::to_string((co_await control.setDPI(1600)).value()));
        told.push_back((co_await control.setReportRate(7)).error().description());
    }(*monitor->control(), answers));
    run();
    EXPECT_EQ(answers,
              (std::vector<std::string>{"1600", "ok", "on", "800", "1600",
                                        "invalid argument: unsupported report rate 7 Hz"}));
    EXPECT_EQ(mouse.dpi(), 1600);
}

TEST_F(DeviceMonitorTest, a_failing_write_is_told_until_the_next_refresh_and_ends_the_rest) {
    startWithMouse();
    monitor->setDesiredReportRateHertz(333);
    monitor->setDesiredHighResolutionWheel(true);
    spawn(monitor->applyDesiredSettings());
    run();
    EXPECT_EQ(snapshot().lastError, "invalid argument: unsupported report rate 333 Hz");
    EXPECT_EQ(mouse.wheelMode(), 0);

    monitor->setDesiredReportRateHertz(std::nullopt);
    monitor->applyDesiredSettingsAndRefresh();
    run();
    EXPECT_FALSE(snapshot().lastError);
    EXPECT_EQ(mouse.wheelMode(), 0x02);
}

TEST_F(DeviceMonitorTest, what_the_mouse_lacks_or_fails_to_say_leaves_that_fact_empty) {
    SimulatedMouseDescription plain;
    std::erase_if(plain.features, [](const auto& feature) { return feature.id == 0x2121; });
    SimulatedMouse plainMouse(plain);
    transport.plug(plainMouse);
    make();
    monitor->start();
    run();
    EXPECT_FALSE(snapshot().wheelMode);
    EXPECT_FALSE(snapshot().wheelCapability);
    EXPECT_FALSE(snapshot().ratchet);
    EXPECT_EQ(snapshot().dpi->current, 800);

    plainMouse.injectFault(Fault::error20);  // meets the name's length
    spawn(monitor->refresh());
    run();
    EXPECT_FALSE(snapshot().deviceName);
    EXPECT_EQ(snapshot().reportRate->current.hertz(), 1000);
    EXPECT_FALSE(snapshot().lastError);
    transport.unplug(plainMouse);
    run();
}

TEST_F(DeviceMonitorTest, a_second_refresh_beside_a_running_one_asks_nothing) {
    startWithMouse();
    const std::size_t before = mouse.requestCount();
    spawn(monitor->refresh());
    run();
    const std::size_t oneRefresh = mouse.requestCount() - before;
    snapshotChanges = 0;

    spawn(monitor->refresh());
    spawn(monitor->refresh());
    EXPECT_FALSE(monitor->isRefreshing());
    run();
    EXPECT_EQ(mouse.requestCount(), before + 2 * oneRefresh);
    EXPECT_EQ(snapshotChanges, 0) << "an equal snapshot tells nobody";

    // What was read before an unplug is not told after it.
    mouse.injectFault(Fault::noReply);
    spawn(monitor->refresh());
    dispatcher.advance(std::chrono::milliseconds(10));
    EXPECT_TRUE(monitor->isRefreshing());
    transport.unplug(mouse);
    run();
    EXPECT_FALSE(snapshot().connection.isConnected() || snapshot().identity);
}

TEST_F(DeviceMonitorTest, access_that_is_denied_is_a_state_and_no_error) {
    transport.plug(mouse);
    transport.setListenEventAccess(HIDListenEventAccess::denied);
    make();
    monitor->start();
    run();
    EXPECT_TRUE(snapshot().isNotPermitted);
    EXPECT_FALSE(snapshot().lastError);
    EXPECT_EQ(mouse.requestCount(), 0U);
}

TEST_F(DeviceMonitorTest, it_can_be_stopped_started_again_and_destroyed_at_any_moment) {
    startWithMouse();
    monitor->stop();
    monitor->stop();
    run();
    EXPECT_EQ(transport.openInterfaceCount(), 0);
    monitor->start();
    monitor->start();
    run();
    EXPECT_TRUE(snapshot().connection.isConnected());

    // Destroyed after each of the exchanges of a start, with everything under way.
    for (int exchanges = 0; exchanges < 30; ++exchanges) {
        monitor->stop();
        run();
        make();
        monitor->start();
        const std::size_t before = mouse.requestCount();
        while (mouse.requestCount() < before + static_cast<std::size_t>(exchanges) &&
               dispatcher.nextDeadline() && dispatcher.pendingCount() > 0) {
            dispatcher.advanceTo(std::max(dispatcher.now(), *dispatcher.nextDeadline()));
        }
        monitor->stop();
        monitor = nullptr;
        run();
        make();
    }
}

}  // namespace
}  // namespace tessara
