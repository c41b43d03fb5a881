#pragma once

#include <cstdint>
#include <memory>

#include "TessaraCore/ScrollInput.h"
#include "TessaraCore/ScrollSettings.h"

namespace tessara {

class Dispatcher;
class EventPosting;
struct ScrollPlan;

/// What is to become of a wheel event.
enum class ScrollDisposition : std::uint8_t {
    /// It goes on as it came.
    passThrough,
    /// It is swallowed; a glide takes its place, or nothing does.
    suppress
};

/// Plays the glides: turns the plans of a `ScrollTransformer` into scroll steps, posted in time.
///
/// It answers at once whether a wheel event is swallowed, and posts the steps on a queue of its
/// own, "ai.tessara.scroll". A click on a running glide takes it over: the transformer is told how
/// many pixels have really been posted, so that none is lost or played twice. Whatever stops a
/// glide, an application that saw a gesture begin also sees it end. What a click becomes is not
/// decided here but by the transformer.
///
/// Scheduled steps cannot be withdrawn. Those of a plan that was taken over or reset fire as empty
/// work. Steps that are still scheduled when the pipeline is destroyed do nothing; `reset` it
/// first, and an open gesture is ended.
///
/// Plans go by the times of their events, and steps by the moment of their scheduling. The two fit
/// as long as all events take about as long to get here. Around the end of a glide, where the next
/// event decides whether it still runs, one that was held up for longer than a frame can set two
/// gestures against each other: the end of the former comes after the beginning of the latter, or
/// the latter goes on with a gesture that has just been closed. Every gesture is ended all the
/// same.
///
/// All operations may be called from any thread, and none waits for the sink except `drain`.
class ScrollPipeline {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        /// Inputs that became a plan. Grows together with `plansScheduled`.
        std::int64_t inputsTransformed = 0;
        /// Inputs that go on as they came.
        std::int64_t inputsPassedThrough = 0;
        /// Inputs swallowed with nothing to play.
        std::int64_t inputsIgnored = 0;
        /// Plans whose steps were put on the queue.
        std::int64_t plansScheduled = 0;
        /// Plans with steps left that a later one took over.
        std::int64_t plansSuperseded = 0;
        /// Steps handed to the sink, the ends that a reset adds left out.
        std::int64_t stepsPosted = 0;
        /// Steps still to fire at each moment their plan was cancelled. A reset counts those of
        /// plans that had been taken over before once more: it is a counter and no balance.
        std::int64_t stepsCancelled = 0;
        /// Gestures, one per axis, ended by a reset.
        std::int64_t gesturesForceClosed = 0;
        /// The way of all steps handed to the sink, in pixels, whatever their direction.
        std::int64_t pixelsPosted = 0;

        bool operator==(const Metrics&) const = default;
    };

    /// Begins at rest. `poster` takes the steps and is held until the last of them has fired;
    /// `dispatcher` makes the queue and is not used afterwards.
    ScrollPipeline(const ScrollSettings& settings, std::shared_ptr<EventPosting> poster,
                   Dispatcher& dispatcher);
    ~ScrollPipeline();

    ScrollPipeline(const ScrollPipeline&) = delete;
    ScrollPipeline& operator=(const ScrollPipeline&) = delete;

    /// As they were given, not brought into their ranges.
    [[nodiscard]] ScrollSettings settings() const;
    /// Takes effect at the next event. Glides that run are played to their end as they were made.
    void setSettings(const ScrollSettings& settings);

    /// Takes one wheel event. On the tap thread: it computes the plan, schedules its steps and
    /// returns. An event that the transformer took is swallowed, also when it came to nothing.
    ///
    /// The steps are due at their offsets from now, each rounded down to a whole nanosecond; the
    /// work grows with their number, 32 with the default settings and 5003 at most. It allocates
    /// what it enqueues. Time in the input is in milliseconds on the dispatcher's clock.
    [[nodiscard]] ScrollDisposition handle(const ScrollInput& input);

    /// Stops all glides and forgets the streaks, for when the world changes under them. Each
    /// gesture that is open is ended by one further step of 0 pixels, posted on the queue with the
    /// modifiers of its last step and ahead of every later glide. It does not wait for that;
    /// `drain` does. With no gesture open nothing is posted.
    void reset();

    /// All counters of one moment.
    [[nodiscard]] Metrics snapshotMetrics() const;
    /// Begins to count from 0; glides are not touched.
    void resetMetrics();

    /// Plans that still have steps to fire, cancelled ones included.
    [[nodiscard]] std::int64_t inFlightPlanCount() const;

    /// Waits until all that is due on the queue has run. Steps that lie ahead are not waited for.
    /// Not to be called from the sink.
    void drain();

  private:
    struct Core;

    /// Enqueues the steps of a plan, counted from now.
    void schedule(const ScrollPlan& plan);

    const std::shared_ptr<Core> core_;  // what scheduled steps hold weakly
};

}  // namespace tessara
