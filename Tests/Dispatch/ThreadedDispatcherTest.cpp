#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <asio/any_io_executor.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Support/ProcessResources.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;

class ThreadedDispatcherTest : public ::testing::Test {
  protected:
    /// What `function` gives on the queue's thread.
    template <typename Function>
    auto on(DispatchQueue& queue, Function function) {
        std::packaged_task<std::invoke_result_t<Function>()> task(function);
        auto result = task.get_future();
        queue.post([task = std::move(task)]() mutable { task(); });
        return result.get();
    }

    const testing::NoLeakedResources resources;
    std::optional<ThreadedDispatcher> dispatcher{std::in_place};
};

TEST_F(ThreadedDispatcherTest, each_queue_has_a_thread_of_its_own_named_by_the_labels_last_words) {
    struct Case {
        const char* label;
        const char* threadName;
    };
    const Case cases[] = {
        {"short", "short"},
        {"x.fifteen.letters", "fifteen.letters"},
        {"sixteen-.letters", "letters"},
        {"ai.tessara.scroll", "tessara.scroll"},
        {"one-word-that-is-too-long", "hat-is-too-long"},
        {"ends-in-a-dot-after-long-word.", "fter-long-word."},
    };
    for (const auto& [label, threadName] : cases) {
        const auto queue = dispatcher->makeQueue(label, QualityOfService::standard);
        EXPECT_EQ(queue->label(), label);
        EXPECT_EQ(on(*queue,
                     [] {
                         std::array<char, 16> name{};
                         pthread_getname_np(pthread_self(), name.data(), name.size());
                         return std::string(name.data());
                     }),
                  threadName);
        EXPECT_NE(on(*queue, [] { return std::this_thread::get_id(); }),
                  std::this_thread::get_id());
    }
}

TEST_F(ThreadedDispatcherTest, the_class_of_a_queue_is_asked_of_the_system) {
    const auto slackOf = [&](QualityOfService quality) {
        const auto queue = dispatcher->makeQueue("ai.tessara.test", quality);
        return on(*queue, [] { return prctl(PR_GET_TIMERSLACK, 0, 0, 0, 0); });
    };
    EXPECT_LE(slackOf(QualityOfService::userInteractive), 1);  // a real-time thread has none
    EXPECT_EQ(slackOf(QualityOfService::standard), prctl(PR_GET_TIMERSLACK, 0, 0, 0, 0));

    const auto niceOf = [&](QualityOfService quality) {
        const auto queue = dispatcher->makeQueue("ai.tessara.test", quality);
        return on(*queue, [] { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); });
    };
    EXPECT_EQ(niceOf(QualityOfService::utility), 10);
    EXPECT_EQ(niceOf(QualityOfService::userInitiated), getpriority(PRIO_PROCESS, 0));
}

TEST_F(ThreadedDispatcherTest, a_system_that_refuses_real_time_is_no_matter) {
    rlimit before{};
    getrlimit(RLIMIT_RTPRIO, &before);
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_RTPRIO, &none);
    const auto queue = dispatcher->makeQueue("ai.tessara.test", QualityOfService::userInteractive);
    EXPECT_TRUE(on(*queue, [&] { return queue->isCurrent(); }));
    setrlimit(RLIMIT_RTPRIO, &before);
}

TEST_F(ThreadedDispatcherTest, letting_go_of_a_queue_waits_for_the_block_that_is_running) {
    std::promise<void> isRunning;
    std::atomic<bool> mayEnd = false;
    std::atomic<bool> hasEnded = false;
    auto queue = dispatcher->makeQueue("ai.tessara.test", QualityOfService::standard);
    queue->post([&] {
        isRunning.set_value();
        while (!mayEnd)
            std::this_thread::yield();
        hasEnded = true;
    });
    isRunning.get_future().wait();
    std::thread helper([&] { mayEnd = true; });
    queue.reset();
    EXPECT_TRUE(hasEnded);
    helper.join();
}

TEST_F(ThreadedDispatcherTest, queues_may_outlive_it) {
    const auto queue = dispatcher->makeQueue("ai.tessara.test", QualityOfService::standard);
    dispatcher.reset();
    EXPECT_GT(on(*queue, [&] { return queue->clock().now(); }), TimePoint{});
}

TEST_F(ThreadedDispatcherTest, a_queue_waits_for_file_descriptors_in_the_same_loop) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const auto queue = dispatcher->makeQueue("ai.tessara.test", QualityOfService::standard);
    {
        asio::posix::stream_descriptor reader(queue->executor(), ends[0]);
        std::promise<bool> isReadable;
        std::atomic<bool> goesOn = true;
        // A block that always posts the next one leaves the descriptor its turn.
        std::function<void()> busy = [&] {
            if (goesOn) queue->post(busy);
        };
        queue->post([&] {
            reader.async_wait(asio::posix::stream_descriptor::wait_read,
                              [&](asio::error_code error) {
                                  isReadable.set_value(!error && queue->isCurrent());
                              });
            busy();
        });
        ASSERT_EQ(write(ends[1], "x", 1), 1);
        EXPECT_TRUE(isReadable.get_future().get());
        goesOn = false;
        queue->drain();
        queue->drain();
    }
    close(ends[1]);
}

TEST_F(ThreadedDispatcherTest, an_earlier_deadline_is_kept_though_the_loop_sleeps_for_a_later_one) {
    const auto queue = dispatcher->makeQueue("ai.tessara.test", QualityOfService::standard);
    queue->postAt(queue->clock().now() + std::chrono::hours(1), [] { FAIL(); });
    queue->drain();
    std::promise<void> ran;
    queue->postAt(queue->clock().now() + milliseconds(1), [&] { ran.set_value(); });
    ran.get_future().wait();
    queue->drain();
}

}  // namespace
}  // namespace tessara
