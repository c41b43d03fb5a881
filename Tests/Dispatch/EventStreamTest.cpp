#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Dispatch/EventStream.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Support/TestDispatcher.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EventStreamTest : public testing::VirtualTimeTest {
  protected:
    EventStream<int>::Listener into(std::vector<int>& values) {
        return [&values](int value) { values.push_back(value); };
    }

    std::shared_ptr<DispatchQueue> queue =
        dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard);
    EventStream<int> stream;
    std::vector<int> heard;
    std::vector<int> heardByAnother;
};

TEST_F(EventStreamTest, each_listener_hears_in_order_all_that_is_emitted_after_it_subscribed) {
    stream.emit(1);
    const auto early = stream.subscribe(queue, into(heard));
    stream.emit(2);
    stream.emit(3);
    const auto late = stream.subscribe(queue, into(heardByAnother));
    stream.emit(4);
    EXPECT_THAT(heard, IsEmpty()) << "delivered inside the call that emits";
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre(2, 3, 4));
    EXPECT_THAT(heardByAnother, ElementsAre(4));
    EXPECT_EQ(stream.listenerCount(), 2);
}

TEST_F(EventStreamTest, each_listener_hears_on_its_own_queue) {
    const auto other = dispatcher.makeQueue("ai.tessara.other", QualityOfService::standard);
    const auto one = stream.subscribe(queue, [&](int) { EXPECT_TRUE(queue->isCurrent()); });
    const auto two = stream.subscribe(other, [&](int) { EXPECT_TRUE(other->isCurrent()); });
    stream.emit(1);
    EXPECT_EQ(dispatcher.runReady(), 2);
}

TEST_F(EventStreamTest, what_is_in_flight_when_a_subscription_ends_is_not_delivered) {
    auto subscription = stream.subscribe(queue, into(heard));
    stream.emit(1);
    subscription.cancel();
    subscription.cancel();
    stream.emit(2);
    dispatcher.runReady();
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_EQ(stream.listenerCount(), 0);
}

TEST_F(EventStreamTest, a_subscription_ends_with_its_handle_and_moves_with_it) {
    auto held = stream.subscribe(queue, into(heard));
    {
        const auto moved = std::move(held);
        EXPECT_EQ(stream.listenerCount(), 1);
        held = stream.subscribe(queue, into(heardByAnother));
    }
    EXPECT_EQ(stream.listenerCount(), 1);
    held = stream.subscribe(queue, into(heard));  // lets go of the one that it replaces
    stream.emit(1);
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre(1));
    EXPECT_THAT(heardByAnother, IsEmpty());
}

TEST_F(EventStreamTest, what_is_in_flight_when_the_stream_ends_still_arrives) {
    auto ending = std::make_unique<EventStream<int>>();
    auto subscription = ending->subscribe(queue, into(heard));
    ending->emit(1);
    ending.reset();
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre(1));
    subscription.cancel();
}

TEST_F(EventStreamTest, a_listener_may_emit_subscribe_and_end_its_own_subscription) {
    std::optional<EventSubscription> second;
    EventSubscription first;
    const auto token = std::make_shared<int>(0);
    first = stream.subscribe(queue, [&, token](int value) {
        first.cancel();
        second = stream.subscribe(queue, into(heardByAnother));
        stream.emit(value + 1);
        heard.push_back(value + *token);  // the listener is whole until it returns
    });
    stream.emit(1);
    stream.emit(10);
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre(1));
    EXPECT_THAT(heardByAnother, ElementsAre(2));
    EXPECT_EQ(token.use_count(), 1);
}

TEST(EventStream, emissions_that_race_each_other_reach_all_listeners_in_one_order) {
    constexpr int perEmitter = 500;
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.test", QualityOfService::standard);
    const auto other = dispatcher.makeQueue("ai.tessara.other", QualityOfService::standard);
    std::vector<int> heard;
    std::vector<int> heardByOther;
    EventStream<int> stream;
    const auto one = stream.subscribe(queue, [&](int value) { heard.push_back(value); });
    const auto two = stream.subscribe(other, [&](int value) { heardByOther.push_back(value); });
    const auto emitFrom = [&](int first) {
        return std::jthread([&, first] {
            for (int i = 0; i < perEmitter; ++i)
                stream.emit(first + i);
        });
    };
    {
        const auto early = emitFrom(0);
        const auto late = emitFrom(perEmitter);
    }
    queue->drain();
    other->drain();
    EXPECT_EQ(heard.size(), 2 * perEmitter);
    EXPECT_EQ(heard, heardByOther);
}

}  // namespace
}  // namespace tessara
