#include <array>
#include <atomic>
#include <cstdlib>
#include <future>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <asio/use_future.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPLink.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Kernel/UHIDDevice.h"
#include "Kernel/UHIDMouse.h"
#include "Kernel/WaitFor.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/HidrawTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Support/ProcessResources.h"

namespace tessara::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

/// The client and the mouse with the kernel between them.
class HidrawTest : public ::testing::Test {
  protected:
    HidrawTest() {
        subscription_ = device_->makeEventStream(caller_, [this](const HIDPPEvent& event) {
            if (event.is<HIDPPEvent::DeviceAttached>()) ++attached_;
            if (event.is<HIDPPEvent::DeviceRemoved>()) ++removed_;
        });
    }

    /// Begins an operation of the client.
    template <typename T>
    std::future<T> begin(asio::awaitable<T> operation) const {
        return asio::co_spawn(caller_->executor(), std::move(operation), asio::use_future);
    }

    template <typename T>
    T run(asio::awaitable<T> operation) const {
        return begin(std::move(operation)).get();
    }

    template <typename T>
    static std::string textOf(const HIDPPResult<T>& result) {
        return result ? "ok" : result.error().description();
    }

    void connect() {
        mouse_.plug();
        ASSERT_EQ(textOf(run(device_->connect())), "ok");
    }

    /// What is found on the HID queue.
    std::vector<std::shared_ptr<HIDInterface>> interfaces() {
        std::vector<std::shared_ptr<HIDInterface>> found;
        onQueue([&] { found = transport_.interfaces(UHIDMouse::vendorID, UHIDMouse::productID); });
        return found;
    }

    template <typename Action>
    void onQueue(Action action) const {
        runLoop_->perform(std::move(action));
        runLoop_->queue()->drain();
    }

    const NoLeakedResources noLeaks_;
    std::atomic<int> attached_{0};
    std::atomic<int> removed_{0};
    ThreadedDispatcher dispatcher_;
    SimulatedMouse firmware_;
    UHIDMouse mouse_{dispatcher_, firmware_};
    HidrawTransport transport_{UHIDMouse::vendorID, UHIDMouse::productID};
    std::shared_ptr<HIDPPRunLoop> runLoop_ =
        std::make_shared<HIDPPRunLoop>(dispatcher_, transport_);
    std::shared_ptr<DispatchQueue> caller_ =
        dispatcher_.makeQueue("ai.tessara.test.caller", QualityOfService::standard);
    std::unique_ptr<HIDPPDevice> device_ =
        std::make_unique<HIDPPDevice>(HIDPPDeviceMatch::g502X, runLoop_);
    EventSubscription subscription_;
};

TEST_F(HidrawTest, the_interfaces_of_the_mouse_and_no_others_are_found_with_what_they_are) {
    EXPECT_EQ(transport_.listenEventAccess(), HIDListenEventAccess::unknown);
    EXPECT_THAT(interfaces(), IsEmpty());
    const UHIDPointer other(dispatcher_, UHIDPointer::foreignMouse());
    mouse_.plug();
    const auto found = interfaces();
    ASSERT_THAT(found, SizeIs(3));
    std::set<std::uint64_t> registryIDs;
    std::vector<std::vector<HIDUsagePair>> usages;
    for (const auto& interface : found) {
        registryIDs.insert(interface->registryID());
        usages.push_back(interface->properties().usagePairs);
        EXPECT_EQ(interface->properties().vendorID, UHIDMouse::vendorID);
        EXPECT_EQ(interface->properties().productID, UHIDMouse::productID);
        EXPECT_EQ(interface->properties().product, "Gaming Mouse");
        EXPECT_EQ(interface->properties().serialNumber, "0123456789AB");
    }
    EXPECT_THAT(registryIDs, SizeIs(3));
    EXPECT_FALSE(registryIDs.contains(0));
    // The vendor's was plugged in first.
    using Pairs = std::vector<HIDUsagePair>;
    EXPECT_EQ(usages,
              (std::vector<Pairs>{
                  {{0xFF00, 1}, {0xFF00, 2}}, {{0x01, 0x06}, {0x0C, 0x01}}, {{0x01, 0x02}}}));
    EXPECT_EQ(found.front()->properties().maxInputReportSize, 20);
    EXPECT_EQ(found.front()->properties().maxOutputReportSize, 20);
}

TEST_F(HidrawTest, what_the_client_sets_is_set_in_the_mouse_and_read_back) {
    connect();
    EXPECT_EQ(run(device_->setDPI(1234)).value_or(0), 1250);
    EXPECT_EQ(firmware_.dpi(), 1250);
    EXPECT_EQ(textOf(run(device_->setReportRate({4}))), "ok");
    EXPECT_EQ(firmware_.reportInterval(), 4);
    EXPECT_EQ(run(device_->reportRate())->current, HIDPPReportRate{4});
    const auto mode = run(device_->setWheelHighResolution(true));
    ASSERT_EQ(textOf(mode), "ok");
    EXPECT_EQ(mode->rawValue(), 2);
    EXPECT_EQ(firmware_.wheelMode(), 2);
    EXPECT_EQ(run(device_->deviceName()).value_or(""), "Gaming Mouse With A Long Name");
}

TEST_F(HidrawTest, an_unplug_fails_the_request_on_its_way_and_the_next_plug_connects) {
    connect();
    const auto old = interfaces();
    firmware_.injectFault(SimulatedMouse::Fault::noReply);
    const auto before = firmware_.requestCount();
    auto request = begin(device_->rawRequest(0, 1, {0, 0, 0x5A}, false, 60.0));
    ASSERT_TRUE(waitFor([&] { return firmware_.requestCount() > before; }));
    mouse_.unplug();
    EXPECT_EQ(textOf(request.get()), "device was removed");

    mouse_.plug();
    ASSERT_TRUE(waitFor([&] { return attached_ == 1; }));
    EXPECT_EQ(run(device_->setDPI(900)).value_or(0), 900);
    // What was found at the earlier plug stands for that one, also where nodes have its names.
    for (const auto& interface : old) {
        onQueue([&] { EXPECT_EQ(interface->open(), IOReturn::noDevice); });
        EXPECT_EQ(interface->writeReport(0x10, std::array<std::uint8_t, 7>{0x10}),
                  IOReturn::noDevice);
    }
}

/// Keeps the threads that are made from here on to one processor: in an emulated machine each
/// wake-up across processors has to wait until the computer gives the other one its turn.
struct OneProcessor {
    OneProcessor() {
        cpu_set_t first;
        CPU_ZERO(&first);
        CPU_SET(0, &first);
        if (::sched_setaffinity(0, sizeof first, &first) != 0) std::abort();
    }
};

class HidrawLoadTest : private OneProcessor, public HidrawTest {};

/// Short and long reports, as those of the mouse's vendor interface, in one collection.
const std::vector<std::uint8_t> echoDescriptor{
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x75, 0x08, 0x15, 0x00, 0x26, 0xFF,
    0x00, 0x85, 0x10, 0x95, 0x06, 0x09, 0x01, 0x81, 0x00, 0x09, 0x01, 0x91, 0x00,
    0x85, 0x11, 0x95, 0x13, 0x09, 0x02, 0x81, 0x00, 0x09, 0x02, 0x91, 0x00, 0xC0};

/// Has a device echo one number after the other, ten of them asked for ahead. On the HID queue
/// until it is done.
class Echoes {
  public:
    static constexpr int requests = 10'000;

    explicit Echoes(std::shared_ptr<HIDPPLink> link) : link_(std::move(link)) {}

    void begin() {
        for (int ahead = 0; ahead < 10; ++ahead)
            ask();
    }

    /// How many came back as they were sent. Waits for the last one; any thread.
    [[nodiscard]] int result() { return done_.get_future().get(); }

  private:
    void ask() {
        if (asked_ == requests) return;
        const auto number = static_cast<std::uint8_t>(asked_);
        HIDPPLink::Request ping{.deviceIndex = 0xFF,
                                .function = 1,
                                .parameters = {0, 0, number},
                                .isLong = asked_ % 2 == 0,
                                .timeout = 60,
                                .label = "ping"};
        ++asked_;
        link_->enqueue(std::move(ping), [this, number](const HIDPPLink::Reply& reply) {
            if (reply && reply->at(2) == number) ++echoed_;
            if (++answered_ == requests) {
                done_.set_value(echoed_);
            } else {
                ask();
            }
        });
    }

    const std::shared_ptr<HIDPPLink> link_;
    int asked_ = 0;
    int answered_ = 0;
    int echoed_ = 0;
    std::promise<int> done_;
};

TEST_F(HidrawLoadTest, each_of_ten_thousand_requests_gets_the_reply_that_is_its_own) {
    // A device of nothing but the protocol, which sends each request back as its reply.
    const UHIDDevice* echo = nullptr;
    UHIDDevice device(dispatcher_,
                      {.name = "Echo",
                       .place = "usb-0000:00:14.0-4/input0",
                       .vendorID = 0x1234,
                       .productID = 0x0004,
                       .reportDescriptor = echoDescriptor},
                      [&](std::span<const std::uint8_t> request) { echo->send(request); });
    echo = &device;
    device.awaitNodes();
    std::shared_ptr<HIDPPLink> link;
    onQueue([&] {
        link = std::make_shared<HIDPPLink>(runLoop_, transport_.interfaces(0x1234, 0x0004).at(0));
        ASSERT_TRUE(link->open());
    });
    Echoes echoes(link);
    onQueue([&] { echoes.begin(); });
    EXPECT_EQ(echoes.result(), Echoes::requests);
    onQueue([&] {
        EXPECT_EQ(link->statistics().repliesMatched, Echoes::requests);
        EXPECT_EQ(link->statistics().staleRepliesDropped, 0);
        EXPECT_EQ(link->statistics().unmatchedReportsDropped, 0);
        link->close();
    });
}

TEST_F(HidrawTest, each_of_fifty_plugs_is_told_once_and_leaves_nothing_open) {
    std::multiset<std::uint64_t> came;
    std::multiset<std::uint64_t> went;  // owned by the HID queue
    std::unique_ptr<HIDHotplugWatch> watch;
    onQueue([&] {
        watch = transport_.watch(
            UHIDMouse::vendorID, UHIDMouse::productID, runLoop_->queue(),
            {.arrived = [] {}, .departed = [&](std::uint64_t id) { went.insert(id); }});
    });
    ASSERT_TRUE(watch);
    EXPECT_EQ(textOf(run(device_->connect())),
              "no HID++ collection found for the requested device");
    for (int plug = 1; plug <= 50; ++plug) {
        const auto openBefore = openFileDescriptorCount();
        mouse_.plug();
        ASSERT_TRUE(waitFor([&] { return attached_ == plug; })) << plug;
        for (const auto& interface : interfaces())
            came.insert(interface->registryID());
        mouse_.unplug();
        ASSERT_TRUE(waitFor([&] { return removed_ == plug; })) << plug;
        ASSERT_TRUE(waitFor([&] { return openFileDescriptorCount() == openBefore; })) << plug;
    }
    EXPECT_THAT(came, SizeIs(150));
    EXPECT_TRUE(waitFor([&] {
        bool isComplete = false;
        onQueue([&] { isComplete = went == came; });
        return isComplete;
    }));
    onQueue([&] { watch.reset(); });
}

TEST_F(HidrawTest, without_the_right_to_its_nodes_the_mouse_is_found_and_not_opened) {
    constexpr uid_t nobody = 65534;
    mouse_.plug();
    EXPECT_EQ(transport_.listenEventAccess(), HIDListenEventAccess::granted);
    ASSERT_EQ(::seteuid(nobody), 0);
    EXPECT_EQ(transport_.listenEventAccess(), HIDListenEventAccess::denied);
    const auto refused = textOf(run(device_->connect()));
    EXPECT_EQ(run(device_->state()).description(), "notPermitted");
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(refused, "not permitted: Input Monitoring is denied for this process");
    EXPECT_EQ(textOf(run(device_->connect())), "ok");
}

}  // namespace
}  // namespace tessara::testing
