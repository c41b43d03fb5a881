// What one event costs on the tap thread: time, and heap allocations of the calling thread. The
// queues run in virtual time, so that nothing else runs while a call is measured; what the calls
// enqueue is run or thrown away between them.

#include <chrono>
#include <memory>

#include <benchmark/benchmark.h>

#include "Platform/Dispatch/ManualDispatcher.h"
#include "Support/AllocationCounter.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/EventPosting.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/PointerPipeline.h"
#include "TessaraEngine/RecordingSideEffects.h"
#include "TessaraEngine/ScrollPipeline.h"

namespace tessara {
namespace {

class NoPoster final : public EventPosting {
  public:
    void postScrollStep(ScrollAxis, std::int64_t, ScrollPhase, ModifierFlags) override {}
    void postKey(std::uint16_t, bool, ModifierFlags) override {}
    void postMouseButton(std::int64_t, bool) override {}
};

/// Measures `call` once per iteration and does `inBetween` off the clock.
template <typename Call, typename InBetween>
void measure(benchmark::State& state, Call call, InBetween inBetween) {
    AllocationCounter allocations;
    for (auto _ : state) {
        allocations.start();
        const auto start = std::chrono::steady_clock::now();
        auto result = call();
        const auto end = std::chrono::steady_clock::now();
        allocations.stop();
        benchmark::DoNotOptimize(result);
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
        inBetween();
    }
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations.count()),
                                                       benchmark::Counter::kAvgIterations);
}

/// The argument is the time between clicks: each its own glide, or each taking over the one before.
void scrollPipelineHandle(benchmark::State& state) {
    ManualDispatcher dispatcher(TimePoint(std::chrono::seconds(1)), [](const std::string&) {});
    ScrollPipeline pipeline(ScrollSettings{}, std::make_shared<NoPoster>(), dispatcher);
    measure(
        state,
        [&] {
            return pipeline.handle(
                {.lineDelta = -1, .timestampMillis = millisSinceStart(dispatcher.now())});
        },
        [&] { dispatcher.advance(std::chrono::milliseconds(state.range(0))); });
    const ScrollPipeline::Metrics metrics = pipeline.snapshotMetrics();
    state.counters["steps"] =
        benchmark::Counter(static_cast<double>(metrics.stepsPosted + metrics.stepsCancelled),
                           benchmark::Counter::kAvgIterations);
}
BENCHMARK(scrollPipelineHandle)->ArgName("gapMillis")->Arg(300)->Arg(60)->UseManualTime();

/// The argument is the button: 3 is bound to a key stroke, 0 is not bound.
void buttonPipelineHandle(benchmark::State& state) {
    ManualDispatcher dispatcher(TimePoint(std::chrono::seconds(1)), [](const std::string&) {});
    ButtonPipeline pipeline(
        ButtonRouter({{.button = 3, .action = KeyStrokeAction{.code = 8}}}, 2000),
        std::make_shared<MacroExecutor>(std::make_shared<NoPoster>(),
                                        std::make_shared<RecordingSideEffects>(), dispatcher));
    bool isDown = false;
    measure(
        state,
        [&] {
            isDown = !isDown;
            return pipeline.handle({.button = state.range(0), .isDown = isDown});
        },
        [&] { dispatcher.runReady(); });
}
BENCHMARK(buttonPipelineHandle)->ArgName("button")->Arg(3)->Arg(0)->UseManualTime();

/// The argument is the time between motions: too slow for the gain to rise, and fast enough.
void pointerPipelineHandle(benchmark::State& state) {
    PointerPipeline pipeline(PointerSettings{}, true);
    const auto intervalMillis = static_cast<double>(state.range(0));
    double atMillis = 1000;
    AllocationCounter allocations;
    allocations.start();
    for (auto _ : state) {
        atMillis += intervalMillis;
        benchmark::DoNotOptimize(pipeline.handle(
            {.delta = {.dx = 3, .dy = -1}, .timestampMillis = atMillis, .deviceID = DeviceID{1}}));
    }
    allocations.stop();
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations.count()),
                                                       benchmark::Counter::kAvgIterations);
    if (allocations.count() > 0) state.SkipWithError("a motion allocates memory");
}
BENCHMARK(pointerPipelineHandle)->ArgName("intervalMillis")->Arg(8)->Arg(1);

}  // namespace
}  // namespace tessara
