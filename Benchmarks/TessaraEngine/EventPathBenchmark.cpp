// What one event costs between the system's call of the tap and its answer: time, and heap
// allocations of the tap thread. Beside it the same tap with a handler that does nothing, which
// costs the two readings of the clock and the bookkeeping.

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/AllocationCounter.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/CGPointerCursor.h"
#include "TessaraEngine/DeviceScope.h"
#include "TessaraEngine/EventTapController.h"
#include "TessaraEngine/InputRouter.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/PointerPipeline.h"
#include "TessaraEngine/RecordingSideEffects.h"
#include "TessaraEngine/ScrollPipeline.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {
namespace {

enum class Cursor : std::uint8_t {
    followsEvent,  ///< as on a platform that moves the cursor by the event's deltas
    isMoved        ///< as on a platform that has to be told
};

/// The event path on real queues and the real clock, and beside it a tap that does nothing.
class EventPath {
  public:
    explicit EventPath(Cursor cursor)
        : router_(scope_, scroll_, buttons_, pointer_,
                  cursor == Cursor::isMoved ? std::make_unique<CGPointerCursor>(
                                                  desktop_.eventServices(), desktop_.displays())
                                            : nullptr,
                  dispatcher_.clock()) {
        scope_.refreshNow();
    }

    /// An event of the mouse that the program is for.
    CGEvent ofMouse(CGEventType type) const {
        CGEvent event;
        event.type = type;
        event.hidEventReference = mouse_.id();
        event.timestampNanos = 1'000'000'000;
        return event;
    }

    CGEvent motion() const {
        CGEvent event = ofMouse(CGEventType::mouseMoved);
        event.location = {.x = 100, .y = 100};
        event.setIntegerValue(CGEventField::mouseEventDeltaX, 3);
        event.setIntegerValue(CGEventField::mouseEventDeltaY, -2);
        event.setDoubleValue(CGEventField::unacceleratedPointerMovementX, 3);
        event.setDoubleValue(CGEventField::unacceleratedPointerMovementY, -2);
        return event;
    }

    CGEvent foreignMotion() const {
        CGEvent event = motion();
        event.hidEventReference = foreign_.id();
        return event;
    }

    CGEvent ownOutput() const {
        CGEvent event = ofMouse(CGEventType::scrollWheel);
        event.hidEventReference = 0;
        tagAsTessaraEmitted(event);
        return event;
    }

    CGEvent wheel() const {
        CGEvent event = ofMouse(CGEventType::scrollWheel);
        event.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, -1);
        return event;
    }

    CGEvent button(CGEventType type, std::int64_t number) const {
        CGEvent event = ofMouse(type);
        event.setIntegerValue(CGEventField::mouseEventButtonNumber, number);
        return event;
    }

    /// Throws away what events set off.
    void reset() {
        router_.resetAll();
        executor_->drain();
        scroll_.drain();
        desktop_.settle();
        desktop_.events().takeJournal();
    }

  private:
    ThreadedDispatcher dispatcher_;
    SimulatedDesktop desktop_{dispatcher_};
    SimulatedPointingDevice& mouse_ = desktop_.attachTargetMouse();
    SimulatedPointingDevice& foreign_ = desktop_.attachForeignMouse();
    DeviceScope scope_{{HIDPPDeviceMatch::g502X}, desktop_.devices(), dispatcher_};
    std::shared_ptr<CGEventPoster> poster_ =
        std::make_shared<CGEventPoster>(desktop_.eventServices(), CGEventTapLocation::session);
    ScrollPipeline scroll_{ScrollSettings{}, poster_, dispatcher_};
    std::shared_ptr<MacroExecutor> executor_ = std::make_shared<MacroExecutor>(
        poster_, std::make_shared<RecordingSideEffects>(), dispatcher_);
    ButtonPipeline buttons_{
        ButtonRouter({{.button = 4, .action = KeyStrokeAction{.code = 8}}}, 2000), executor_};
    PointerPipeline pointer_{PointerSettings{}, true};
    InputRouter router_;

  public:
    EventTapController routing{
        {}, desktop_.taps(), dispatcher_, nullptr, [this](CGEventType type, CGEvent& event) {
            return router_.route(type, event);
        }};
    EventTapController empty{{}, desktop_.taps(), dispatcher_, nullptr, [](CGEventType, CGEvent&) {
                                 return TapVerdict::pass;
                             }};
};

/// One dispatch of the event, a millisecond after the one before.
bool dispatchNext(EventTapController& tap, CGEvent& original) {
    original.timestampNanos += 1'000'000;
    CGEvent event = original;
    const bool passes = tap.dispatch(event.type, event);
    benchmark::DoNotOptimize(event);
    return passes;
}

void reportAllocations(benchmark::State& state, const AllocationCounter& allocations) {
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations.count()),
                                                       benchmark::Counter::kAvgIterations);
}

/// Events that set nothing off, one after the other: none may allocate.
void dispatch(benchmark::State& state, Cursor cursor, EventTapController EventPath::* tap,
              CGEvent (EventPath::*make)() const) {
    EventPath path(cursor);
    CGEvent event = (path.*make)();
    AllocationCounter allocations;
    allocations.start();
    for (auto _ : state) {
        benchmark::DoNotOptimize(dispatchNext(path.*tap, event));
    }
    allocations.stop();
    reportAllocations(state, allocations);
    if (allocations.count() != 0) state.SkipWithError("the tap thread allocated");
}
BENCHMARK_CAPTURE(dispatch, emptyHandler, Cursor::followsEvent, &EventPath::empty,
                  &EventPath::motion);
BENCHMARK_CAPTURE(dispatch, motion, Cursor::followsEvent, &EventPath::routing, &EventPath::motion);
BENCHMARK_CAPTURE(dispatch, motionThatMovesTheCursor, Cursor::isMoved, &EventPath::routing,
                  &EventPath::motion);
BENCHMARK_CAPTURE(dispatch, foreignMotion, Cursor::followsEvent, &EventPath::routing,
                  &EventPath::foreignMotion);
BENCHMARK_CAPTURE(dispatch, ownOutput, Cursor::followsEvent, &EventPath::routing,
                  &EventPath::ownOutput);

/// Events that set something off: each is timed by itself, and its work done in between.
void measureWorkingDispatch(benchmark::State& state, EventPath& path, std::vector<CGEvent> events) {
    AllocationCounter allocations;
    std::size_t next = 0;
    for (auto _ : state) {
        CGEvent& event = events[next++ % events.size()];
        allocations.start();
        const auto begin = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(dispatchNext(path.routing, event));
        const auto end = std::chrono::steady_clock::now();
        allocations.stop();
        state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
        if (next % 16 == 0) path.reset();
    }
    path.reset();
    reportAllocations(state, allocations);
}

void dispatchWheel(benchmark::State& state) {
    EventPath path(Cursor::followsEvent);
    measureWorkingDispatch(state, path, {path.wheel()});
}
BENCHMARK(dispatchWheel)->UseManualTime();

/// The argument is the button: 4 is bound to a key stroke, 3 is not bound.
void dispatchButton(benchmark::State& state) {
    EventPath path(Cursor::followsEvent);
    measureWorkingDispatch(state, path,
                           {path.button(CGEventType::otherMouseDown, state.range(0)),
                            path.button(CGEventType::otherMouseUp, state.range(0))});
}
BENCHMARK(dispatchButton)->ArgName("button")->Arg(3)->Arg(4)->UseManualTime();

/// How many times a dispatch with an empty handler one of motion takes: both in turns, so that what
/// else the machine does strikes both, and the median of the turns.
void motionOverEmptyHandler(benchmark::State& state) {
    constexpr int batch = 2000;
    EventPath path(Cursor::followsEvent);
    CGEvent event = path.motion();
    const auto timeOf = [&](EventTapController& tap) {
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < batch; ++i)
            benchmark::DoNotOptimize(dispatchNext(tap, event));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    std::vector<double> ratios;
    for (auto _ : state) {
        const double empty = timeOf(path.empty);
        ratios.push_back(timeOf(path.routing) / empty);
    }
    std::ranges::sort(ratios);
    state.counters["ratio"] = ratios[ratios.size() / 2];
}
BENCHMARK(motionOverEmptyHandler)->Iterations(501);

}  // namespace
}  // namespace tessara
