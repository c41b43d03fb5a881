#include "Platform/Linux/SuspendMonitor.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <utility>

#include <sys/timerfd.h>
#include <unistd.h>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Linux/FileDescriptor.h"
#include "ReadableWatch.h"

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
        : queue_(std::move(queue)), detector_(sleptInAll()) {}

    void start() {
        queue_->post([self = shared_from_this()] { self->listen(); });
    }

    void stop() {
        queue_->post([self = shared_from_this()] { self->readable_.reset(); });
    }

    EventStream<std::chrono::nanoseconds> wakings;

  private:
    void listen() {
        timer_.reset(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC));
        if (!timer_ || !setTimer()) return;
        readable_.emplace(queue_, timer_.get(), [weak = weak_from_this()] {
            const auto self = weak.lock();
            return self && self->timeHasJumped();
        });
    }

    /// Sets it to a day that never comes: only its being cancelled is of interest.
    bool setTimer() {
        itimerspec never{};
        never.it_value.tv_sec = std::numeric_limits<std::int32_t>::max();
        constexpr int flags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
        // The timer is set also when the call tells of a jump that came before it.
        return ::timerfd_settime(timer_.get(), flags, &never, nullptr) == 0 || errno == ECANCELED;
    }

    bool timeHasJumped() {
        std::uint64_t expirations = 0;
        [[maybe_unused]] const auto size = ::read(timer_.get(), &expirations, sizeof expirations);
        const bool isSet = setTimer();
        if (const auto slept = detector_.note(sleptInAll())) wakings.emit(*slept);
        return isSet;
    }

    const std::shared_ptr<DispatchQueue> queue_;
    // Owned by the queue.
    FileDescriptor timer_;
    std::optional<ReadableWatch> readable_;
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
