// A test for each promise of DispatchQueue, told of all kinds of queue.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/dispatch.hpp>
#include <asio/post.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Dispatch/DispatchQueue.h"
#include "QueueKinds.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;

class DispatchQueueTest : public testing::AllKindsTest {};
TESSARA_TEST_ALL_KINDS(DispatchQueueTest);

TEST_P(DispatchQueueTest, promise_1_blocks_of_one_queue_never_overlap) {
    constexpr int perThread = 500;
    bool isRunning = false;  // plain, so that the thread sanitizer sees an overlap too
    int count = 0;
    const auto postMany = [&] {
        for (int i = 0; i < perThread; ++i) {
            queue->post([&] {
                EXPECT_FALSE(std::exchange(isRunning, true));
                ++count;
                isRunning = false;
            });
        }
    };
    std::thread one(postMany);
    std::thread another(postMany);
    one.join();
    another.join();
    runReady();
    EXPECT_EQ(count, 2 * perThread);
}

TEST_P(DispatchQueueTest, promise_2_posted_blocks_run_in_the_order_of_their_posting) {
    std::vector<int> ran;
    for (int i = 0; i < 1000; ++i)
        queue->post([&ran, i] { ran.push_back(i); });
    runReady();
    EXPECT_EQ(ran.size(), 1000);
    EXPECT_TRUE(std::ranges::is_sorted(ran));
}

TEST_P(DispatchQueueTest,
       promises_3_and_4_delayed_blocks_run_by_deadline_then_posting_and_never_early) {
    struct Posted {
        TimePoint deadline;
        int order;
        auto operator<=>(const Posted&) const = default;
    };
    std::vector<Posted> ran;
    const auto start = now();
    queue->post([&] {  // so that none of them runs before all are posted
        std::minstd_rand random(1);
        std::vector<std::unique_ptr<DispatchTimer>> cancelled;  // they leave the order as it is
        for (int order = 0; order < 300; ++order) {
            const auto deadline = start + nanoseconds(100'000) * (random() % 20);
            cancelled.push_back(queue->startTimer(deadline, milliseconds(1), {}, [] { FAIL(); }));
            queue->postAt(deadline, [&, posted = Posted{deadline, order}] {
                EXPECT_GE(now(), posted.deadline);
                ran.push_back(posted);
            });
        }
    });
    runReady();
    runUntil(start + milliseconds(2));
    EXPECT_EQ(ran.size(), 300);
    EXPECT_TRUE(std::ranges::is_sorted(ran));
}

TEST_P(DispatchQueueTest, promise_5_no_block_runs_inside_the_call_that_posts_it) {
    int inside = 0;
    const auto look = [&] { EXPECT_EQ(inside, 0); };
    queue->post([&] {
        ++inside;
        queue->post(look);
        queue->postAt(queue->clock().now() - milliseconds(1), look);
        asio::post(queue->executor(), look);
        asio::dispatch(queue->executor(), look);
        const auto timer = queue->startTimer(now(), milliseconds(1), {}, look);
        --inside;
    });
    runReady();
    runReady();
}

TEST_P(DispatchQueueTest, promise_6_a_block_is_run_once_and_destroyed_before_the_next_begins) {
    auto token = std::make_shared<int>(0);
    const auto weakToken = std::weak_ptr(token);
    int runs = 0;
    queue->post([token = std::move(token), &runs] { ++runs; });
    queue->post([&] { EXPECT_TRUE(weakToken.expired()); });
    runReady();
    EXPECT_EQ(runs, 1);
}

TEST_P(DispatchQueueTest, promise_6_what_has_not_run_is_destroyed_when_its_queue_ends) {
    const auto token = std::make_shared<int>(0);
    queue->postAt(now() + std::chrono::hours(1), [token] { FAIL(); });
    const auto timer =
        queue->startTimer(now() + std::chrono::hours(1), milliseconds(1), {}, [token] { FAIL(); });
    queue.reset();
    EXPECT_EQ(token.use_count(), 1);
    kind->discard();
}

TEST_P(DispatchQueueTest, promise_7_a_timer_fires_at_multiples_and_never_twice_for_one) {
    constexpr auto interval = milliseconds(1);
    std::vector<nanoseconds> fired;
    const auto first = now() + milliseconds(2);
    const auto timer =
        queue->startTimer(first, interval, nanoseconds(0), [&] { fired.push_back(now() - first); });
    runUntil(first + 5 * interval);
    runReady();
    timer->cancel();
    runReady();
    ASSERT_THAT(fired, Not(IsEmpty()));
    // Each firing has a multiple of its own, so the nth comes no earlier than the nth. Where real
    // time goes on between a firing and a look at the clock, nothing more can be said.
    for (std::size_t n = 0; n < fired.size(); ++n)
        EXPECT_GE(fired[n], static_cast<std::int64_t>(n) * interval) << n;
}

TEST_P(DispatchQueueTest, promise_8_a_timer_cancelled_on_the_queue_does_not_fire_though_it_is_due) {
    queue->post([&] {
        const auto due = now();
        const auto timer = queue->startTimer(due, milliseconds(1), {}, [] { FAIL(); });
        while (now() < due)
            continue;
        timer->cancel();
        timer->cancel();
    });
    runReady();
    runReady();
}

TEST_P(DispatchQueueTest, promise_9_draining_runs_what_is_runnable_and_waits_for_no_deadline) {
    std::atomic<int> ran = 0;
    for (int i = 0; i < 100; ++i)
        queue->post([&] { ++ran; });
    queue->postAt(now(), [&] { ++ran; });
    queue->postAt(now() + std::chrono::hours(1), [] { FAIL(); });
    queue->drain();
    EXPECT_EQ(ran, 101);
    queue.reset();
    kind->discard();
}

TEST_P(DispatchQueueTest, promise_10_posting_never_waits_for_a_block_that_is_running) {
    std::vector<const char*> ran;
    queue->post([&] {
        queue->post([&] { ran.push_back("from the block"); });
        std::thread([&] { queue->post([&] { ran.push_back("from elsewhere"); }); }).join();
        ran.push_back("block");
    });
    runReady();
    runReady();
    EXPECT_THAT(ran, ElementsAre("block", "from the block", "from elsewhere"));
}

TEST_P(DispatchQueueTest, promise_11_a_block_that_throws_stops_the_process) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            queue->post([] { throw std::runtime_error("out of a block"); });
            runReady();
        },
        "terminate|out of a block");
}

TEST_P(DispatchQueueTest, draining_from_within_a_block_of_the_same_queue_stops_the_process) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            queue->post([&] { queue->drain(); });
            runReady();
        },
        "ai.tessara.test .* one of its blocks");
}

TEST_P(DispatchQueueTest, may_be_let_go_by_its_own_block) {
    const auto other = kind->makeQueue("ai.tessara.other");
    const auto token = std::make_shared<int>(0);
    std::promise<void> letGo;
    queue->postAt(now() + std::chrono::hours(1), [token] { FAIL(); });
    auto& leaving = *queue;
    leaving.post([&, lastHolder = std::move(queue)]() mutable {
        lastHolder.reset();
        letGo.set_value();
    });
    kind->runReady(*other);
    letGo.get_future().wait();
    kind->discard();
    kind->end();
    EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
}  // namespace tessara
