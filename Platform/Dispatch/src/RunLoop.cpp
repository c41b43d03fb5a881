#include "RunLoop.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <asio/post.hpp>

#include "LaterBy.h"
#include "RepeatingTimer.h"
#include "ThreadClass.h"

namespace tessara {
namespace {

/// Blocks that run one after the other before the loop looks at its file descriptors again.
constexpr int blocksPerRound = 64;

/// What the way from the system's wake-up through the loop to the block takes, roughly, once other
/// programs have had the processor's caches. A thread of the user-interactive class wakes earlier
/// by as much, and in the rare case that it comes too soon it spins until the deadline.
std::chrono::nanoseconds leadOf(QualityOfService quality) {
    return quality == QualityOfService::userInteractive ? std::chrono::microseconds(15)
                                                        : std::chrono::microseconds(0);
}

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

RunLoop::RunLoop(std::shared_ptr<DepartingThreads> departing, QualityOfService quality)
    : departing_(std::move(departing)), quality_(quality), lead_(leadOf(quality)) {}

void RunLoop::start(std::string label) {
    thread_ = std::thread([self = shared_from_this(), label = std::move(label)]() mutable {
        adoptThreadClass(label, self->quality_);
        self->run();
        const auto departing = self->departing_;
        self.reset();
        departing->remove();
    });
    threadID_ = thread_.get_id();
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
    return std::this_thread::get_id() == threadID_;
}

void RunLoop::addNow(DispatchQueue::Block block) {
    if (isCurrent() && beginsWithNothingDue()) {
        runNow(std::move(block));
        return;
    }
    {
        MutexLock lock(mutex_);
        agenda_.add({clock_.now(), sequence_++}, std::move(block));
        if (std::exchange(wakeUp_, atWork) == atWork) return;
    }
    wake();
}

/// The loop's own thread adds to it from a descriptor that is ready and not from a block when it is
/// not at work. It need go neither through the system once more nor, when nothing comes before what
/// it adds, through the agenda.
bool RunLoop::beginsWithNothingDue() {
    MutexLock lock(mutex_);
    if (wakeUp_ == atWork || ended_ || isAnyDue()) return false;
    wakeUp_ = atWork;
    return true;
}

void RunLoop::wake() {
    asio::post(io_, [this] { runDue(); });
}

void RunLoop::withdraw(const RepeatingTimer& timer) {
    MutexLock lock(mutex_);
    agenda_.withdraw(timer);
}

void RunLoop::run() {
    timer_.onExpiry([this] { runFromTimer(); });
    io_.run();
    Agenda neverRun;  // destroyed once the lock is let go
    {
        MutexLock lock(mutex_);
        std::swap(neverRun, agenda_);
    }
    neverRun.releaseTimers();
}

void RunLoop::runFromTimer() {
    TimePoint deadline;
    {
        MutexLock lock(mutex_);
        deadline = wakeUp_;
    }
    const auto spinsUntil = std::min(deadline, clock_.now() + lead_);
    while (clock_.now() < spinsUntil)
        continue;
    runDue();
}

/// A block that throws ends the process here, and in `runDue`.
void RunLoop::runNow(DispatchQueue::Block block) noexcept {
    block();
    block = nullptr;
    runDue();
}

void RunLoop::runDue() noexcept {
    for (int i = 0; i < blocksPerRound; ++i) {
        auto block = takeDue();
        if (!block) return;
        (*block)();
    }
    wake();
}

std::optional<DispatchQueue::Block> RunLoop::takeDue() {
    MutexLock lock(mutex_);
    if (ended_ || agenda_.isEmpty()) {
        setWakeUp(TimePoint::max());
        return std::nullopt;
    }
    const auto now = clock_.now();
    if (agenda_.next().deadline > now) {
        setWakeUp(agenda_.wakeUpTime());
        return std::nullopt;
    }
    wakeUp_ = atWork;
    return agenda_.takeNext(now, sequence_++);
}

bool RunLoop::isAnyDue() const {
    return !agenda_.isEmpty() && agenda_.next().deadline <= clock_.now();
}

void RunLoop::setWakeUp(TimePoint moment) {
    wakeUp_ = moment;
    if (timerIsSetTo_ == moment) return;
    timerIsSetTo_ = moment;
    const bool isNever = moment == TimePoint::max();
    timer_.set(isNever ? moment : laterBy(moment, -lead_).value_or(moment));
}

}  // namespace tessara
