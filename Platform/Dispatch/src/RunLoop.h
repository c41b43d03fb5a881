#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>

#include "Agenda.h"
#include "DeadlineTimer.h"
#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {

/// The threads whose queues ended within one of their own blocks, and which therefore nobody could
/// join. They are on their last block.
class DepartingThreads {
  public:
    /// Detaches `thread`, which is the calling one.
    void add(std::thread thread);

    /// The calling thread's last act; nothing if it was not added.
    void remove() noexcept;

    /// Waits for all of them but the calling one.
    void await();

  private:
    Mutex mutex_;
    std::condition_variable_any changed_;
    std::vector<std::thread::id> threads_ TESSARA_GUARDED_BY(mutex_);
};

/// One thread that runs one queue's agenda, and waits for the file descriptors of an `io_context`
/// in the same loop. The queue owns it; the thread and the queue's timers share it.
class RunLoop final : public std::enable_shared_from_this<RunLoop> {
  public:
    RunLoop(std::shared_ptr<DepartingThreads> departing, QualityOfService quality);

    void start(std::string label);

    /// Ends the thread after the block that it is running, and waits for it unless this is it. What
    /// has not yet run is destroyed on the thread.
    void end();

    /// Takes on a block that is due now.
    void addNow(DispatchQueue::Block block);

    /// Takes on a delayed block or a timer. Does not wake the thread before the deadline.
    template <typename Work>
    void add(TimePoint deadline, Work work) {
        MutexLock lock(mutex_);
        agenda_.add({deadline, sequence_++}, std::move(work));
        if (deadline < wakeUp_) setWakeUp(agenda_.wakeUpTime());
    }

    void withdraw(const RepeatingTimer& timer);

    [[nodiscard]] bool isCurrent() const noexcept;
    [[nodiscard]] asio::io_context& context() noexcept { return io_; }
    [[nodiscard]] const Clock& clock() const noexcept { return clock_; }

  private:
    /// What `wakeUp_` is while the loop is at work, or has been told to go to work.
    static constexpr TimePoint atWork = TimePoint::min();

    void wake();
    void run();
    void runFromTimer();
    [[nodiscard]] bool beginsWithNothingDue();
    void runNow(DispatchQueue::Block block) noexcept;
    void runDue() noexcept;
    [[nodiscard]] std::optional<DispatchQueue::Block> takeDue();
    [[nodiscard]] bool isAnyDue() const TESSARA_REQUIRES(mutex_);
    void setWakeUp(TimePoint moment) TESSARA_REQUIRES(mutex_);

    const SystemClock clock_;
    const std::shared_ptr<DepartingThreads> departing_;
    const QualityOfService quality_;
    const std::chrono::nanoseconds lead_;  // by how much the thread wakes ahead of a deadline
    std::thread thread_;                   // set by start(), let go by end()
    std::thread::id threadID_;  // constant after start(): the thread's, also when it ended

    asio::io_context io_{1};  // one thread runs it
    const asio::executor_work_guard<asio::io_context::executor_type> work_{io_.get_executor()};

    Mutex mutex_;
    DeadlineTimer timer_{io_};  // set under the lock, waited for on the loop's thread
    TimePoint timerIsSetTo_ TESSARA_GUARDED_BY(mutex_) = TimePoint::max();
    bool ended_ TESSARA_GUARDED_BY(mutex_) = false;
    std::uint64_t sequence_ TESSARA_GUARDED_BY(mutex_) = 0;
    Agenda agenda_ TESSARA_GUARDED_BY(mutex_);
    /// When the loop looks at the agenda next without being told.
    TimePoint wakeUp_ TESSARA_GUARDED_BY(mutex_) = TimePoint::max();
};

}  // namespace tessara
