// What the transforms of the event path cost by themselves: time, and heap allocations.

#include <benchmark/benchmark.h>

#include "Support/AllocationCounter.h"
#include "TessaraCore/ButtonRouter.h"
#include "TessaraCore/PointerAccumulator.h"
#include "TessaraCore/ScrollTransformer.h"

namespace tessara {
namespace {

/// Runs `call` once per iteration and reports the allocations of one.
template <typename Call>
void measure(benchmark::State& state, Call call) {
    AllocationCounter allocations;
    allocations.start();
    for (auto _ : state)
        call();
    allocations.stop();
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations.count()),
                                                       benchmark::Counter::kAvgIterations);
}

/// The argument is the time between clicks: each its own glide, or each taking over the one before.
void transform(benchmark::State& state) {
    ScrollTransformer transformer{ScrollSettings{}};
    const auto gap = static_cast<double>(state.range(0));
    ScrollInput input{.lineDelta = 1};
    measure(state, [&] {
        input.timestampMillis += gap;
        benchmark::DoNotOptimize(transformer.transform(input));
    });
}
BENCHMARK(transform)->ArgName("gapMillis")->Arg(300)->Arg(20);

/// The most frames that settings can ask for.
void transformAtTheLimits(benchmark::State& state) {
    ScrollTransformer transformer{{.durationMillis = 5000, .frameIntervalMillis = 1}};
    ScrollInput input{.lineDelta = 1};
    measure(state, [&] {
        input.timestampMillis += 6000;
        benchmark::DoNotOptimize(transformer.transform(input));
    });
}
BENCHMARK(transformAtTheLimits);

/// The argument is how far the mouse moves in a millisecond: below the threshold, or well beyond
/// it.
void accumulate(benchmark::State& state) {
    PointerAccumulator accumulator{
        {.acceleration =
             AccelerationCurve{.exponent = 0.7, .thresholdCountsPerSecond = 800, .maxGain = 6}}};
    const PointerDelta delta{.dx = static_cast<double>(state.range(0)) / 10, .dy = -0.3};
    measure(state, [&] { benchmark::DoNotOptimize(accumulator.apply(delta, 1)); });
}
BENCHMARK(accumulate)->ArgName("tenthsOfACount")->Arg(5)->Arg(50);

/// Thirteen buttons with four bindings each.
void chooseAction(benchmark::State& state) {
    std::vector<ButtonBinding> bindings;
    for (std::int64_t button = ButtonRouter::bindableButtons.first;
         button <= ButtonRouter::bindableButtons.last; ++button) {
        for (const std::uint32_t modifiers : {0U, 2U, 4U, 6U}) {
            bindings.push_back({.button = button,
                                .modifiers = ModifierFlags{modifiers},
                                .action = SequenceAction{{KeyStep{}, DelayStep{}}}});
        }
    }
    const ButtonRouter router(std::move(bindings), 2000);
    measure(state, [&] {
        benchmark::DoNotOptimize(&router.action(ButtonRouter::bindableButtons.last,
                                                ModifierFlags::shift | ModifierFlags::command));
    });
}
BENCHMARK(chooseAction);

}  // namespace
}  // namespace tessara
