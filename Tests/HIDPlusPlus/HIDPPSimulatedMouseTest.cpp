#include <gmock/gmock.h>

#include "HIDPPDeviceFixture.h"
#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Fault = SimulatedMouse::Fault;

struct MouseFirst {
    SimulatedMouse mouse;  // it outlives the transport
};

/// The client and the simulated mouse: what the one says and the other understands.
class HIDPPSimulatedMouseTest : public MouseFirst,
                                public HIDPPDeviceFixture<SimulatedHIDTransport> {
  protected:
    void TearDown() override {
        HIDPPDeviceFixture::TearDown();
        EXPECT_EQ(transport.openInterfaceCount(), 0);
    }

    void connect() {
        transport.plug(mouse);
        ASSERT_EQ(textOf(run(device->connect())), "ok");
        takeEvents();
    }
};

TEST_F(HIDPPSimulatedMouseTest, understands_everything_the_mouse_says) {
    for (const bool strips : {false, true}) {
        SCOPED_TRACE(strips ? "report ids stripped" : "report ids left in");
        transport.stripReportIDs(strips);
        connect();
        EXPECT_EQ(run(device->features()).size(), SimulatedMouseDescription().features.size());
        EXPECT_EQ(run(device->protocolVersion())->description(), "HID++ 4.2");
        EXPECT_EQ(run(device->deviceName()), "Gaming Mouse With A Long Name");
        EXPECT_EQ(run(device->deviceInformation())->unitIDHex(), "12345678");
        EXPECT_EQ(run(device->sensorCount()), 1);
        EXPECT_EQ(run(device->dpiRange())->description(), "100\u201325600 step 50");
        EXPECT_EQ(run(device->dpi())->current, 800);
        EXPECT_EQ(run(device->reportRate())->bitmap, 0x8B);
        EXPECT_EQ(run(device->wheelCapability())->multiplier, 8);
        EXPECT_EQ(run(device->ratchetState()), HIDPPRatchetState::ratchet);
        EXPECT_EQ(run(device->onboardMode()), HIDPPOnboardMode::onboard);
        EXPECT_EQ(textOf(run(device->onboardProfilesDescriptor())), "ok");
        EXPECT_EQ(textOf(run(device->currentProfile())), "ok");
        EXPECT_EQ(textOf(run(device->readOnboardMemory(0, 0))), "ok");
        transport.unplug(mouse);
        dispatcher.runReady();
    }
}

TEST_F(HIDPPSimulatedMouseTest, what_it_sets_is_set_in_the_mouse_until_the_power_goes) {
    connect();
    EXPECT_EQ(run(device->setDPI(1234)), 1250);
    EXPECT_EQ(mouse.dpi(), 1250);
    EXPECT_EQ(textOf(run(device->setReportRate({4}))), "ok");
    EXPECT_EQ(mouse.reportInterval(), 4);
    EXPECT_EQ(run(device->setWheelHighResolution(true))->rawValue(), 2);
    EXPECT_EQ(mouse.wheelMode(), 2);
    EXPECT_EQ(textOf(run(device->setOnboardMode(HIDPPOnboardMode::host))), "ok");
    EXPECT_EQ(mouse.onboardMode(), 2);
    EXPECT_EQ(textOf(run(device->setOnboardMode(HIDPPOnboardMode::onboard))), "ok");
    EXPECT_EQ(mouse.onboardMode(), 1);
    mouse.setDPIByHand(3200);
    EXPECT_EQ(run(device->dpi())->current, 3200);

    transport.unplug(mouse);
    transport.plug(mouse);
    dispatcher.runReady();
    EXPECT_EQ(run(device->dpi())->current, 800);
}

TEST_F(HIDPPSimulatedMouseTest, takes_a_list_of_resolutions_too) {
    SimulatedMouse listing({.dpi = SimulatedMouseDescription::DPIList{400, 800, 1600}});
    transport.plug(listing);
    ASSERT_EQ(textOf(run(device->connect())), "ok");
    EXPECT_EQ(run(device->dpiRange())->description(), "400, 800, 1600");
    EXPECT_EQ(run(device->setDPI(1200)), 800);
    EXPECT_EQ(listing.dpi(), 800);
    transport.unplug(listing);
    dispatcher.runReady();
}

TEST_F(HIDPPSimulatedMouseTest, each_fault_has_its_words_and_the_next_request_its_own_reply) {
    connect();
    const struct {
        Fault fault;
        const char* text;
    } cases[] = {
        {Fault::noReply, "timed out"},
        {Fault::lateReply, "timed out"},
        {Fault::replyTwice, "ok"},
        {Fault::shortReply, "malformed response: getSensorDpi reply too short"},
        {Fault::wrongFeatureIndex, "timed out"},
        {Fault::error10, "HID++ 1.0 error 0x08"},
        {Fault::error20, "HID++ 2.0 error 0x08 (busy)"},
    };
    mouse.setLateness(1010ms);
    for (const auto& [fault, text] : cases) {
        mouse.injectFault(fault);
        EXPECT_THAT(textOf(run(device->dpi())), HasSubstr(text));
        EXPECT_EQ(run(device->dpi())->current, 800);
        EXPECT_EQ(run(device->wheelMode())->rawValue(), 0);
    }
    const auto counted = *run(device->transportStatistics());
    EXPECT_EQ(counted.staleRepliesDropped, 2) << "one late and one doubled";
    EXPECT_EQ(counted.unmatchedReportsDropped, 1) << "one that named another feature";
}

TEST_F(HIDPPSimulatedMouseTest, a_mouse_that_vanishes_in_mid_request_is_removed_and_welcome_back) {
    connect();
    mouse.injectFault(Fault::vanish);
    EXPECT_EQ(textOf(run(device->setDPI(1600))), "device was removed");
    EXPECT_FALSE(run(device->isConnected()));
    transport.refuseOpens(1);
    transport.plug(mouse);
    dispatcher.advance(1s);
    EXPECT_TRUE(run(device->isConnected()));
    EXPECT_THAT(takeEvents(), ElementsAre("removed", "disconnected", "connected(Gaming Mouse)",
                                          "ready", "attached"));
}

TEST_F(HIDPPSimulatedMouseTest, waits_for_a_permission_and_for_writes_to_be_taken) {
    transport.setListenEventAccess(HIDListenEventAccess::denied);
    transport.plug(mouse);
    EXPECT_EQ(textOf(run(device->connect())),
              "not permitted: Input Monitoring is denied for this process");
    EXPECT_EQ(run(device->state()).description(), "notPermitted");
    transport.setListenEventAccess(HIDListenEventAccess::granted);
    transport.refuseWrites(1);
    EXPECT_EQ(textOf(run(device->connect())),
              "IOHIDDeviceSetReport failed: 0xE00002D6 (kIOReturnTimeout)");
    EXPECT_EQ(textOf(run(device->connect())), "ok");
}

TEST_F(HIDPPSimulatedMouseTest, hears_what_the_mouse_says_of_its_own_accord) {
    connect();
    mouse.setRatchet(false);
    EXPECT_EQ(run(device->ratchetState()), HIDPPRatchetState::freeSpin);
    EXPECT_EQ(takeEvents().size(), 1U);
}

}  // namespace
}  // namespace tessara
