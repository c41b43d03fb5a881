#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Dispatch/ManualDispatcher.h"
#include "Support/TestDispatcher.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ManualDispatcherTest : public testing::VirtualTimeTest {
  protected:
    DispatchQueue::Block note(std::string name) {
        return [this, name = std::move(name)] { ran.push_back(name); };
    }

    std::vector<std::string> ran;
    std::shared_ptr<DispatchQueue> queue =
        dispatcher.makeQueue("ai.tessara.one", QualityOfService::standard);
    std::shared_ptr<DispatchQueue> other =
        dispatcher.makeQueue("ai.tessara.other", QualityOfService::standard);
};

TEST_F(ManualDispatcherTest, all_queues_share_one_order_of_deadline_and_then_of_posting) {
    const auto later = start + milliseconds(1);
    other->postAt(later, note("other, later"));
    queue->postAt(later, note("one, later"));
    queue->post(note("one, now"));
    other->post(note("other, now"));
    queue->postAt(start, note("one, at this moment"));
    other->postAt(start - milliseconds(5), note("other, in the past"));

    dispatcher.advance(milliseconds(1));
    EXPECT_THAT(ran, ElementsAre("other, in the past", "one, now", "other, now",
                                 "one, at this moment", "other, later", "one, later"));
}

TEST_F(ManualDispatcherTest, running_what_is_ready_includes_what_that_makes_ready) {
    queue->post([this] {
        other->post(note("made ready"));
        other->postAt(start + nanoseconds(1), note("not yet"));
    });
    EXPECT_EQ(dispatcher.runReady(), 2);
    EXPECT_THAT(ran, ElementsAre("made ready"));
    EXPECT_EQ(dispatcher.now(), start);
    EXPECT_EQ(dispatcher.nextDeadline(), start + nanoseconds(1));
    dispatcher.discard();
}

TEST_F(ManualDispatcherTest, work_made_due_at_the_very_end_of_an_advance_still_runs) {
    queue->postAt(start + milliseconds(5), [this] { other->post(note("at the end")); });
    EXPECT_EQ(dispatcher.advance(milliseconds(5)), 2);
    EXPECT_THAT(ran, ElementsAre("at the end"));
}

TEST_F(ManualDispatcherTest, running_until_idle_goes_from_deadline_to_deadline_up_to_the_limit) {
    queue->postAt(start + milliseconds(10), [this] {
        ran.emplace_back("first");
        queue->postAt(start + milliseconds(20), note("at the limit"));
        queue->postAt(start + milliseconds(20) + nanoseconds(1), note("past the limit"));
    });
    EXPECT_FALSE(dispatcher.runUntilIdle(start + milliseconds(20)));
    EXPECT_THAT(ran, ElementsAre("first", "at the limit"));
    EXPECT_EQ(dispatcher.now(), start + milliseconds(20));

    EXPECT_TRUE(dispatcher.runUntilIdle(TimePoint::max()));
    EXPECT_EQ(dispatcher.now(), start + milliseconds(20) + nanoseconds(1));
}

TEST_F(ManualDispatcherTest, running_until_idle_fires_timers_but_does_not_wait_for_them) {
    const auto timer =
        queue->startTimer(start + milliseconds(4), milliseconds(4), {}, note("tick"));
    EXPECT_TRUE(dispatcher.runUntilIdle(TimePoint::max()));
    EXPECT_THAT(ran, IsEmpty());

    queue->postAt(start + milliseconds(9), note("block"));
    EXPECT_EQ(dispatcher.pendingCount(), 1);
    EXPECT_TRUE(dispatcher.runUntilIdle(TimePoint::max()));
    EXPECT_THAT(ran, ElementsAre("tick", "tick", "block"));
    EXPECT_EQ(dispatcher.nextDeadline(), start + milliseconds(12));
    timer->cancel();
    EXPECT_EQ(dispatcher.nextDeadline(), std::nullopt);
}

/// Posts a note when it is destroyed, as an owner that reports its end does.
class PostsWhenDestroyed {
  public:
    PostsWhenDestroyed(std::shared_ptr<DispatchQueue> queue, DispatchQueue::Block block)
        : queue_(std::move(queue)), block_(std::move(block)) {}
    ~PostsWhenDestroyed() { queue_->post(std::move(block_)); }

  private:
    const std::shared_ptr<DispatchQueue> queue_;
    DispatchQueue::Block block_;
};

TEST_F(ManualDispatcherTest, a_block_may_post_while_it_is_destroyed) {
    auto poster = std::make_unique<PostsWhenDestroyed>(queue, note("farewell"));
    queue->post([poster = std::move(poster)] {});
    EXPECT_EQ(dispatcher.runReady(), 2);
    EXPECT_THAT(ran, ElementsAre("farewell"));

    poster = std::make_unique<PostsWhenDestroyed>(queue, note("never"));
    other->post([poster = std::move(poster)] {});
    dispatcher.discard();
    EXPECT_EQ(dispatcher.pendingCount(), 0);

    poster = std::make_unique<PostsWhenDestroyed>(queue, note("from an ended queue"));
    other->post([poster = std::move(poster)] {});
    other.reset();
    dispatcher.runReady();
    EXPECT_THAT(ran, ElementsAre("farewell", "from an ended queue"));
    dispatcher.discard();
}

TEST(ManualDispatcher, an_end_with_blocks_that_never_ran_is_told_with_their_queues_names) {
    std::vector<std::string> told;
    const auto token = std::make_shared<int>();
    {
        ManualDispatcher dispatcher({}, [&](const std::string& words) { told.push_back(words); });
        const auto queueOf = [&](const char* label) {
            return dispatcher.makeQueue(label, QualityOfService::standard);
        };
        queueOf("ai.tessara.ended")->post([token] { FAIL(); });
        const auto scroll = queueOf("ai.tessara.scroll");
        scroll->post([token] { FAIL(); });
        scroll->postAt(TimePoint(milliseconds(1)), [token, scroll] { FAIL(); });
        const auto idle = queueOf("ai.tessara.macro");
        const auto timer = idle->startTimer({}, milliseconds(1), {}, [] {});
        EXPECT_EQ(dispatcher.pendingCount(), 2);
        EXPECT_THAT(told, IsEmpty());
    }
    EXPECT_THAT(told, ElementsAre("The dispatcher ended with blocks that never ran: "
                                  "1 on ai.tessara.ended, 2 on ai.tessara.scroll."));
    EXPECT_EQ(token.use_count(), 1);
}

TEST(ManualDispatcher, a_queue_that_outlives_its_dispatcher_takes_nothing_on) {
    std::shared_ptr<DispatchQueue> queue;
    std::unique_ptr<DispatchTimer> timer;
    {
        ManualDispatcher dispatcher;
        queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::standard);
        timer = queue->startTimer({}, milliseconds(1), {}, [keepsItself = queue] { FAIL(); });
    }
    const auto token = std::make_shared<int>();
    queue->post([token] { FAIL(); });
    EXPECT_EQ(token.use_count(), 1);
    queue->drain();
}

TEST(ManualDispatcherDeathTest, misuse_stops_the_process_with_the_reason) {
    ManualDispatcher dispatcher(TimePoint(milliseconds(10)));
    const auto queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::standard);
    const auto runs = [&](DispatchQueue::Block block) {
        queue->post(std::move(block));
        dispatcher.runReady();
    };
    EXPECT_DEATH(runs([&] { dispatcher.runReady(); }), "runReady.* from within a block");
    EXPECT_DEATH(runs([&] { dispatcher.advance(milliseconds(1)); }),
                 "advance.* from within a block");
    EXPECT_DEATH(dispatcher.advanceTo(TimePoint(milliseconds(9))), "has passed");
    EXPECT_DEATH(dispatcher.advance(nanoseconds(-1)), "less than nothing");
    EXPECT_DEATH(std::thread([&] { dispatcher.runReady(); }).join(), "another thread");
    EXPECT_DEATH((void)queue->startTimer({}, nanoseconds(0), {}, [] {}), "interval not above zero");
    EXPECT_DEATH(
        {
            ManualDispatcher ending;
            const auto scroll = ending.makeQueue("ai.tessara.scroll", QualityOfService::standard);
            scroll->post([] {});
        },
        "never ran: 1 on ai.tessara.scroll");
}

}  // namespace
}  // namespace tessara
