#include "Debouncer.h"

#include <utility>

#include "Platform/Dispatch/Clock.h"

namespace tessara {

Debouncer::Debouncer(std::shared_ptr<DispatchQueue> queue, std::chrono::nanoseconds delay)
    : queue_(std::move(queue)), delay_(delay) {}

void Debouncer::call(std::move_only_function<void()> action) {
    // A timer and not a delayed block: one that is cancelled wakes nobody.
    pending_ = queue_->startTimer(queue_->clock().now() + delay_, delay_, {},
                                  [this, action = std::move(action)]() mutable {
                                      pending_.reset();  // the handler lasts to its own end
                                      action();
                                  });
}

}  // namespace tessara
