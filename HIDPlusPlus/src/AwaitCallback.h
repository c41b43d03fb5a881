#pragma once

#include <memory>
#include <utility>

#include <asio/async_result.hpp>
#include <asio/awaitable.hpp>
#include <asio/use_awaitable.hpp>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Suspends the calling coroutine until somebody calls back with a value, and resumes it on
/// `queue`. `start(resume)` is called at once; `resume(value)` is called once, by anyone, on any
/// thread. The wait cannot be cancelled.
///
/// Keep `start` in a variable of the coroutine and move it in: GCC 12 destroys temporaries of an
/// awaited expression twice.
template <typename T, typename Start>
asio::awaitable<T> awaitCallback(std::shared_ptr<DispatchQueue> queue, Start start) {
    return asio::async_initiate<const asio::use_awaitable_t<>, void(T)>(
        [](auto handler, std::shared_ptr<DispatchQueue> target, Start begin) {
            begin([handler = std::move(handler), target = std::move(target)](T value) mutable {
                auto& onto = *target;
                onto.post([handler = std::move(handler), value = std::move(value)]() mutable {
                    std::move(handler)(std::move(value));
                });
            });
        },
        asio::use_awaitable, std::move(queue), std::move(start));
}

}  // namespace tessara
