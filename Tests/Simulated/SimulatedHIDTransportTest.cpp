#include <array>
#include <future>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Support/TestDispatcher.h"

namespace tessara::testing {
namespace {

using ::testing::ElementsAre;

class SimulatedHIDTransportTest : public VirtualTimeTest {
  protected:
    SimulatedHIDTransportTest() { transport.plug(mouse); }

    /// The interfaces of the present plug, the pointer's first and the vendor's last.
    std::vector<std::shared_ptr<HIDInterface>> interfaces() {
        return transport.interfaces(0x046D, 0xC099);
    }
    void listen(HIDInterface& interface, const char* name) {
        EXPECT_EQ(interface.open(), IOReturn::success);
        interface.startInput(queue, [this, name](std::uint8_t, std::span<const std::uint8_t>) {
            heard.emplace_back(name);
        });
    }

    SimulatedMouse mouse;
    SimulatedHIDTransport transport;
    std::shared_ptr<DispatchQueue> queue =
        dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard);
    std::vector<std::string> heard;
};

TEST_F(SimulatedHIDTransportTest, each_opening_hears_its_own_reports_once) {
    const auto pointer = interfaces().front();
    const auto vendor = interfaces().back();
    listen(*pointer, "pointer");
    listen(*vendor, "first");
    mouse.setRatchet(false);
    vendor->close();
    listen(*vendor, "second");
    dispatcher.runReady();
    mouse.setRatchet(true);
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre("second"));
}

TEST_F(SimulatedHIDTransportTest, a_write_that_is_held_ends_as_the_device_stands_then) {
    const auto vendor = interfaces().back();
    EXPECT_EQ(vendor->open(), IOReturn::success);
    const std::array<std::uint8_t, 7> ping{0x10, 0xFF, 0, 0x11, 0, 0, 0x5A};
    for (const bool isPulledOut : {false, true}) {
        transport.holdWrites();
        auto writing =
            std::async(std::launch::async, [&] { return vendor->writeReport(ping.front(), ping); });
        while (transport.heldWriteCount() == 0)
            std::this_thread::yield();
        EXPECT_EQ(mouse.requestCount(), isPulledOut ? 1U : 0U);
        if (isPulledOut) transport.unplug(mouse);
        transport.releaseWrites();
        EXPECT_EQ(writing.get(), isPulledOut ? IOReturn::noDevice : IOReturn::success);
        EXPECT_EQ(mouse.requestCount(), 1U);
    }
}

}  // namespace
}  // namespace tessara::testing
