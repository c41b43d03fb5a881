#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Runs an action on a queue once nothing new has come for a while. A new call takes the place of
/// the one that waits, and the wait begins anew. Used and destroyed on that queue alone.
class Debouncer {
  public:
    Debouncer(std::shared_ptr<DispatchQueue> queue, std::chrono::nanoseconds delay);

    /// Runs `action` after the delay, and nothing that was given before it.
    void call(std::move_only_function<void()> action);

    [[nodiscard]] bool isPending() const { return pending_ != nullptr; }

    /// Drops what waits.
    void cancel() { pending_.reset(); }

  private:
    const std::shared_ptr<DispatchQueue> queue_;
    const std::chrono::nanoseconds delay_;
    std::unique_ptr<DispatchTimer> pending_;
};

}  // namespace tessara
