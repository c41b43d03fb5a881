#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/bind_cancellation_slot.hpp>
#include <asio/cancellation_signal.hpp>
#include <asio/co_spawn.hpp>
#include <asio/this_coro.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Dispatch/Awaitables.h"
#include "QueueKinds.h"
#include "Support/TestDispatcher.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using ::testing::ElementsAre;

class AwaitablesTest : public testing::AllKindsTest {
  protected:
    /// Starts a coroutine on the queue. `finished` is ready when it has ended.
    void spawn(asio::awaitable<void> coroutine) {
        asio::co_spawn(queue->executor(), std::move(coroutine), [this](std::exception_ptr error) {
            if (error) {
                finished.set_exception(error);
            } else {
                finished.set_value();
            }
        });
    }

    std::promise<void> finished;
};
TESSARA_TEST_ALL_KINDS(AwaitablesTest);

TEST_P(AwaitablesTest, a_coroutine_sleeps_until_its_deadline_and_runs_on_the_queue) {
    const auto deadline = now() + milliseconds(2);
    spawn([](auto onQueue, TimePoint until) -> asio::awaitable<void> {
        EXPECT_TRUE(onQueue->isCurrent());
        EXPECT_TRUE(co_await sleepUntil(onQueue, until));
        EXPECT_TRUE(onQueue->isCurrent());
        EXPECT_GE(onQueue->clock().now(), until);
        EXPECT_TRUE(co_await sleepUntil(onQueue, until - milliseconds(5)));
    }(queue, deadline));
    runUntil(deadline);
    runReady();
    finished.get_future().get();
}

TEST_P(AwaitablesTest, a_coroutine_moves_from_queue_to_queue_behind_what_is_posted_there) {
    const auto other = kind->makeQueue("ai.tessara.other");
    std::vector<const char*> ran;
    spawn([](auto onQueue, auto onOther, auto& ranHere) -> asio::awaitable<void> {
        onOther->post([&] { ranHere.push_back("posted"); });
        co_await resumeOn(onOther);
        ranHere.push_back("coroutine");
        EXPECT_TRUE(onOther->isCurrent());
        EXPECT_FALSE(onQueue->isCurrent());
        co_await resumeOn(onQueue);
        EXPECT_TRUE(onQueue->isCurrent());
    }(queue, other, ran));
    runReady();  // in virtual time, all of it
    finished.get_future().get();
    EXPECT_THAT(ran, ElementsAre("posted", "coroutine"));
}

TEST_P(AwaitablesTest, a_coroutine_that_was_not_meant_to_throw_stops_the_process) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto coroutine = []() -> asio::awaitable<void> {
        throw std::runtime_error("out of a coroutine");
        co_return;
    };
    EXPECT_DEATH(
        {
            asio::co_spawn(queue->executor(), coroutine(), RethrowException{});
            runReady();
            runReady();
        },
        "terminate|out of a coroutine");
}

TEST_P(AwaitablesTest, a_coroutine_that_still_sleeps_goes_with_the_signal_that_cancels_it) {
    const auto token = std::make_shared<int>(0);
    asio::cancellation_signal signal;
    std::promise<bool> slept;
    asio::co_spawn(
        queue->executor(), sleepUntil(queue, now() + std::chrono::hours(1)),
        asio::bind_cancellation_slot(signal.slot(), [&, token](std::exception_ptr, bool reached) {
            slept.set_value(reached);
        }));
    runReady();
    queue->post([&] { signal.emit(asio::cancellation_type::terminal); });
    runReady();
    EXPECT_FALSE(slept.get_future().get());
    runReady();
    EXPECT_EQ(token.use_count(), 1);
}

class VirtualSleepTest : public testing::VirtualTimeTest {
  protected:
    void SetUp() override {
        asio::co_spawn(queue->executor(), sleepUntil(queue, deadline),
                       asio::bind_cancellation_slot(
                           signal.slot(), [this](const std::exception_ptr&, bool reached) {
                               outcome = {dispatcher.now(), reached};
                           }));
        dispatcher.runReady();
    }

    struct Outcome {
        TimePoint at;
        bool hasReachedDeadline;
        bool operator==(const Outcome&) const = default;
    };

    static constexpr TimePoint deadline = start + milliseconds(10);
    std::shared_ptr<DispatchQueue> queue =
        dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard);
    asio::cancellation_signal signal;
    std::optional<Outcome> outcome;
};

TEST_F(VirtualSleepTest, ends_once_at_its_deadline_and_no_nanosecond_earlier) {
    EXPECT_EQ(dispatcher.pendingCount(), 0) << "it is a timer";
    dispatcher.advanceTo(deadline - nanoseconds(1));
    EXPECT_EQ(outcome, std::nullopt);
    dispatcher.advance(nanoseconds(1));
    EXPECT_EQ(outcome, (Outcome{deadline, true}));

    outcome.reset();
    signal.emit(asio::cancellation_type::terminal);
    dispatcher.advance(milliseconds(1));
    EXPECT_EQ(outcome, std::nullopt) << "a late cancellation ends it again";
}

TEST_F(VirtualSleepTest, ends_at_once_when_it_is_cancelled_and_leaves_nothing_on_the_queue) {
    dispatcher.advance(milliseconds(3));
    signal.emit(asio::cancellation_type::terminal);
    EXPECT_EQ(outcome, std::nullopt) << "resumed inside the call that cancels";
    dispatcher.runReady();
    EXPECT_EQ(outcome, (Outcome{start + milliseconds(3), false}));
    EXPECT_EQ(dispatcher.nextDeadline(), std::nullopt);
    signal.emit(asio::cancellation_type::terminal);
    EXPECT_EQ(dispatcher.runReady(), 0);
}

TEST_F(VirtualSleepTest, that_is_cancelled_when_it_is_due_counts_as_cancelled) {
    queue->postAt(deadline - nanoseconds(1), [this] {
        // At the deadline's own moment, ahead of the sleep because its deadline is the earlier one.
        queue->postAt(deadline - nanoseconds(1),
                      [this] { signal.emit(asio::cancellation_type::terminal); });
    });
    dispatcher.advanceTo(deadline);
    EXPECT_EQ(outcome, (Outcome{deadline - nanoseconds(1), false}));
}

}  // namespace
}  // namespace tessara
