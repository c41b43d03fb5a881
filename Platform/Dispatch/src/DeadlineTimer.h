#pragma once

#include <asio/io_context.hpp>
#include <asio/posix/basic_stream_descriptor.hpp>

#include "Platform/Dispatch/Clock.h"

namespace tessara {

/// Wakes an `io_context` at a moment of the system's clock, to the nanosecond.
///
/// Asio's own timers stand on the same kernel object, but set it in whole microseconds, rounded
/// down, so that nearly each deadline wakes the loop twice: just before it, and again. They can be
/// set by the loop's thread alone, too, which then has to be woken to be told of a deadline.
class DeadlineTimer final {
  public:
    /// Throws `std::system_error` when the system has no descriptor to give.
    explicit DeadlineTimer(asio::io_context& io);

    /// Any thread, one at a time: replaces the moment that was set, and takes back a wake-up for it
    /// which the loop has not yet seen. `TimePoint::max()` is never.
    void set(TimePoint moment) noexcept;

    /// On the loop's thread: calls `handler` each time that the moment comes. It has to set the
    /// next one, or never, before it returns.
    template <typename Handler>
    void onExpiry(Handler handler) {
        descriptor_.async_wait(Descriptor::wait_read,
                               [this, handler](const asio::error_code& error) {
                                   if (error) return;
                                   handler();
                                   onExpiry(handler);
                               });
    }

  private:
    using Descriptor = asio::posix::basic_stream_descriptor<asio::io_context::executor_type>;

    Descriptor descriptor_;  // after construction, waited for by the loop alone
    const int fileDescriptor_;
};

}  // namespace tessara
