#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "TessaraCore/ButtonIntent.h"

namespace tessara {

class Dispatcher;
class EventPosting;
class MacroSideEffects;

/// Carries out what the button router asks for: posts keys and buttons, waits out delays, runs
/// repeats, and hands changes of resolution, applications and shortcuts to the outside. What a
/// button means is not decided here.
///
/// All of it happens on a queue of its own, "ai.tessara.macro"; a delay leaves the queue free. A
/// reset may come at any time, in the middle of a macro too, and leaves no key and no button down:
/// work belongs to the epoch in which it was asked for and stops when the epoch has passed, and
/// what the executor pressed it releases.
///
/// Reset and drain it before it is destroyed. Work that is then still scheduled does nothing.
///
/// All operations may be called from any thread, and none waits for the sink except `drain`.
class MacroExecutor {
  public:
    /// What happened since the start or the last `resetMetrics`.
    struct Metrics {
        /// Intents carried out, delays not counted.
        std::int64_t intentsExecuted = 0;
        /// Presses and releases of keys among them.
        std::int64_t keysPosted = 0;
        /// Presses and releases of mouse buttons among them.
        std::int64_t mouseButtonsPosted = 0;
        /// Repeats that began. One that takes the place of another counts, too.
        std::int64_t repeatsStarted = 0;
        /// Repeats ended by an intent or by a reset, but not those that were replaced.
        std::int64_t repeatsStopped = 0;
        /// Times that a repeat played its step; the press that began it played it once before.
        std::int64_t repeatIterations = 0;
        /// Changes of the resolution among the intents.
        std::int64_t dpiRequests = 0;
        /// Calls of `reset`.
        std::int64_t resets = 0;
        /// Intents dropped because their epoch had passed, delays among them.
        std::int64_t intentsAbandoned = 0;
        /// Keys that a reset released by itself, and not by its list.
        std::int64_t keysForceReleased = 0;
        /// Mouse buttons that a reset released by itself, and not by its list.
        std::int64_t mouseButtonsForceReleased = 0;

        bool operator==(const Metrics&) const = default;
    };

    /// Begins at rest. `poster` takes keys and buttons, `sideEffects` everything else; both are
    /// called on the queue only. `dispatcher` makes the queue and is not used afterwards.
    MacroExecutor(std::shared_ptr<EventPosting> poster,
                  std::shared_ptr<MacroSideEffects> sideEffects, Dispatcher& dispatcher);
    ~MacroExecutor();

    MacroExecutor(const MacroExecutor&) = delete;
    MacroExecutor& operator=(const MacroExecutor&) = delete;

    /// The present epoch; each reset begins a new one. Whoever decides on a list takes it
    /// beforehand, so that a reset in between ends the list too.
    [[nodiscard]] std::uint64_t epoch() const;

    /// Plays a list of intents in order, behind what is being played, unless `ofEpoch` has passed.
    /// Delays wait before what follows them; other lists go on meanwhile. A delay that does not fit
    /// the clock stops the process.
    void execute(std::vector<ButtonIntent> intents, std::uint64_t ofEpoch);

    /// Plays a list in the present epoch.
    void execute(std::vector<ButtonIntent> intents) { execute(std::move(intents), epoch()); }

    /// Ends all that is being played, releases what is held, then plays `thenExecuting`. Keys and
    /// buttons that this list itself releases are left to it. The releases go out newest first.
    ///
    /// When the list of an earlier reset has not been played yet, its releases of buttons that the
    /// system's own events pressed, and its change of the resolution, go out ahead of this list:
    /// nobody else knows of them.
    void reset(std::vector<ButtonIntent> thenExecuting);

    /// Ends all repeats. What is held stays held, and lists go on, in the same epoch.
    void stopAllRepeats();

    /// Waits until all that is due on the queue has run. Not to be called from the sink or a side
    /// effect.
    void drain();

    /// All counters of one moment.
    [[nodiscard]] Metrics snapshotMetrics() const;
    /// Begins to count from 0.
    void resetMetrics();

    /// Repeats that are running.
    [[nodiscard]] std::int64_t activeRepeatCount() const;
    /// Keys and buttons that the executor has pressed and not yet released.
    [[nodiscard]] std::int64_t heldKeyCount() const;
    [[nodiscard]] std::int64_t heldMouseButtonCount() const;

  private:
    struct Core;
    const std::shared_ptr<Core> core_;  // what scheduled work holds weakly
};

}  // namespace tessara
