#pragma once

#include <memory>
#include <string>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Queues with a thread of their own each, on a real clock: what the product runs on.
///
/// Each queue is an Asio `io_context` run by one thread named after the label, so that file
/// descriptors can be waited for in the same loop through `DispatchQueue::executor()`. A queue of
/// the user-interactive class asks for a timer slack of 1 ns and for a real-time scheduling class;
/// where the system grants neither the queue works as well as it can, and nothing reports an error.
///
/// The thread ends when the queue's last holder lets go; should that be a block of the queue
/// itself, the thread ends after that block.
class ThreadedDispatcher final : public Dispatcher {
  public:
    /// Runs on the system's monotonic clock.
    ThreadedDispatcher();

    [[nodiscard]] std::shared_ptr<DispatchQueue> makeQueue(std::string label,
                                                           QualityOfService quality) override;
    [[nodiscard]] const Clock& clock() const noexcept override;

  private:
    class Queue;
    class Timer;
    SystemClock clock_;
};

}  // namespace tessara
