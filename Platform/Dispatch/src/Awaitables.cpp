#include "Platform/Dispatch/Awaitables.h"

#include <functional>
#include <utility>

#include <asio/associated_cancellation_slot.hpp>
#include <asio/async_result.hpp>
#include <asio/cancellation_type.hpp>
#include <asio/use_awaitable.hpp>

#include "Platform/Dispatch/Mutex.h"

namespace tessara {
namespace {

/// One suspension of `sleepUntil`. It ends once: by its timer or by cancellation, which may come
/// from two threads when a coroutine sleeps on another queue than its own.
class Sleep final : public std::enable_shared_from_this<Sleep> {
  public:
    using Resume = std::move_only_function<void(bool)>;

    Sleep(std::shared_ptr<DispatchQueue> queue, Resume resume)
        : queue_(std::move(queue)), resume_(std::move(resume)) {}

    void begin(TimePoint deadline) {
        constexpr auto onlyOnce = std::chrono::nanoseconds::max();
        auto timer = queue_->startTimer(deadline, onlyOnce, {}, [self = shared_from_this()] {
            if (auto resume = self->end()) resume(true);
        });
        MutexLock lock(mutex_);
        if (resume_) timer_.swap(timer);
    }

    void cancel() {
        if (auto resume = end()) {
            queue_->post([resume = std::move(resume)]() mutable { resume(false); });
        }
    }

  private:
    /// Gives the right to resume to the first who asks.
    [[nodiscard]] Resume end() {
        std::unique_ptr<DispatchTimer> timer;  // destroyed once the lock is let go
        MutexLock lock(mutex_);
        timer.swap(timer_);
        return std::exchange(resume_, nullptr);
    }

    const std::shared_ptr<DispatchQueue> queue_;
    Mutex mutex_;
    Resume resume_ TESSARA_GUARDED_BY(mutex_);
    std::unique_ptr<DispatchTimer> timer_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace

// The coroutine may be resumed and gone before its initiation returns, when it resumes on another
// thread: an initiation uses nothing but its own locals once it has handed the handler on.

asio::awaitable<bool> sleepUntil(std::shared_ptr<DispatchQueue> queue, TimePoint deadline) {
    const auto initiate = [queue = std::move(queue), deadline](auto handler) {
        const auto until = deadline;
        auto slot = asio::get_associated_cancellation_slot(handler);
        const auto sleep = std::make_shared<Sleep>(queue, std::move(handler));
        if (slot.is_connected()) {
            slot.assign([weakSleep = std::weak_ptr(sleep)](asio::cancellation_type type) {
                constexpr auto ends =
                    asio::cancellation_type::terminal | asio::cancellation_type::partial;
                if ((type & ends) == asio::cancellation_type::none) return;
                if (const auto asleep = weakSleep.lock()) asleep->cancel();
            });
        }
        sleep->begin(until);
    };
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<>, void(bool)>(
        initiate, asio::use_awaitable);
}

asio::awaitable<void> resumeOn(std::shared_ptr<DispatchQueue> queue) {
    const auto initiate = [queue = std::move(queue)](auto handler) {
        // The handler, once posted, may end the coroutine and with it `queue`.
        const auto target = queue;  // NOLINT(performance-unnecessary-copy-initialization)
        target->post(std::move(handler));
    };
    co_await asio::async_initiate<const asio::use_awaitable_t<>, void()>(initiate,
                                                                         asio::use_awaitable);
}

void RethrowException::operator()(std::exception_ptr error) const {
    if (error) std::rethrow_exception(std::move(error));
}

}  // namespace tessara
