#pragma once

#include <memory>
#include <string>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// The queue whose blocks Qt's event loop runs, on the thread that makes it: the main executor of a
/// program that has Qt's loop anyway. It promises what every `DispatchQueue` does, on the system's
/// monotonic clock; deadlines are met to the millisecond, which is what Qt's timers keep to.
///
/// Nothing runs while the loop does not. A loop within a block (a dialog that waits) runs no
/// further blocks: they come when that block has ended. The thread is the queue's own context in
/// its widest sense: timers cancelled anywhere on it do not fire again. `isCurrent()` says whether
/// one of the blocks runs; `drain()` is also possible on the thread itself, outside of a block, and
/// runs there what is due.
///
/// It is not for work that blocks or lasts: the interface stands still meanwhile.
///
/// A `QCoreApplication` is there before the queue is made. The queue itself may be let go on any
/// thread.
class QtMainQueue final : public DispatchQueue, public std::enable_shared_from_this<QtMainQueue> {
  public:
    /// Made on the thread whose event loop is to run it. The label is for messages alone.
    explicit QtMainQueue(std::string label);
    ~QtMainQueue() override;

    void post(Block block) override;
    void postAt(TimePoint deadline, Block block) override;
    [[nodiscard]] std::unique_ptr<DispatchTimer> startTimer(
        TimePoint first, std::chrono::nanoseconds interval, std::chrono::nanoseconds leeway,
        std::move_only_function<void()> handler) override;
    void drain() override;
    [[nodiscard]] bool isCurrent() const noexcept override;
    [[nodiscard]] asio::any_io_executor executor() override;
    [[nodiscard]] const Clock& clock() const noexcept override;
    [[nodiscard]] const std::string& label() const noexcept override { return label_; }

  private:
    class Loop;

    const std::string label_;
    const std::shared_ptr<Loop> loop_;
};

}  // namespace tessara
