#pragma once

#include <memory>
#include <utility>

#include <asio/execution.hpp>
#include <asio/execution_context.hpp>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// What Asio needs to run its work on a queue: `execute` is `post`, always later and never in
/// place. Keeps the queue alive.
class QueueExecutor final {
  public:
    /// `context` holds the services of Asio's objects that are made with this executor. It lives at
    /// least as long as the queue.
    QueueExecutor(std::shared_ptr<DispatchQueue> queue, asio::execution_context& context) noexcept
        : queue_(std::move(queue)), context_(&context) {}

    template <typename Function>
    void execute(Function&& function) const {
        queue_->post(std::forward<Function>(function));
    }

    asio::execution_context& query(asio::execution::context_t) const noexcept { return *context_; }

    static constexpr asio::execution::blocking_t query(asio::execution::blocking_t) noexcept {
        return asio::execution::blocking.never;
    }

    bool operator==(const QueueExecutor& other) const noexcept = default;

  private:
    std::shared_ptr<DispatchQueue> queue_;
    asio::execution_context* context_;
};

}  // namespace tessara
