#pragma once

#include <functional>
#include <memory>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Calls a handler on a queue each time that a descriptor has something to read, or has ended. The
/// queue's own loop waits for it, with no thread more. It does not read, and does not own the
/// descriptor.
class ReadableWatch final {
  public:
    /// Takes what there is, or a portion of it, and says whether to go on. It may end the watch.
    using Handler = std::move_only_function<bool()>;

    /// Called on the queue. `handler` keeps the descriptor open: it lives until nobody waits for
    /// the descriptor any more.
    ReadableWatch(std::shared_ptr<DispatchQueue> queue, int descriptor, Handler handler);

    /// Any thread. No call of the handler begins after this one; the handler is destroyed on the
    /// queue.
    ~ReadableWatch();

    ReadableWatch(const ReadableWatch&) = delete;
    ReadableWatch& operator=(const ReadableWatch&) = delete;

    /// False when the system had no room for one more descriptor to wait for: the handler is never
    /// called.
    [[nodiscard]] bool isWaiting() const;

  private:
    class Wait;

    const std::shared_ptr<Wait> wait_;
};

}  // namespace tessara
