#include <gmock/gmock.h>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "ScriptedMouseFixture.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What plugging in a mouse leads to, in order.
const std::vector<std::string> plugEvents{"connected(Gaming Mouse)", "ready", "attached"};
/// What a call of connect leads to.
const std::vector<std::string> connectEvents{"connected(Gaming Mouse)", "ready"};

class HIDPPDeviceTest : public ScriptedMouseFixture {
  protected:
    void connect() {
        if (!mouse.interface) mouse.plug();
        ASSERT_EQ(textOf(run(device->connect())), "ok");
        ASSERT_EQ(takeEvents(), connectEvents);
        mouse.takeRequests();
    }

    /// Lets the mouse swallow the request of this number, counted from 0.
    void swallowRequest(std::size_t number) {
        mouse.gate = [this, number](const auto&) { return mouse.requests.size() != number + 1; };
    }
};

TEST_F(HIDPPDeviceTest, connects_with_a_ping_and_the_whole_feature_table_and_nothing_more) {
    mouse.plug();
    EXPECT_EQ(textOf(run(device->connect())), "ok");
    EXPECT_EQ(takeEvents(), connectEvents);
    // Ping, the index of the feature set, its count, and one request a row.
    EXPECT_EQ(mouse.requests.size(), 3 + mouse.table.size());
    EXPECT_EQ(run(device->features()).size(), mouse.table.size());
    EXPECT_EQ(run(device->protocolVersion())->description(), "HID++ 4.2");
    EXPECT_EQ(run(device->identity())->product, "Gaming Mouse");
    EXPECT_TRUE(run(device->isConnected()));
    EXPECT_FALSE(run(device->isConnecting()));
    EXPECT_EQ(run(device->transportStatistics())->requestsSent, 12);
    EXPECT_EQ(textOf(run(device->connect())), "ok");
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_EQ(mouse.requests.size(), 3 + mouse.table.size());
}

TEST_F(HIDPPDeviceTest, callers_at_one_time_share_one_attempt_and_its_outcome) {
    mouse.plug();
    const auto first = begin(device->connect());
    const auto second = begin(device->connect());
    dispatcher.runReady();
    EXPECT_EQ(textOf(first), "ok");
    EXPECT_EQ(textOf(second), "ok");
    EXPECT_EQ(mouse.interface->openCount, 1);

    disconnect();
    mouse.gate = [](const auto&) { return false; };
    const auto third = begin(device->connect());
    dispatcher.advance(500ms);
    EXPECT_TRUE(run(device->isConnecting()));
    const auto fourth = begin(device->connect());
    dispatcher.advance(500ms);
    EXPECT_EQ(textOf(third), "feature 0x00 fn 0x01 timed out");
    EXPECT_EQ(textOf(fourth), textOf(third));
    EXPECT_FALSE(run(device->isConnecting()));
}

TEST_F(HIDPPDeviceTest, a_mouse_that_is_not_there_connects_when_it_comes) {
    EXPECT_EQ(textOf(run(device->connect())), "no HID++ collection found for the requested device");
    EXPECT_THAT(takeEvents(), IsEmpty());
    mouse.plug();
    EXPECT_EQ(takeEvents(), plugEvents);
    mouse.unplug();
    EXPECT_THAT(takeEvents(), ElementsAre("removed", "disconnected"));
    mouse.plug();
    EXPECT_EQ(takeEvents(), plugEvents);
}

TEST_F(HIDPPDeviceTest, a_denied_permission_is_a_state_that_ends_with_an_open_or_disconnect) {
    mouse.openResult = IOReturn::notPermitted;
    mouse.plug();
    const std::string denied = "not permitted: Input Monitoring is denied for this process";
    EXPECT_EQ(textOf(run(device->connect())), denied);
    EXPECT_THAT(takeEvents(), ElementsAre("notPermitted"));
    EXPECT_EQ(textOf(run(device->connect())), denied);
    EXPECT_THAT(takeEvents(), IsEmpty());

    mouse.interface->openResult = IOReturn::busy;
    EXPECT_EQ(textOf(run(device->connect())), "IOHIDDeviceOpen failed: 0xE00002D5 (kIOReturnBusy)");
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_EQ(state(), "notPermitted");

    mouse.interface->openResult = IOReturn::success;
    mouse.gate = [](const auto&) { return false; };
    run(device->connect());
    EXPECT_THAT(takeEvents(), ElementsAre("disconnected")) << "the permission is there after all";
    mouse.interface->openResult = IOReturn::notPrivileged;
    EXPECT_EQ(textOf(run(device->connect())), denied);
    disconnect();
    EXPECT_THAT(takeEvents(), ElementsAre("notPermitted", "disconnected"));
}

TEST_F(HIDPPDeviceTest, a_mouse_that_does_not_answer_at_any_step_leaves_the_device_disconnected) {
    mouse.plug();
    const struct {
        std::size_t request;
        const char* error;
    } cases[] = {{0, "feature 0x00 fn 0x01 timed out"},
                 {1, "feature 0x00 fn 0x00 timed out"},
                 {2, "feature 0x01 fn 0x00 timed out"},
                 {3, "feature 0x01 fn 0x01 timed out"},
                 {11, "feature 0x01 fn 0x01 timed out"}};
    for (const auto& [request, error] : cases) {
        mouse.takeRequests();
        swallowRequest(request);
        EXPECT_EQ(textOf(run(device->connect())), error) << "request " << request;
        EXPECT_FALSE(mouse.interface->isOpen);
        EXPECT_EQ(state(), "disconnected");
        EXPECT_THAT(run(device->features()), IsEmpty());
    }
    EXPECT_THAT(takeEvents(), IsEmpty());
    mouse.gate = nullptr;
    connect();
}

TEST_F(HIDPPDeviceTest, a_connect_right_behind_a_disconnect_is_an_attempt_of_its_own) {
    mouse.plug();
    mouse.replyDelay = 1ms;
    for (auto moment = 0us; moment < 12'000us; moment += 500us) {
        const auto voided = begin(device->connect());
        if (moment > 0us) dispatcher.advance(moment);
        spawn(device->disconnect());
        const auto fresh = begin(device->connect());
        const auto shared = begin(device->connect());
        dispatcher.advance(1s);
        EXPECT_EQ(textOf(voided), "not connected") << moment.count() << " us";
        EXPECT_EQ(textOf(fresh), "ok");
        EXPECT_EQ(textOf(shared), "ok");
        EXPECT_EQ(takeEvents(), connectEvents);
        disconnect();
        EXPECT_THAT(takeEvents(), ElementsAre("disconnected"));
        EXPECT_FALSE(mouse.interface->isOpen);
        EXPECT_EQ(transport.watchCount(), 0U);
    }

    connect();
    spawn(device->disconnect());
    const auto again = begin(device->connect());
    dispatcher.advance(1s);
    EXPECT_EQ(textOf(again), "ok") << "the connection that still stood was not the one asked for";
    EXPECT_THAT(takeEvents(), ElementsAre("disconnected", connectEvents[0], connectEvents[1]));
    EXPECT_TRUE(mouse.interface->isOpen);
}

TEST_F(HIDPPDeviceTest, a_plug_right_behind_an_unplug_is_not_lost_on_the_attempt_that_this_ended) {
    run(device->connect());
    mouse.replyDelay = 1ms;
    for (auto moment = 500us; moment < 12'000us; moment += 1ms) {
        mouse.plug();
        dispatcher.advance(moment);
        mouse.unplug();
        mouse.plug();
        dispatcher.advance(100ms);
        EXPECT_THAT(takeEvents(),
                    ElementsAre("removed", plugEvents[0], plugEvents[1], plugEvents[2]))
            << moment.count() << " us";
        mouse.unplug();
        takeEvents();
    }
}

TEST_F(HIDPPDeviceTest, a_disconnect_while_the_interface_is_being_opened_publishes_nothing) {
    for (const auto result : {IOReturn::success, IOReturn::notPermitted, IOReturn::busy}) {
        mouse.openResult = result;
        mouse.plug();
        const auto attempt = begin(device->connect());
        // The disconnect is in the device's queue before the outcome of the opening.
        runLoop->perform([this] { spawn(device->disconnect()); });
        dispatcher.advance(1s);
        EXPECT_EQ(textOf(attempt), "not connected") << ioReturnDescription(result);
        EXPECT_THAT(takeEvents(), IsEmpty());
        EXPECT_FALSE(mouse.interface->isOpen);
        mouse.unplug();
    }
}

TEST_F(HIDPPDeviceTest, an_unplug_ends_what_waits_and_forgets_what_was_known) {
    connect();
    mouse.gate = [](const auto&) { return false; };
    const auto first = begin(device->dpi());
    const auto second = begin(device->wheelMode());
    dispatcher.advance(10ms);
    transport.announceDeparture(mouse.interface->id - 1);
    EXPECT_THAT(takeEvents(), IsEmpty()) << "another interface of the mouse";
    mouse.unplug();
    dispatcher.runReady();
    EXPECT_EQ(textOf(first), "device was removed");
    EXPECT_EQ(textOf(second), "device was removed");
    EXPECT_THAT(takeEvents(), ElementsAre("removed", "disconnected"));
    EXPECT_THAT(run(device->features()), IsEmpty());
    EXPECT_EQ(textOf(run(device->protocolVersion())), "not connected");
    EXPECT_EQ(run(device->identity()), std::nullopt);
    EXPECT_EQ(run(device->transportStatistics()), std::nullopt);
}

TEST_F(HIDPPDeviceTest, does_not_reconnect_when_it_is_told_not_to_or_is_disconnected) {
    connect();
    device->setAutomaticallyReconnects(false);
    mouse.unplug();
    mouse.plug();
    EXPECT_THAT(takeEvents(), ElementsAre("removed", "disconnected"));
    EXPECT_EQ(mouse.interface->openCount, 0);
    device->setAutomaticallyReconnects(true);
    mouse.unplug();
    mouse.plug();
    EXPECT_EQ(takeEvents(), plugEvents);

    disconnect();
    mouse.unplug();
    mouse.plug();
    EXPECT_THAT(takeEvents(), ElementsAre("disconnected"));
}

TEST_F(HIDPPDeviceTest, after_two_failures_a_plugged_mouse_waits_for_the_next_plug_or_call) {
    run(device->connect());
    mouse.openResult = IOReturn::exclusiveAccess;
    mouse.plug();
    dispatcher.advance(250ms - 1ns);
    EXPECT_EQ(mouse.interface->openCount, 1);
    dispatcher.advance(10s);
    EXPECT_EQ(mouse.interface->openCount, 2);
    EXPECT_EQ(transport.watchCount(), 1U);
    EXPECT_THAT(takeEvents(), IsEmpty());
    mouse.unplug();
    mouse.openResult = IOReturn::success;
    mouse.plug();
    EXPECT_EQ(takeEvents(), plugEvents);
}

TEST_F(HIDPPDeviceTest, a_disconnect_between_the_two_attempts_ends_them) {
    run(device->connect());
    mouse.openResult = IOReturn::exclusiveAccess;
    mouse.plug();
    dispatcher.advance(100ms);
    mouse.interface->openResult = IOReturn::success;
    disconnect();
    dispatcher.advance(10s);
    EXPECT_EQ(mouse.interface->openCount, 1);
    EXPECT_EQ(transport.watchCount(), 0U);
    EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(HIDPPDeviceTest, without_hot_plug_it_connects_when_called) {
    transport.canWatch = false;
    connect();
    mouse.unplug();
    EXPECT_THAT(takeEvents(), IsEmpty());
    EXPECT_EQ(textOf(run(device->dpi())), "device was removed");
}

TEST_F(HIDPPDeviceTest, notifications_reach_every_listener_until_the_connection_ends) {
    connect();
    std::vector<HIDPPEvent> heard;
    const auto second =
        device->makeEventStream(caller, [&](const HIDPPEvent& event) { heard.push_back(event); });
    dispatcher.runReady();
    EXPECT_THAT(heard, IsEmpty()) << "a new listener hears nothing of the past";
    mouse.send({0x11, 0xFF, 5, 0x10, 1, 2});
    EXPECT_THAT(takeEvents(), ElementsAre("notification 5"));
    EXPECT_THAT(heard, ElementsAre(HIDPPEvent(HIDPPEvent::Notification{5, 0x10, {1, 2}})));

    // This one is on its way to the listeners when the connection ends.
    spawn(device->disconnect());
    mouse.send({0x11, 0xFF, 5, 0x10});
    EXPECT_THAT(takeEvents(), ElementsAre("disconnected"));
}

TEST_F(HIDPPDeviceTest, a_request_is_answered_errors_included_or_ends_with_the_connection) {
    EXPECT_EQ(textOf(run(device->rawRequest(0, 1, {0, 0, 1}, false))), "not connected");
    connect();
    EXPECT_THAT(*run(device->rawRequest(0, 1, {0, 0, 1}, false)), ElementsAre(4, 2, 1));
    EXPECT_EQ(textOf(run(device->rawRequest(0x2A, 3, {}, true))),
              "HID++ 2.0 error 0x07 (invalidFunctionId)");
    EXPECT_EQ(textOf(run(device->rawRequest(0, 1, {1, 2, 3, 4}, false))),
              "invalid argument: 4 parameter bytes do not fit in a short report");

    mouse.gate = [](const auto&) { return false; };
    const auto waiting = begin(device->rawRequest(0, 1, {}, false));
    dispatcher.runReady();
    disconnect();
    EXPECT_EQ(textOf(waiting), "not connected");
}

TEST_F(HIDPPDeviceTest, requests_carry_the_device_index_and_timeout_that_are_set) {
    connect();
    device->setDeviceIndex(0x01);
    device->setDefaultTimeout(0.2);
    mouse.gate = [](const auto&) { return false; };
    const auto byDefault = begin(device->rawRequest(5, 1, {}, false));
    const auto ofItsOwn = begin(device->rawRequest(5, 2, {}, false, 0.5));
    dispatcher.advance(200ms);
    EXPECT_EQ(mouse.requests.front()[1], 0x01);
    EXPECT_EQ(textOf(byDefault), "feature 0x05 fn 0x01 timed out");
    EXPECT_EQ(textOf(ofItsOwn), "waiting");
    dispatcher.advance(530ms);
    EXPECT_EQ(textOf(ofItsOwn), "feature 0x05 fn 0x02 timed out");
}

TEST_F(HIDPPDeviceTest, the_end_of_the_object_lets_running_operations_end_and_closes_the_link) {
    connect();
    mouse.replyDelay = 10ms;
    const auto operation = begin(device->rawRequest(0, 1, {0, 0, 1}, false));
    dispatcher.runReady();
    device = nullptr;
    dispatcher.advance(5ms);
    EXPECT_TRUE(mouse.interface->isOpen);
    dispatcher.advance(5ms);
    EXPECT_EQ(textOf(operation), "ok");
    EXPECT_FALSE(mouse.interface->isOpen);
    EXPECT_EQ(transport.watchCount(), 0U);
}

TEST_F(HIDPPDeviceTest, says_whether_the_user_granted_access) {
    using Platform = HIDListenEventAccess;
    using Access = HIDPPInputMonitoringAccess;
    const std::pair<Platform, Access> cases[] = {{Platform::granted, Access::granted},
                                                 {Platform::denied, Access::denied},
                                                 {Platform::unknown, Access::unknown},
                                                 {static_cast<Platform>(9), Access::unknown}};
    for (const auto& [platform, access] : cases) {
        transport.access = platform;
        EXPECT_EQ(HIDPPDevice::inputMonitoringAccess(transport), access);
    }
}

}  // namespace
}  // namespace tessara
