// How late the steps of a glide are on a threaded queue, beside a bare loop that sleeps until the
// same moments. Queue and loop run alternately and in the same scheduling class, so that the ratio
// holds on any machine; the figures themselves are the machine's.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <time.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"

namespace tessara {
namespace {

using std::chrono::nanoseconds;

constexpr int stepsPerGlide = 32;
constexpr auto stepInterval = std::chrono::milliseconds(8);
constexpr int glidesPerRun = 60;

using Lateness = std::vector<nanoseconds>;

struct SchedulingClass {
    int policy = SCHED_OTHER;
    sched_param parameters{};

    [[nodiscard]] bool isRealTime() const { return policy != SCHED_OTHER; }
};

SchedulingClass classOf(DispatchQueue& queue) {
    std::promise<SchedulingClass> found;
    queue.post([&] {
        SchedulingClass own;
        pthread_getschedparam(pthread_self(), &own.policy, &own.parameters);
        own.policy &= ~SCHED_RESET_ON_FORK;
        found.set_value(own);
    });
    auto result = found.get_future().get();
    queue.drain();
    return result;
}

/// Posts all steps at once, as the scroll pipeline does, and waits for the last.
void glideOnQueue(DispatchQueue& queue, Lateness& lateness) {
    std::promise<void> ended;
    const auto base = queue.clock().now();
    for (int step = 1; step <= stepsPerGlide; ++step) {
        queue.postAt(base + step * stepInterval, [&, deadline = base + step * stepInterval] {
            lateness.push_back(queue.clock().now() - deadline);
        });
    }
    queue.postAt(base + stepsPerGlide * stepInterval, [&] { ended.set_value(); });
    ended.get_future().wait();
    queue.drain();
}

/// The same schedule with nothing but the system's own sleep.
void glideOnBareLoop(const SchedulingClass& like, Lateness& lateness) {
    std::thread([&] {
        pthread_setschedparam(pthread_self(), like.policy, &like.parameters);
        prctl(PR_SET_TIMERSLACK, 1, 0, 0, 0);
        const SystemClock clock;
        const auto base = clock.now();
        for (int step = 1; step <= stepsPerGlide; ++step) {
            const auto deadline = base + step * stepInterval;
            const auto nanos = deadline.time_since_epoch().count();
            const timespec until{nanos / 1'000'000'000, nanos % 1'000'000'000};
            clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
            lateness.push_back(clock.now() - deadline);
        }
    }).join();
}

/// Keeps one core busy with ordinary work while it lives.
class BusyCore {
  public:
    BusyCore()
        : thread_([this] {
              while (!ends_.load(std::memory_order_relaxed))
                  benchmark::ClobberMemory();
          }) {}
    ~BusyCore() {
        ends_ = true;
        thread_.join();
    }

    BusyCore(const BusyCore&) = delete;
    BusyCore& operator=(const BusyCore&) = delete;

  private:
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

double microsecondsAt(Lateness& lateness, double quantile) {
    const auto index =
        static_cast<std::ptrdiff_t>(quantile * static_cast<double>(lateness.size() - 1));
    std::ranges::nth_element(lateness, lateness.begin() + index);
    return std::chrono::duration<double, std::micro>(lateness[static_cast<std::size_t>(index)])
        .count();
}

void report(benchmark::State& state, const std::string& whose, Lateness& lateness) {
    state.counters[whose + "_p50_us"] = microsecondsAt(lateness, 0.50);
    state.counters[whose + "_p90_us"] = microsecondsAt(lateness, 0.90);
    state.counters[whose + "_p99_us"] = microsecondsAt(lateness, 0.99);
    state.counters[whose + "_max_us"] = microsecondsAt(lateness, 1.0);
}

void lateness(benchmark::State& state) {
    const std::optional<BusyCore> busy =
        state.range(0) != 0 ? std::make_optional<BusyCore>() : std::nullopt;
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::userInteractive);
    const auto schedulingClass = classOf(*queue);

    Lateness onQueue;
    Lateness onBareLoop;
    for (auto _ : state) {
        for (int glide = 0; glide < glidesPerRun; ++glide) {
            if (glide % 2 == 0) {
                glideOnQueue(*queue, onQueue);
                glideOnBareLoop(schedulingClass, onBareLoop);
            } else {
                glideOnBareLoop(schedulingClass, onBareLoop);
                glideOnQueue(*queue, onQueue);
            }
        }
    }
    report(state, "queue", onQueue);
    report(state, "bare", onBareLoop);
    state.counters["p99_ratio"] = microsecondsAt(onQueue, 0.99) / microsecondsAt(onBareLoop, 0.99);
    state.counters["real_time"] = schedulingClass.isRealTime() ? 1 : 0;
}
BENCHMARK(lateness)
    ->Name("lateness of glide steps")
    ->ArgName("busy cores")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

}  // namespace
}  // namespace tessara
