#pragma once

#include <memory>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// The queue on which one link writes, and whether anything of it is still to be written. On the
/// run loop's queue.
///
/// Whoever lets go of a queue waits for its thread, and a write may hold that for as long as the
/// device pleases: a send queue is let go of only when it is idle.
class HIDPPSendQueue {
  public:
    explicit HIDPPSendQueue(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

    /// Runs `write` behind those that were posted before.
    void post(DispatchQueue::Block write) {
        queue_->post(
            [write = std::move(write), unfinished = unfinished_]() mutable { std::move(write)(); });
    }

    /// True when every write has returned. It stays true until the next `post`.
    bool isIdle() const { return unfinished_.use_count() == 1; }

  private:
    const std::shared_ptr<DispatchQueue> queue_;
    /// Held here and by each write from its posting to its end.
    const std::shared_ptr<const int> unfinished_ = std::make_shared<const int>();
};

}  // namespace tessara
