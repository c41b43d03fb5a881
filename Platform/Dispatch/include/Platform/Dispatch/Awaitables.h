#pragma once

#include <memory>

#include <asio/awaitable.hpp>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Suspends the calling coroutine until `deadline` on the queue's clock, then resumes it on the
/// queue. It stands in for `asio::steady_timer`, which knows only the system's clock.
///
/// Returns true at the deadline and false when the coroutine's cancellation slot was signalled
/// before it (`asio::cancellation_type::terminal` or `partial`); it does not throw.
asio::awaitable<bool> sleepUntil(std::shared_ptr<DispatchQueue> queue, TimePoint deadline);

/// Suspends the calling coroutine and resumes it on `queue`, behind what is posted there already.
asio::awaitable<void> resumeOn(std::shared_ptr<DispatchQueue> queue);

}  // namespace tessara
