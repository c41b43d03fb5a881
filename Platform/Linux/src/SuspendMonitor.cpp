#include "Platform/Linux/SuspendMonitor.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <sys/timerfd.h>
#include <unistd.h>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {
namespace {

std::chrono::nanoseconds read(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::chrono::nanoseconds sleptInAll() {
    // In this order, so that an interruption between the two does not look like a sleep.
    const auto withSleep = read(CLOCK_BOOTTIME);
    return withSleep - read(CLOCK_MONOTONIC);
}

}  // namespace

std::optional<std::chrono::nanoseconds> SleepDetector::note(std::chrono::nanoseconds slept) {
    if (slept - known_ < shortestSleep) return std::nullopt;
    return slept - std::exchange(known_, slept);
}

class SuspendMonitor::Watch : public std::enable_shared_from_this<Watch> {
  public:
    explicit Watch(std::shared_ptr<DispatchQueue> queue)
        : queue_(std::move(queue)), timer_(queue_->executor()), detector_(sleptInAll()) {}

    void start() {
        queue_->post([self = shared_from_this()] { self->open(); });
    }

    void stop() {
        queue_->post([self = shared_from_this()] {
            asio::error_code ignored;
            self->timer_.close(ignored);
        });
    }

    EventStream<std::chrono::nanoseconds> wakings;

  private:
    void open() {
        const int timer = ::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
        if (timer < 0) return;
        asio::error_code refused;
        timer_.assign(timer, refused);
        if (refused) {
            ::close(timer);
            return;
        }
        wait();
    }

    /// Sets the timer to a day that never comes: only its being cancelled is of interest.
    void wait() {
        itimerspec never{};
        never.it_value.tv_sec = std::numeric_limits<std::int32_t>::max();
        constexpr int flags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
        if (::timerfd_settime(timer_.native_handle(), flags, &never, nullptr) != 0 &&
            errno != ECANCELED) {
            return;
        }
        timer_.async_wait(asio::posix::descriptor_base::wait_read,
                          [weak = weak_from_this()](const asio::error_code& error) {
                              const auto self = weak.lock();
                              if (!error && self) self->timeHasJumped();
                          });
    }

    void timeHasJumped() {
        std::uint64_t expirations = 0;
        [[maybe_unused]] const auto size =
            ::read(timer_.native_handle(), &expirations, sizeof expirations);
        if (const auto slept = detector_.note(sleptInAll())) wakings.emit(*slept);
        wait();
    }

    const std::shared_ptr<DispatchQueue> queue_;
    // Owned by the queue.
    asio::posix::stream_descriptor timer_;
    SleepDetector detector_;
};

SuspendMonitor::SuspendMonitor(std::shared_ptr<DispatchQueue> queue)
    : watch_(std::make_shared<Watch>(std::move(queue))) {
    watch_->start();
}

SuspendMonitor::~SuspendMonitor() {
    watch_->stop();
}

EventStream<std::chrono::nanoseconds>& SuspendMonitor::wakings() {
    return watch_->wakings;
}

}  // namespace tessara
