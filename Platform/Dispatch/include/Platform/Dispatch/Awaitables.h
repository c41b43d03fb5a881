#pragma once

#include <exception>
#include <memory>

#include <asio/awaitable.hpp>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Suspends the calling coroutine until `deadline` on the queue's clock, then resumes it on the
/// queue. It stands in for `asio::steady_timer`, which knows only the system's clock.
///
/// Returns true at the deadline and false when the coroutine's cancellation slot was signalled
/// before it (`asio::cancellation_type::terminal` or `partial`); it does not throw. Asio itself
/// throws from the next `co_await` of a coroutine that was cancelled, unless that coroutine said
/// `co_await asio::this_coro::throw_if_cancelled(false)`.
///
/// A sleep is a timer of the queue: it is not counted among its pending blocks, and nothing of it
/// is left on the queue once it was cancelled.
asio::awaitable<bool> sleepUntil(std::shared_ptr<DispatchQueue> queue, TimePoint deadline);

/// Suspends the calling coroutine and resumes it on `queue`, behind what is posted there already.
/// From there it runs on that queue until it next awaits something that resumes it elsewhere.
asio::awaitable<void> resumeOn(std::shared_ptr<DispatchQueue> queue);

/// A completion handler for `asio::co_spawn`, for coroutines that are not meant to throw: what one
/// throws leaves a block of the queue, which stops the process. (`asio::detached` would drop it.)
struct RethrowException {
    void operator()(std::exception_ptr error) const;
    void operator()(std::exception_ptr error, const auto& /*result*/) const { (*this)(error); }
};

}  // namespace tessara
