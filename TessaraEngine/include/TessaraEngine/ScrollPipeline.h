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
    passThrough,  ///< it goes on as it came
    suppress      ///< it is swallowed
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
/// All operations may be called from any thread, and none waits for the sink except `drain`.
class ScrollPipeline {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        std::int64_t inputsTransformed = 0;    ///< inputs that became a plan
        std::int64_t inputsPassedThrough = 0;  ///< inputs that go on as they came
        std::int64_t inputsIgnored = 0;        ///< inputs swallowed with nothing to play
        std::int64_t plansScheduled = 0;       ///< plans to be played
        std::int64_t plansSuperseded = 0;      ///< running plans that a later one took over
        std::int64_t stepsPosted = 0;          ///< steps handed to the sink
        /// Steps still to fire at each moment their plan was cancelled. A reset counts those of
        /// plans that had been taken over before once more: it is a counter and no balance.
        std::int64_t stepsCancelled = 0;
        std::int64_t gesturesForceClosed = 0;  ///< gestures ended by a reset
        std::int64_t pixelsPosted = 0;         ///< absolute pixels of the steps handed to the sink

        bool operator==(const Metrics&) const = default;
    };

    /// `dispatcher` makes the queue and is not used afterwards.
    ScrollPipeline(const ScrollSettings& settings, std::shared_ptr<EventPosting> poster,
                   Dispatcher& dispatcher);
    ~ScrollPipeline();

    ScrollPipeline(const ScrollPipeline&) = delete;
    ScrollPipeline& operator=(const ScrollPipeline&) = delete;

    [[nodiscard]] ScrollSettings settings() const;
    /// Takes effect at the next event. Glides that run are played to their end as they were made.
    void setSettings(const ScrollSettings& settings);

    /// Takes one wheel event. On the tap thread: it computes the plan, schedules its steps and
    /// returns. An event that the transformer took is swallowed, also when it came to nothing.
    [[nodiscard]] ScrollDisposition handle(const ScrollInput& input);

    /// Stops all glides and forgets the streaks, for when the world changes under them. Each
    /// gesture that is open is ended by one further step, posted on the queue with the modifiers of
    /// its last step.
    void reset();

    [[nodiscard]] Metrics snapshotMetrics() const;
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
