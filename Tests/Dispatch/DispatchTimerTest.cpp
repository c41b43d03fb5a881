// What a timer's owner may do to it, in particular from within its own handler.

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "QueueKinds.h"
#include "Support/TestDispatcher.h"

namespace tessara {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using ::testing::ElementsAre;

class DispatchTimerTest : public testing::AllKindsTest {
  protected:
    /// Runs `block` on the queue, so that what it assigns is there before the next block runs.
    void onQueue(DispatchQueue::Block block) {
        queue->post(std::move(block));
        runReady();
    }

    std::unique_ptr<DispatchTimer> timer;  // used on the queue
    int firings = 0;                       // used on the queue
};
TESSARA_TEST_ALL_KINDS(DispatchTimerTest);

TEST_P(DispatchTimerTest, destroyed_from_its_own_handler_leaves_the_handler_whole_to_its_end) {
    const auto first = now() + milliseconds(1);
    auto token = std::make_shared<int>(7);
    const auto weakToken = std::weak_ptr(token);
    onQueue([&] {
        timer = queue->startTimer(first, microseconds(100), {}, [&, token = std::move(token)] {
            timer.reset();
            if (!weakToken.expired()) firings += *token;
        });
    });
    runUntil(first + milliseconds(1));
    EXPECT_EQ(firings, 7);
    EXPECT_TRUE(weakToken.expired());
}

TEST_P(DispatchTimerTest, cancelled_by_another_timer_that_is_due_with_it_does_not_fire) {
    const auto first = now() + milliseconds(1);
    std::unique_ptr<DispatchTimer> victim;
    onQueue([&] {
        timer = queue->startTimer(first, std::chrono::hours(1), {}, [&] { victim->cancel(); });
        victim = queue->startTimer(first, std::chrono::hours(1), {}, [&] { ++firings; });
    });
    runUntil(first + milliseconds(1));
    EXPECT_EQ(firings, 0);
}

TEST_P(DispatchTimerTest, with_a_leeway_holds_up_no_block_that_is_due_before_it_has_to_fire) {
    const auto first = now() + milliseconds(1);
    onQueue([&] {
        timer = queue->startTimer(first, std::chrono::hours(1), std::chrono::hours(1),
                                  [&] { ++firings; });
    });
    runUntil(first + milliseconds(1));
    EXPECT_EQ(firings, 1);
}

TEST_P(DispatchTimerTest, its_handlers_captures_go_when_it_is_cancelled) {
    const auto token = std::make_shared<int>(0);
    onQueue([&] {
        timer = queue->startTimer(now() + std::chrono::hours(1), milliseconds(1), {}, [token] {});
    });
    EXPECT_EQ(token.use_count(), 2);
    timer->cancel();
    EXPECT_EQ(token.use_count(), 1);
}

TEST_P(DispatchTimerTest, a_handle_that_outlives_its_queue_may_be_cancelled) {
    const auto token = std::make_shared<int>(0);
    timer = queue->startTimer(now() + std::chrono::hours(1), milliseconds(1), {}, [token] {});
    queue.reset();
    EXPECT_EQ(token.use_count(), 1);
    timer->cancel();
}

TEST_P(DispatchTimerTest, a_handler_may_be_the_last_to_let_go_of_its_queue) {
    const auto other = kind->makeQueue("ai.tessara.other");
    std::promise<void> letGo;
    auto& leaving = *queue;
    leaving.post([&, holder = std::move(queue)]() mutable {
        timer = leaving.startTimer(leaving.clock().now(), microseconds(1), {},
                                   [&, lastHolder = std::move(holder)]() mutable {
                                       ++firings;
                                       lastHolder.reset();
                                       letGo.set_value();
                                   });
    });
    kind->runReady(*other);
    letGo.get_future().wait();
    kind->end();
    EXPECT_EQ(firings, 1);
}

TEST_P(DispatchTimerTest, from_the_beginning_of_time_with_the_longest_interval_fires_once) {
    timer = queue->startTimer(TimePoint::min(), nanoseconds::max(), nanoseconds::max(),
                              [&] { ++firings; });
    runReady();
    runReady();
    EXPECT_EQ(firings, 1);
}

class VirtualTimerTest : public testing::VirtualTimeTest {
  protected:
    std::shared_ptr<DispatchQueue> queue =
        dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard);
    std::vector<nanoseconds> fired;
};

TEST_F(VirtualTimerTest, fires_exactly_at_its_first_deadline_and_at_each_multiple) {
    const auto first = start + milliseconds(5);
    const auto timer = queue->startTimer(first, milliseconds(2), milliseconds(1),
                                         [&] { fired.push_back(dispatcher.now() - start); });
    EXPECT_EQ(dispatcher.advanceTo(first - nanoseconds(1)), 0);
    EXPECT_EQ(dispatcher.advance(nanoseconds(1)), 1);
    EXPECT_EQ(dispatcher.advance(milliseconds(4)), 2);
    EXPECT_THAT(fired, ElementsAre(milliseconds(5), milliseconds(7), milliseconds(9)));
    EXPECT_EQ(dispatcher.nextDeadline(), start + milliseconds(11));
    EXPECT_EQ(dispatcher.pendingCount(), 0);
}

TEST_F(VirtualTimerTest, that_starts_late_fires_once_and_keeps_to_the_multiples_of_its_start) {
    const auto first = start - milliseconds(7);
    const auto timer = queue->startTimer(first, milliseconds(3), {},
                                         [&] { fired.push_back(dispatcher.now() - first); });
    EXPECT_EQ(dispatcher.runReady(), 1);
    EXPECT_EQ(dispatcher.advance(milliseconds(5)), 2);
    EXPECT_THAT(fired, ElementsAre(milliseconds(7), milliseconds(9), milliseconds(12)));
}

TEST_F(VirtualTimerTest, that_is_due_on_a_multiple_takes_it_and_not_the_same_again) {
    const auto timer = queue->startTimer(start - milliseconds(6), milliseconds(3), {},
                                         [&] { fired.push_back(dispatcher.now() - start); });
    EXPECT_EQ(dispatcher.runReady(), 1);
    EXPECT_EQ(dispatcher.nextDeadline(), start + milliseconds(3));
}

TEST(ThreadedTimer, cancelled_from_elsewhere_begins_no_firing_afterwards) {
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard);
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> firings = 0;
        std::promise<void> firedOnce;
        const auto timer = queue->startTimer(queue->clock().now(), microseconds(50), {}, [&] {
            if (firings.fetch_add(1) == 0) firedOnce.set_value();
        });
        firedOnce.get_future().wait();
        timer->cancel();
        queue->drain();  // behind a firing that had begun
        const int firingsAtCancel = firings;
        queue->drain();
        EXPECT_EQ(firings, firingsAtCancel);
    }
}

TEST(ThreadedTimer, with_a_leeway_fires_by_itself) {
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.test", QualityOfService::utility);
    std::promise<void> fired;
    const auto timer =
        queue->startTimer(queue->clock().now() + milliseconds(1), std::chrono::hours(1),
                          milliseconds(1), [&] { fired.set_value(); });
    fired.get_future().wait();
    queue->drain();
}

}  // namespace
}  // namespace tessara
