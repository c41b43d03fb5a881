#include <filesystem>
#include <future>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/HidrawInterface.h"
#include "Support/ProcessResources.h"
#include "Support/TemporaryFolder.h"

namespace tessara {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// What came in: the id that was given and the bytes.
using Report = std::pair<std::uint8_t, Bytes>;

/// Interfaces whose node is a pipe that is opened at both of its ends: each report that is written
/// comes back. A folder stands for the device, and is there for as long.
class HidrawInterfaceTest : public ::testing::Test {
  protected:
    HidrawInterfaceTest() {
        std::filesystem::create_directory(sysPath_);
        ::mkfifo(node_.c_str(), 0600);
    }

    std::shared_ptr<HidrawInterface> makeInterface(bool hasReportIDs = true) const {
        return std::make_shared<HidrawInterface>(
            HIDInterfaceProperties{.maxInputReportSize = 20}, 1,
            HidrawInterface::Place{node_, sysPath_, hasReportIDs}, std::chrono::milliseconds(1));
    }

    void unplug() const { std::filesystem::remove(sysPath_); }
    void removeNode() const { std::filesystem::remove(node_); }

    template <typename Action>
    void onQueue(Action action) const {
        queue_->post(std::move(action));
        queue_->drain();
    }

    /// Opens the interface and begins its input; what comes in is put into `arrived`, one for each
    /// report.
    void start(const std::shared_ptr<HidrawInterface>& interface) {
        onQueue([&] {
            ASSERT_EQ(interface->open(), IOReturn::success);
            interface->startInput(queue_, [this](std::uint8_t id, std::span<const std::uint8_t> b) {
                arrived_.at(count_++).set_value({id, Bytes(b.begin(), b.end())});
            });
        });
    }
    Report arrived(std::size_t index) { return arrived_.at(index).get_future().get(); }

    const testing::NoLeakedResources noLeaks_;
    const TemporaryFolder folder_;
    const std::string node_ = folder_.path("node");
    const std::string sysPath_ = folder_.path("device");
    std::vector<std::promise<Report>> arrived_ = std::vector<std::promise<Report>>(4);
    std::size_t count_ = 0;  // owned by the queue, as are the promises
    ThreadedDispatcher dispatcher_;
    const std::shared_ptr<DispatchQueue> queue_ =
        dispatcher_.makeQueue("ai.tessara.test.hid", QualityOfService::standard);
};

const Bytes shortReport{0x10, 0xFF, 0x00, 0x18, 0, 0, 0x5A};
const Bytes longReport(20, 0x11);

TEST_F(HidrawInterfaceTest, reports_come_in_one_by_one_with_the_id_they_begin_with) {
    const auto numbered = makeInterface();
    start(numbered);
    EXPECT_EQ(numbered->writeReport(0x10, shortReport), IOReturn::success);
    EXPECT_EQ(arrived(0), Report(0x10, shortReport));
    EXPECT_EQ(numbered->writeReport(0x11, longReport), IOReturn::success);
    EXPECT_EQ(arrived(1), Report(0x11, longReport));
    EXPECT_EQ(numbered->writeReport(0x10, longReport), IOReturn::badArgument);

    onQueue([&] { numbered->close(); });
    const auto bare = makeInterface(false);
    start(bare);
    EXPECT_EQ(bare->writeReport(0x10, shortReport), IOReturn::success);
    EXPECT_EQ(arrived(2), Report(0, shortReport));
}

TEST_F(HidrawInterfaceTest, an_input_that_has_ended_says_no_more_whatever_is_waiting) {
    const auto interface = makeInterface();
    start(interface);
    onQueue([&] {
        EXPECT_EQ(interface->writeReport(0x10, shortReport), IOReturn::success);
        interface->stopInput();
    });
    onQueue([] {});
    EXPECT_EQ(count_, 0U);

    // Ended by its own handler, and begun anew with what was left behind.
    std::promise<void> ended;
    onQueue([&] {
        interface->startInput(queue_, [&](std::uint8_t, std::span<const std::uint8_t>) {
            interface->close();
            ended.set_value();
        });
    });
    ended.get_future().get();
    EXPECT_EQ(interface->writeReport(0x10, shortReport), IOReturn::notOpen);
}

TEST_F(HidrawInterfaceTest, an_open_interface_can_be_dropped_on_any_thread) {
    auto interface = makeInterface();
    start(interface);
    EXPECT_EQ(interface->writeReport(0x10, shortReport), IOReturn::success);
    interface.reset();
    const auto next = makeInterface();
    start(next);
    EXPECT_EQ(next->writeReport(0x11, longReport), IOReturn::success);
    EXPECT_EQ(next->writeReport(0x11, longReport), IOReturn::success);
}

TEST_F(HidrawInterfaceTest, a_device_that_takes_nothing_ends_the_write_in_time) {
    const auto interface = makeInterface();
    onQueue([&] { ASSERT_EQ(interface->open(), IOReturn::success); });
    auto result = IOReturn::success;
    for (int written = 0; written < 100'000 && result == IOReturn::success; ++written)
        result = interface->writeReport(0x11, longReport);
    EXPECT_EQ(result, IOReturn::timeout);
    unplug();
    EXPECT_EQ(interface->writeReport(0x11, longReport), IOReturn::noDevice) << "whatever the error";
}

TEST_F(HidrawInterfaceTest, a_device_that_is_gone_is_gone_also_when_its_node_has_come_back) {
    const auto interface = makeInterface();
    EXPECT_EQ(interface->writeReport(0x10, shortReport), IOReturn::notOpen);
    unplug();
    onQueue([&] { EXPECT_EQ(interface->open(), IOReturn::noDevice); });
    EXPECT_EQ(interface->writeReport(0x10, shortReport), IOReturn::noDevice);
    removeNode();
    onQueue([&] { EXPECT_EQ(interface->open(), IOReturn::noDevice); });
}

}  // namespace
}  // namespace tessara
