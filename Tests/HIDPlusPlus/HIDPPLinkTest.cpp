#include <chrono>
#include <filesystem>
#include <future>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeHIDInterface.h"
#include "FakeHIDTransport.h"
#include "HIDPlusPlus/HIDPPLink.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

/// A link over a fake interface in virtual time. Outcomes are kept as texts: the payload in
/// hexadecimal, or the error's description.
class HIDPPLinkTest : public ::testing::Test {
  protected:
    HIDPPLinkTest() { EXPECT_TRUE(link->open().has_value()); }
    ~HIDPPLinkTest() override {
        link->close();
        dispatcher.runReady();
    }

    static std::string textOf(const HIDPPLink::Reply& reply) {
        if (!reply) return reply.error().description();
        std::string text;
        for (const auto byte : *reply) {
            constexpr const char* digits = "0123456789ABCDEF";
            text += {digits[byte >> 4], digits[byte & 15]};
        }
        return text;
    }

    /// Has the link take a request, and what follows from that wait.
    void add(std::string name, std::uint8_t featureIndex = 5, std::uint8_t function = 1,
             Bytes parameters = {}, double timeout = 1.0) {
        link->enqueue({.deviceIndex = 0xFF,
                       .featureIndex = featureIndex,
                       .function = function,
                       .parameters = std::move(parameters),
                       .timeout = timeout,
                       .label = name},
                      [this, name](HIDPPLink::Reply reply) {
                          outcomes.push_back(name + ": " + textOf(reply));
                      });
    }

    void enqueue(std::string name, std::uint8_t featureIndex = 5, std::uint8_t function = 1,
                 Bytes parameters = {}, double timeout = 1.0) {
        add(std::move(name), featureIndex, function, std::move(parameters), timeout);
        dispatcher.runReady();
    }

    void deliver(Bytes report) {
        interface->deliver(report);
        dispatcher.runReady();
    }

    /// Echoes the last written request with this payload.
    void answer(const Bytes& payload = {}) {
        const auto& request = interface->written.back();
        Bytes reply{0x11, request[1], request[2], request[3]};
        reply.insert(reply.end(), payload.begin(), payload.end());
        deliver(reply);
    }

    std::vector<std::string> takeOutcomes() { return std::exchange(outcomes, {}); }

    ManualDispatcher dispatcher;
    FakeHIDTransport transport;
    std::shared_ptr<HIDPPRunLoop> runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    std::shared_ptr<FakeHIDInterface> interface = std::make_shared<FakeHIDInterface>();
    std::shared_ptr<HIDPPLink> link = std::make_shared<HIDPPLink>(runLoop, interface);
    std::vector<std::string> outcomes;
};

TEST_F(HIDPPLinkTest, gives_a_reply_to_the_request_that_it_echoes) {
    enqueue("a", 5, 1, {7});
    EXPECT_THAT(interface->written, ElementsAre(Bytes{0x10, 0xFF, 5, 0x11, 7, 0, 0}));

    deliver({0x11, 0xFE, 5, 0x11, 1});  // another device index
    deliver({0x11, 0xFF, 6, 0x11, 1});  // another feature
    deliver({0x11, 0xFF, 5, 0x21, 1});  // another function
    deliver({0x11, 0xFF, 5, 0x12, 1});  // another software id
    EXPECT_THAT(outcomes, IsEmpty());
    EXPECT_EQ(link->statistics().unmatchedReportsDropped, 4);

    deliver({0x10, 0xFF, 5, 0x11, 0xAB, 0xCD, 0xEF});
    EXPECT_THAT(takeOutcomes(), ElementsAre("a: ABCDEF"));

    enqueue("b");
    answer();  // no payload at all is a reply too
    EXPECT_THAT(takeOutcomes(), ElementsAre("b: "));
    EXPECT_EQ(link->statistics().repliesMatched, 2);
}

TEST_F(HIDPPLinkTest, tells_error_replies_from_ordinary_reports_by_marker_and_length) {
    const struct {
        Bytes reply;
        const char* outcome;
    } cases[] = {
        {{0x11, 0xFF, 0xFF, 5, 0x11, 0x08}, "HID++ 2.0 error 0x08 (busy)"},
        {{0x10, 0xFF, 0x8F, 5, 0x12, 0x03, 0}, "HID++ 1.0 error 0x03"},
        {{0x11, 0xFF, 0xFF, 5, 0x13, 0x00}, "HID++ 2.0 error 0x00 (noError)"},
    };
    for (const auto& [reply, outcome] : cases) {
        enqueue("a");
        deliver(Bytes(reply.begin(), reply.begin() + 5));  // too short to be an error reply
        EXPECT_THAT(outcomes, IsEmpty());
        deliver(reply);
        EXPECT_THAT(takeOutcomes(), ElementsAre(std::string("a: ") + outcome));
    }

    // Cut short, an error report is an ordinary one of feature 0xFF, here a reply.
    enqueue("b", 0xFF, 1);
    deliver({0x11, 0xFF, 0xFF, 0x14, 0x77});
    EXPECT_THAT(takeOutcomes(), ElementsAre("b: 77"));
}

TEST_F(HIDPPLinkTest, sends_one_request_at_a_time_in_order) {
    for (const char* name : {"a", "b", "c", "d", "e"})
        enqueue(name);
    for (std::size_t sent = 1; sent <= 5; ++sent) {
        EXPECT_EQ(interface->written.size(), sent);
        answer({static_cast<std::uint8_t>(sent)});
    }
    EXPECT_THAT(outcomes, ElementsAre("a: 01", "b: 02", "c: 03", "d: 04", "e: 05"));
    EXPECT_EQ(link->statistics().peakQueueDepth, 5);
    EXPECT_EQ(link->statistics().requestsSent, 5);
}

TEST_F(HIDPPLinkTest, a_late_reply_is_stale_and_the_next_request_waits_for_the_cooldown) {
    enqueue("slow");
    enqueue("next");
    dispatcher.advance(1s - 1ns);
    EXPECT_THAT(outcomes, IsEmpty());
    dispatcher.advance(1ns);
    EXPECT_THAT(takeOutcomes(), ElementsAre("slow: slow timed out"));

    dispatcher.advance(10ms);
    deliver({0x11, 0xFF, 5, 0x11, 1});
    EXPECT_EQ(link->statistics().staleRepliesDropped, 1);
    enqueue("third");
    dispatcher.advance(20ms - 1ns);
    EXPECT_EQ(interface->written.size(), 1U);
    dispatcher.advance(1ns);
    EXPECT_EQ(interface->written.size(), 2U);
    answer({2});
    answer({3});
    EXPECT_THAT(outcomes, ElementsAre("next: 02", "third: 03"));
}

TEST_F(HIDPPLinkTest, the_timeout_counts_from_the_moment_of_sending) {
    enqueue("a");
    dispatcher.advance(900ms);
    enqueue("b", 5, 1, {}, 0.25);
    answer();
    dispatcher.advance(249ms);
    EXPECT_THAT(takeOutcomes(), ElementsAre("a: "));
    dispatcher.advance(1ms);
    EXPECT_THAT(takeOutcomes(), ElementsAre("b: b timed out"));
}

TEST_F(HIDPPLinkTest, remembers_the_last_15_finished_requests_and_forgets_the_oldest) {
    enqueue("first", 9);
    answer();
    for (int i = 0; i < 14; ++i) {
        enqueue("other");
        answer();
    }
    deliver({0x11, 0xFF, 9, 0x11});
    EXPECT_EQ(link->statistics().staleRepliesDropped, 1);

    enqueue("sixteenth");
    answer();
    deliver({0x11, 0xFF, 9, 0x11});
    EXPECT_EQ(link->statistics().staleRepliesDropped, 1);
    EXPECT_EQ(link->statistics().unmatchedReportsDropped, 1);
}

TEST_F(HIDPPLinkTest, a_key_that_comes_round_again_is_wanted_again) {
    for (int i = 0; i < 15; ++i) {
        enqueue("a");
        answer();
    }
    takeOutcomes();
    enqueue("again");
    EXPECT_EQ(interface->written.front(), interface->written.back());
    answer({1});
    EXPECT_THAT(outcomes, ElementsAre("again: 01"));
    answer({2});
    EXPECT_EQ(link->statistics().staleRepliesDropped, 1);
}

TEST_F(HIDPPLinkTest, a_refused_write_fails_its_request_and_the_next_leaves_at_once) {
    interface->writeResult = IOReturn::error;
    enqueue("a");
    EXPECT_THAT(takeOutcomes(), ElementsAre("a: IOHIDDeviceSetReport failed: 0xE00002BC "
                                            "(kIOReturnError)"));
    interface->writeResult = IOReturn::success;
    enqueue("b");
    answer();
    EXPECT_THAT(takeOutcomes(), ElementsAre("b: "));
}

TEST_F(HIDPPLinkTest, a_write_that_fails_after_the_outcome_of_its_request_changes_nothing) {
    // The reply comes while the write is still returning, and then the write fails after all.
    interface->onWrite = [this](const Bytes& request) {
        interface->onWrite = nullptr;
        interface->writeResult = IOReturn::error;
        runLoop->perform([this, request] {
            interface->writeResult = IOReturn::success;
            interface->deliver({0x11, request[1], request[2], request[3], 1});
        });
    };
    add("a");
    enqueue("b");
    EXPECT_THAT(outcomes, ElementsAre("a: 01")) << "the failure is not that of the next";
    answer();
    EXPECT_THAT(outcomes, ElementsAre("a: 01", "b: "));
}

TEST_F(HIDPPLinkTest, delivers_notifications_without_disturbing_the_request_in_flight) {
    std::vector<Bytes> heard;
    link->setNotificationHandler([&](std::uint8_t feature, std::uint8_t function, Bytes payload) {
        payload.insert(payload.begin(), {feature, function});
        heard.push_back(payload);
    });
    enqueue("a");
    deliver({0x11, 0xFF, 5, 0x10, 1, 2});
    deliver({0x10, 0xFF, 7, 0x00});
    EXPECT_THAT(heard, ElementsAre(Bytes{5, 0x10, 1, 2}, Bytes{7, 0}));
    answer();
    EXPECT_THAT(outcomes, ElementsAre("a: "));

    link->setNotificationHandler(nullptr);
    deliver({0x11, 0xFF, 5, 0x10});
    EXPECT_EQ(heard.size(), 2U);
    EXPECT_EQ(link->statistics().notificationsDelivered, 3);
}

TEST_F(HIDPPLinkTest, reports_that_are_none_of_its_business_count_nowhere) {
    deliver({0x11, 0xFF, 0x05});
    deliver({0x20, 0xFF, 0x05, 0x10, 0});
    deliver({0x12, 0xFF, 0x05, 0x10, 0});
    interface->deliver(0x02, {0x01, 0x02, 0x03, 0x04});
    interface->deliver(0x11, {});
    EXPECT_EQ(link->statistics(), HIDPPTransportStatistics{});
}

TEST_F(HIDPPLinkTest, parameters_that_do_not_fit_consume_no_software_id) {
    enqueue("bad", 5, 1, {1, 2, 3, 4});
    EXPECT_THAT(
        takeOutcomes(),
        ElementsAre("bad: invalid argument: 4 parameter bytes do not fit in a short report"));
    enqueue("good");
    EXPECT_EQ(interface->written.back()[3], 0x11);
    EXPECT_EQ(link->statistics().peakQueueDepth, 1);
}

TEST_F(HIDPPLinkTest, an_end_fails_everything_that_waits_and_everything_after) {
    const struct {
        void (HIDPPLink::*end)();
        const char* text;
    } cases[] = {{&HIDPPLink::close, "not connected"},
                 {&HIDPPLink::invalidate, "device was removed"}};
    for (const auto& [end, text] : cases) {
        auto endingInterface = std::make_shared<FakeHIDInterface>();
        auto ending = std::make_shared<HIDPPLink>(runLoop, endingInterface);
        ASSERT_TRUE(ending->open().has_value());
        std::vector<std::string> heard;
        const auto request = [&](const std::string& name) {
            ending->enqueue({.featureIndex = 1, .timeout = 1, .label = name},
                            [&heard, name](HIDPPLink::Reply reply) {
                                heard.push_back(name + ": " + textOf(reply));
                            });
        };
        request("a");
        request("b");
        ((*ending).*end)();
        request("c");
        const std::string reason = text;
        EXPECT_THAT(heard, ElementsAre("a: " + reason, "b: " + reason, "c: device is not open"));
        EXPECT_FALSE(endingInterface->isListenedTo());
        ((*ending).*end)();
        EXPECT_EQ(endingInterface->closeCount, 1);
        dispatcher.advance(2s);
        EXPECT_EQ(heard.size(), 3U);
        EXPECT_THAT(endingInterface->written, IsEmpty());
    }
}

TEST_F(HIDPPLinkTest, closing_during_the_cooldown_cancels_it) {
    enqueue("a");
    dispatcher.advance(1s);
    enqueue("b");
    link->close();
    EXPECT_THAT(takeOutcomes(), ElementsAre("a: a timed out", "b: not connected"));
    dispatcher.advance(1s);
    EXPECT_EQ(interface->written.size(), 1U);
}

TEST_F(HIDPPLinkTest, a_completion_may_ask_again_or_end_the_link) {
    const auto again = [this](auto& self, int left) -> void {
        link->enqueue({.featureIndex = 1, .timeout = 0.1, .label = "again"},
                      [this, &self, left](HIDPPLink::Reply reply) {
                          outcomes.push_back(textOf(reply));
                          if (left > 0) self(self, left - 1);
                          if (left == 0) link->close();
                      });
    };
    again(again, 2);
    dispatcher.runReady();
    answer();
    dispatcher.advance(100ms);
    EXPECT_EQ(interface->written.size(), 2U) << "the cooldown holds for a request of a completion";
    dispatcher.advance(30ms);
    answer();
    EXPECT_THAT(outcomes, ElementsAre("", "again timed out", ""));
    EXPECT_FALSE(interface->isOpen);
}

TEST_F(HIDPPLinkTest, a_refused_open_leaves_the_link_closed) {
    const auto refused = std::make_shared<FakeHIDInterface>();
    const auto other = std::make_shared<HIDPPLink>(runLoop, refused);
    refused->openResult = IOReturn::notPermitted;
    EXPECT_EQ(other->open().error(), HIDPPError(HIDPPError::NotPermitted{}));
    refused->openResult = IOReturn::exclusiveAccess;
    EXPECT_EQ(other->open().error().description(),
              "IOHIDDeviceOpen failed: 0xE00002C5 (kIOReturnExclusiveAccess)");
    EXPECT_FALSE(refused->isListenedTo());
    other->close();
    EXPECT_EQ(refused->closeCount, 0);
    refused->openResult = IOReturn::success;
    EXPECT_TRUE(other->open().has_value());
    EXPECT_TRUE(other->open().has_value());
    other->close();
}

TEST(HIDPPLinkOnThreads, a_link_ends_without_waiting_for_a_write_that_is_stuck) {
    std::promise<void> stuck;
    std::promise<void> released;
    ThreadedDispatcher dispatcher;
    FakeHIDTransport transport;
    const auto runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    const auto interface = std::make_shared<FakeHIDInterface>();
    interface->onWrite = [&](const Bytes&) {
        stuck.set_value();
        released.get_future().wait();
    };
    auto link = std::make_shared<HIDPPLink>(runLoop, interface);
    runLoop->perform([&] {
        ASSERT_TRUE(link->open().has_value());
        link->enqueue({.timeout = 1, .label = "a"}, [](const HIDPPLink::Reply&) {});
    });
    stuck.get_future().wait();

    std::promise<void> ended;
    runLoop->perform([&] {
        link->close();
        link = nullptr;
    });
    runLoop->perform([&] { ended.set_value(); });
    EXPECT_EQ(ended.get_future().wait_for(10s), std::future_status::ready);
    released.set_value();

    // Those that come after it leave no thread behind.
    const auto threadCount = [] {
        return std::ranges::distance(std::filesystem::directory_iterator("/proc/self/task"));
    };
    const auto before = threadCount();
    runLoop->perform([&] {
        for (int i = 0; i < 20; ++i) {
            const auto next =
                std::make_shared<HIDPPLink>(runLoop, std::make_shared<FakeHIDInterface>());
            EXPECT_TRUE(next->open().has_value());
            next->close();
        }
    });
    runLoop->queue()->drain();
    EXPECT_LT(threadCount(), before + 10);
}

}  // namespace
}  // namespace tessara
