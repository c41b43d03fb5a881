#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Dispatch/Clock.h"

namespace asio {
class any_io_executor;
}

namespace tessara {

/// How soon the system should run a queue's work. A wish and never a condition: a system that
/// grants no priority runs the work all the same.
enum class QualityOfService {
    userInteractive,  ///< input and pacing: the least timer slack, a real-time class where granted
    userInitiated,    ///< work that somebody waits for
    standard,         ///< everything else
    utility,          ///< work that nobody waits for
};

/// A running timer of a queue. Destroying the handle cancels the timer.
///
/// `cancel()` may be called from any thread, more than once, and from within the timer's own
/// handler. Called on the timer's queue, no firing follows it. Called elsewhere, a firing that has
/// already begun may still be running when it returns, and none begins after that one.
class DispatchTimer {
  public:
    virtual ~DispatchTimer() = default;

    /// Ends the timer, and lets go of the handler at once or at the end of the firing that runs.
    virtual void cancel() noexcept = 0;
};

/// A serial context: everything in the program that must not run at the same time as something else
/// runs on one of these. There are two kinds behind this one interface: queues with a thread of
/// their own (`ThreadedDispatcher`) and queues in virtual time (`ManualDispatcher`).
///
/// What a queue promises:
///  1. Blocks of one queue never overlap.
///  2. Posted blocks run in the order of their posting.
///  3. A delayed block runs at its deadline or later, never earlier; `clock().now()` inside it is
///     not before the deadline.
///  4. Delayed blocks run in the order of their deadlines, those of one deadline in the order of
///     their posting.
///  5. No block runs inside the call that posts it.
///  6. Each block is run exactly once, or is destroyed unrun when its queue ends; it is destroyed
///     right after its run, before the next block begins.
///  7. A timer fires first at its first deadline and then at multiples of its interval from there,
///     never twice for one multiple; multiples missed while the queue was busy come as one firing.
///     A firing may be late by the leeway, never early.
///  8. After `cancel()` on the queue a timer does not fire again, also when it was due.
///  9. `drain()` returns when every block that was runnable when it was called has run; it does not
///     wait for deadlines that lie ahead.
/// 10. Posting is possible from every thread and from within a block, and never waits for a block
///     that is running.
/// 11. A block that throws stops the process.
///
/// A queue is shared: it runs as long as somebody holds it, be it a block that is being posted.
/// When the last holder lets go what has not yet run is destroyed.
class DispatchQueue {
  public:
    using Block = std::move_only_function<void()>;

    virtual ~DispatchQueue() = default;

    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    /// Enqueues a block. Any thread.
    virtual void post(Block block) = 0;

    /// Enqueues a block to run at `deadline`; one in the past is due at once. Any thread. A delayed
    /// block cannot be withdrawn: work that may become void checks that itself when it runs.
    virtual void postAt(TimePoint deadline, Block block) = 0;

    /// Starts a timer whose handler runs on this queue, first at `first` and then every `interval`
    /// (above zero), each time late by `leeway` at most if the system can do so. The handler is
    /// destroyed when the timer is cancelled or the queue ends, after a firing that is running. Any
    /// thread.
    [[nodiscard]] virtual std::unique_ptr<DispatchTimer> startTimer(
        TimePoint first, std::chrono::nanoseconds interval, std::chrono::nanoseconds leeway,
        std::move_only_function<void()> handler) = 0;

    /// Waits for what is runnable now (promise 9). From any thread but the queue's own context:
    /// calling it from a block of this queue stops the process.
    virtual void drain() = 0;

    /// True while a block of this queue is what the caller runs in.
    [[nodiscard]] virtual bool isCurrent() const noexcept = 0;

    /// An executor for coroutines and for Asio's own objects: what is submitted to it runs on this
    /// queue under the promises above. The executor keeps the queue alive.
    [[nodiscard]] virtual asio::any_io_executor executor() = 0;

    /// The time by which this queue's deadlines are measured.
    [[nodiscard]] virtual const Clock& clock() const noexcept = 0;

    /// The label given at construction: reverse-domain, also the thread's name as far as it fits.
    [[nodiscard]] virtual const std::string& label() const noexcept = 0;

  protected:
    DispatchQueue() = default;
};

/// Makes the queues of one run of the program, all on one clock. Handed down from `main` or from a
/// test, so that the choice between real threads and virtual time is made in one place.
class Dispatcher {
  public:
    virtual ~Dispatcher() = default;

    /// Makes a queue that runs from now on until its last holder lets go. Labels need not be
    /// unique. Any thread.
    [[nodiscard]] virtual std::shared_ptr<DispatchQueue> makeQueue(std::string label,
                                                                   QualityOfService quality) = 0;

    /// The clock of all its queues. It lives as long as the dispatcher.
    [[nodiscard]] virtual const Clock& clock() const noexcept = 0;
};

}  // namespace tessara
