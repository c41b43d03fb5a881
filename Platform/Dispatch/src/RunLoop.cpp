#include "RunLoop.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <asio/post.hpp>

#include "RepeatingTimer.h"
#include "ThreadClass.h"

namespace tessara {
namespace {

/// Blocks that run one after the other before the loop looks at its file descriptors again.
constexpr int blocksPerRound = 64;

}  // namespace

void DepartingThreads::add(std::thread thread) {
    MutexLock lock(mutex_);
    threads_.push_back(thread.get_id());
    thread.detach();
}

void DepartingThreads::remove() noexcept {
    MutexLock lock(mutex_);
    std::erase(threads_, std::this_thread::get_id());
    changed_.notify_all();
}

void DepartingThreads::await() {
    MutexLock lock(mutex_);
    const auto self = std::this_thread::get_id();
    while (std::ranges::any_of(threads_, [&](const auto& id) { return id != self; })) {
        changed_.wait(mutex_);
    }
}

RunLoop::RunLoop(std::shared_ptr<DepartingThreads> departing) : departing_(std::move(departing)) {}

void RunLoop::start(std::string label, QualityOfService quality) {
    thread_ = std::thread([self = shared_from_this(), label = std::move(label), quality]() mutable {
        adoptThreadClass(label, quality);
        self->run();
        const auto departing = self->departing_;
        self.reset();
        departing->remove();
    });
}

void RunLoop::end() {
    {
        MutexLock lock(mutex_);
        ended_ = true;
    }
    io_.stop();
    if (isCurrent()) {
        departing_->add(std::move(thread_));
    } else {
        thread_.join();
    }
}

bool RunLoop::isCurrent() const noexcept {
    return std::this_thread::get_id() == thread_.get_id();
}

void RunLoop::wake() {
    asio::post(io_, [this] { runDue(); });
}

void RunLoop::withdraw(const RepeatingTimer& timer) {
    MutexLock lock(mutex_);
    agenda_.withdraw(timer);
}

void RunLoop::run() {
    io_.run();
    Agenda neverRun;  // destroyed once the lock is let go
    {
        MutexLock lock(mutex_);
        std::swap(neverRun, agenda_);
    }
    neverRun.releaseTimers();
}

/// A block that throws ends the process here.
void RunLoop::runDue() noexcept {
    for (int i = 0; i < blocksPerRound; ++i) {
        auto step = nextStep();
        if (const auto* wakeUp = std::get_if<TimePoint>(&step)) {
            sleepUntil(*wakeUp);
            return;
        }
        std::get<DispatchQueue::Block>(step)();
    }
    wake();
}

RunLoop::Step RunLoop::nextStep() {
    MutexLock lock(mutex_);
    if (ended_ || agenda_.isEmpty()) return wakeUp_ = TimePoint::max();
    const auto now = clock_.now();
    if (agenda_.next().deadline > now) return wakeUp_ = agenda_.wakeUpTime();
    wakeUp_ = atWork;
    return agenda_.takeNext(now, sequence_++);
}

void RunLoop::sleepUntil(TimePoint wakeUp) {
    using SteadyClock = asio::steady_timer::clock_type;
    if (wakeUp == TimePoint::max()) return;
    timer_.expires_at(SteadyClock::time_point(wakeUp.time_since_epoch()));
    timer_.async_wait([this](const asio::error_code& error) {
        if (!error) runDue();
    });
}

}  // namespace tessara
