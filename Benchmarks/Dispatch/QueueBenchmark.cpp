// What it costs to hand work to a queue, and how long work takes to get there and back.

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <semaphore>

#include <benchmark/benchmark.h>

#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Support/AllocationCounter.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;

constexpr int stepsPerGlide = 32;

/// Posts the delayed blocks of one glide; the queue runs them as empty work far later.
void postGlide(DispatchQueue& queue, const std::shared_ptr<int>& owner, TimePoint base) {
    for (int step = 1; step <= stepsPerGlide; ++step) {
        queue.postAt(base + step * milliseconds(8), [owner] { benchmark::DoNotOptimize(*owner); });
    }
}

/// Measures `call` once per iteration, with the heap allocations of this thread, and does
/// `inBetween` off the clock.
template <typename Call, typename InBetween>
void measure(benchmark::State& state, Call call, InBetween inBetween) {
    AllocationCounter allocations;
    for (auto _ : state) {
        inBetween();
        allocations.start();
        const auto start = std::chrono::steady_clock::now();
        call();
        const auto end = std::chrono::steady_clock::now();
        allocations.stop();
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
    }
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations.count()),
                                                       benchmark::Counter::kAvgIterations);
}

void threadedPostGlide(benchmark::State& state) {
    ThreadedDispatcher dispatcher;
    const auto owner = std::make_shared<int>(0);
    std::shared_ptr<DispatchQueue> queue;
    int glides = 0;
    measure(
        state, [&] { postGlide(*queue, owner, queue->clock().now() + std::chrono::hours(1)); },
        [&] {
            if (glides++ % 10 != 0) return;
            // A new queue, so that no more stands in it than would while glides run into each
            // other.
            queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::userInteractive);
            queue->drain();
        });
}
BENCHMARK(threadedPostGlide)
    ->Name("threaded/post one glide of 32 delayed blocks")
    ->Iterations(5000)
    ->UseManualTime();

void threadedPost(benchmark::State& state) {
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::userInteractive);
    measure(state, [&] { queue->post([] {}); }, [&] { queue->drain(); });
}
BENCHMARK(threadedPost)
    ->Name("threaded/post to a queue that sleeps")
    ->Iterations(5000)
    ->UseManualTime();

void threadedRoundTrip(benchmark::State& state) {
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::userInteractive);
    std::binary_semaphore answered(0);
    for (auto _ : state) {
        queue->post([&] { answered.release(); });
        answered.acquire();
    }
    queue->drain();
}
BENCHMARK(threadedRoundTrip)->Name("threaded/post and wait for the block")->UseRealTime();

void threadedChain(benchmark::State& state) {
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::userInteractive);
    constexpr int links = 10'000;
    for (auto _ : state) {
        std::promise<void> ended;
        int left = links;
        std::function<void()> next = [&] {
            if (--left == 0) {
                ended.set_value();
            } else {
                queue->post([&] { next(); });
            }
        };
        queue->post([&] { next(); });
        ended.get_future().wait();
        queue->drain();
    }
    state.SetItemsProcessed(state.iterations() * links);
}
BENCHMARK(threadedChain)->Name("threaded/block that posts the next")->UseRealTime();

void manualGlide(benchmark::State& state) {
    ManualDispatcher dispatcher;
    const auto owner = std::make_shared<int>(0);
    const auto queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::standard);
    for (auto _ : state) {
        postGlide(*queue, owner, dispatcher.now());
        dispatcher.advance(stepsPerGlide * milliseconds(8));
    }
    state.SetItemsProcessed(state.iterations() * stepsPerGlide);
}
BENCHMARK(manualGlide)->Name("manual/post and run one glide");

}  // namespace
}  // namespace tessara
