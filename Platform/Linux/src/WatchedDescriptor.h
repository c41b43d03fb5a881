#pragma once

#include <functional>
#include <memory>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/posix/stream_descriptor.hpp>

namespace tessara {

/// Tells a queue each time that there is something to read from a descriptor that is somebody
/// else's. Made and destroyed on the queue while the descriptor is open; nothing is told after.
class WatchedDescriptor {
  public:
    /// Calls `onReadable` on the executor's queue until it returns false. It does not destroy this.
    WatchedDescriptor(const asio::any_io_executor& executor, int number,
                      std::move_only_function<bool()> onReadable)
        : descriptor_(executor, number), onReadable_(std::move(onReadable)) {
        wait();
    }
    ~WatchedDescriptor() { descriptor_.release(); }

    WatchedDescriptor(const WatchedDescriptor&) = delete;
    WatchedDescriptor& operator=(const WatchedDescriptor&) = delete;

  private:
    void wait() {
        // A wait that was over, but not yet told, when this was destroyed has no error to show.
        descriptor_.async_wait(
            asio::posix::descriptor_base::wait_read,
            [this, weakLife = std::weak_ptr(life_)](const asio::error_code& error) {
                if (!error && !weakLife.expired() && onReadable_()) wait();
            });
    }

    asio::posix::stream_descriptor descriptor_;
    std::move_only_function<bool()> onReadable_;
    const std::shared_ptr<char> life_ = std::make_shared<char>();
};

}  // namespace tessara
