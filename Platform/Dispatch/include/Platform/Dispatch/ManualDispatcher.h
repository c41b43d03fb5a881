#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// All queues of a run on one virtual clock and on the caller's thread: nothing runs until the
/// owner says so, and every run is the same. It is what tests and replays run the program on.
///
/// Over all its queues together, blocks run by deadline and those of one deadline by order of
/// posting; a block posted without delay is due at the virtual moment of its posting. A block fires
/// *at* its deadline: inside it the clock reads exactly that moment, or the later one to which the
/// clock had already been moved when it was posted. `drain()` of a queue runs that queue's runnable
/// blocks on the spot.
///
/// One thread only, the one that makes it: whatever runs blocks stops the process when it is called
/// elsewhere, or, `drain()` of another queue excepted, from within a block. Posting, and starting
/// and cancelling timers, is possible from every thread; what is posted so runs when the owner next
/// runs something.
///
/// When it is destroyed and blocks have never run, whether they are still queued or went with their
/// queue, and nobody said `discard()`, it calls the leftover handler with a sentence that names the
/// queues. Without a handler it stops the process. Live timers are not counted as leftovers: their
/// owners cancel them. A queue that outlives the dispatcher takes nothing on any more.
class ManualDispatcher final : public Dispatcher {
  public:
    using LeftoverHandler = std::function<void(const std::string&)>;

    /// Starts the clock at `start`.
    explicit ManualDispatcher(TimePoint start = TimePoint{}, LeftoverHandler onLeftover = {});
    ~ManualDispatcher() override;

    [[nodiscard]] std::shared_ptr<DispatchQueue> makeQueue(std::string label,
                                                           QualityOfService quality) override;
    [[nodiscard]] const Clock& clock() const noexcept override;

    /// The virtual moment. Any thread.
    [[nodiscard]] TimePoint now() const noexcept;

    /// Runs everything that is due now, including what that makes due, and returns how many blocks
    /// ran. Does not move the clock.
    std::size_t runReady();

    /// Moves the clock on by `duration`, stopping at each deadline on the way to run what is due
    /// there; work due exactly at the end still runs. Returns how many blocks ran, firings of
    /// timers included.
    std::size_t advance(std::chrono::nanoseconds duration);

    /// As `advance`, to a moment that is not before now.
    std::size_t advanceTo(TimePoint moment);

    /// Advances from deadline to deadline until no block is queued, but not past `limit`. Live
    /// timers do fire on the way and do not count as something to wait for. True when nothing is
    /// left. The clock stands at the last deadline run, or where it was.
    bool runUntilIdle(TimePoint limit);

    /// Blocks that have been posted and have neither run nor been destroyed; timers not counted.
    [[nodiscard]] std::size_t pendingCount() const;

    /// The earliest deadline of all queued blocks and live timers.
    [[nodiscard]] std::optional<TimePoint> nextDeadline() const;

    /// Destroys all queued blocks, unrun: says that a test means to end here. Timers stay as they
    /// are.
    void discard();

  private:
    class Core;
    class Queue;

    const std::shared_ptr<Core> core_;
    const LeftoverHandler onLeftover_;
};

}  // namespace tessara
