#pragma once

#include <memory>
#include <string>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

class DepartingThreads;

/// Queues with a thread of their own each, on a real clock: what the product runs on.
///
/// Each queue is an Asio `io_context` run by one thread named after the label, so that file
/// descriptors can be waited for in the same loop through `DispatchQueue::executor()`. A queue of
/// the user-interactive class asks for a timer slack of 1 ns and for a real-time scheduling class;
/// where the system grants neither the queue works as well as it can, and nothing reports an error.
///
/// The thread ends when the queue's last holder lets go, after the block that it is running; the
/// last holder waits for that, so it must not hold what the block waits for. Should a block of the
/// queue itself be the last holder, the thread ends after that block and the dispatcher's
/// destructor waits for it. What has not yet run is destroyed on the thread. Queues may outlive the
/// dispatcher.
class ThreadedDispatcher final : public Dispatcher {
  public:
    /// Runs on the system's monotonic clock.
    ThreadedDispatcher();
    ~ThreadedDispatcher() override;

    /// Starts the queue's thread. Throws `std::system_error` when the system has none to give.
    [[nodiscard]] std::shared_ptr<DispatchQueue> makeQueue(std::string label,
                                                           QualityOfService quality) override;
    [[nodiscard]] const Clock& clock() const noexcept override;

  private:
    class Queue;

    const SystemClock clock_;
    const std::shared_ptr<DepartingThreads> departing_;
};

}  // namespace tessara
