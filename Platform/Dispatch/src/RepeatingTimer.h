#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {

/// The schedule and the handler of one timer, shared between its handle and the agenda it is on.
class RepeatingTimer final {
  public:
    using Handler = std::move_only_function<void()>;

    RepeatingTimer(std::chrono::nanoseconds interval, std::chrono::nanoseconds leeway,
                   Handler handler);

    /// The first multiple of the interval, counted from `deadline`, that lies after `now`. `now` is
    /// not before `deadline`.
    [[nodiscard]] TimePoint deadlineAfter(TimePoint deadline, TimePoint now) const noexcept;

    [[nodiscard]] std::chrono::nanoseconds leeway() const noexcept { return leeway_; }

    /// Runs the handler, unless it was released.
    void fire();

    /// Lets go of the handler: at once, or at the end of the firing that is running.
    void release() noexcept;

  private:
    const std::chrono::nanoseconds interval_;
    const std::chrono::nanoseconds leeway_;
    Mutex mutex_;
    std::shared_ptr<Handler> handler_ TESSARA_GUARDED_BY(mutex_);
};

/// The handle of a timer that is on some queue's agenda.
class RepeatingTimerHandle final : public DispatchTimer {
  public:
    /// `withdraw` takes the timer off its agenda; called from any thread, more than once.
    using Withdraw = std::move_only_function<void(const RepeatingTimer&) noexcept>;

    RepeatingTimerHandle(std::shared_ptr<RepeatingTimer> timer, Withdraw withdraw)
        : timer_(std::move(timer)), withdraw_(std::move(withdraw)) {}
    ~RepeatingTimerHandle() override { cancel(); }

    RepeatingTimerHandle(const RepeatingTimerHandle&) = delete;
    RepeatingTimerHandle& operator=(const RepeatingTimerHandle&) = delete;

    void cancel() noexcept override {
        withdraw_(*timer_);
        timer_->release();
    }

  private:
    const std::shared_ptr<RepeatingTimer> timer_;
    Withdraw withdraw_;
};

}  // namespace tessara
