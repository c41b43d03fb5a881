#include "ReadableWatch.h"

#include <atomic>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/posix/stream_descriptor.hpp>

namespace tessara {

/// Shared by the watch and by the wait that is under way, which outlives it by a moment.
class ReadableWatch::Wait final : public std::enable_shared_from_this<Wait> {
  public:
    Wait(std::shared_ptr<DispatchQueue> queue, Handler handler)
        : queue_(std::move(queue)),
          stream_(queue_->executor()),
          handler_(std::make_shared<Handler>(std::move(handler))) {}

    ~Wait() { letGo(); }  // of a queue that has ended before it could

    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    bool begin(int descriptor) {
        asio::error_code error;
        stream_.assign(descriptor, error);
        if (error) return false;
        next();
        return true;
    }

    [[nodiscard]] bool isOpen() const { return stream_.is_open(); }

    void end() {
        hasEnded_ = true;
        if (queue_->isCurrent()) {
            letGo();
        } else {
            queue_->post([self = shared_from_this()] { self->letGo(); });
        }
    }

  private:
    void next() {
        stream_.async_wait(
            asio::posix::stream_descriptor::wait_read,
            [self = shared_from_this()](const asio::error_code& error) { self->ready(error); });
    }

    void ready(const asio::error_code& error) {
        if (error || hasEnded_) return;
        const auto handler = handler_;  // it may end the watch, and with it itself
        if ((*handler)() && !hasEnded_) next();
    }

    void letGo() {
        if (stream_.is_open()) stream_.release();
        handler_ = nullptr;
    }

    const std::shared_ptr<DispatchQueue> queue_;
    asio::posix::stream_descriptor stream_;  // owned by the queue, as is the handler
    std::shared_ptr<Handler> handler_;
    std::atomic<bool> hasEnded_{false};
};

ReadableWatch::ReadableWatch(std::shared_ptr<DispatchQueue> queue, int descriptor, Handler handler)
    : wait_(std::make_shared<Wait>(std::move(queue), std::move(handler))) {
    wait_->begin(descriptor);
}

ReadableWatch::~ReadableWatch() {
    wait_->end();
}

bool ReadableWatch::isWaiting() const {
    return wait_->isOpen();
}

}  // namespace tessara
