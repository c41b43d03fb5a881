#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Kernel/UHIDMouse.h"
#include "Kernel/WaitFor.h"
#include "Platform/Dispatch/Awaitables.h"
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
        auto outcome = std::make_shared<std::promise<T>>();
        auto future = outcome->get_future();
        asio::co_spawn(caller_->executor(), keep(std::move(operation), std::move(outcome)),
                       RethrowException());
        return future;
    }
    template <typename T>
    static asio::awaitable<void> keep(asio::awaitable<T> operation,
                                      std::shared_ptr<std::promise<T>> outcome) {
        outcome->set_value(co_await std::move(operation));
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

/// Asks the mouse for an echo of so many numbers, one after the other, and says how many came.
asio::awaitable<int> echo(HIDPPDevice& device, int first, int count) {
    int echoed = 0;
    for (int i = first; i < first + count; ++i) {
        const auto number = static_cast<std::uint8_t>(i);
        std::vector<std::uint8_t> ping(3);
        ping[2] = number;
        const auto reply = co_await device.rawRequest(0, 1, std::move(ping), i % 2 == 0);
        if (reply && reply->at(2) == number) ++echoed;
    }
    co_return echoed;
}

TEST_F(HidrawTest, requests_of_ten_callers_get_the_replies_that_are_theirs) {
    connect();
    const auto before = run(device_->transportStatistics())->repliesMatched;
    constexpr int callers = 10;
    constexpr int requests = 200;
    std::vector<std::future<int>> echoed;
    for (int caller = 0; caller < callers; ++caller)
        echoed.push_back(begin(echo(*device_, caller, requests)));
    for (auto& count : echoed)
        EXPECT_EQ(count.get(), requests);
    const auto statistics = run(device_->transportStatistics());
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->repliesMatched - before, callers * requests);
    EXPECT_EQ(statistics->staleRepliesDropped + statistics->unmatchedReportsDropped, 0);
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
