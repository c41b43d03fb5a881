#include "Platform/Dispatch/ManualDispatcher.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/execution_context.hpp>
#include <fmt/format.h>

#include "Agenda.h"
#include "LaterBy.h"
#include "Platform/Dispatch/Mutex.h"
#include "QueueExecutor.h"
#include "RepeatingTimer.h"
#include "RunningIn.h"
#include "Stop.h"

namespace tessara {
namespace {

class VirtualClock final : public Clock {
  public:
    explicit VirtualClock(TimePoint start) noexcept : now_(start) {}

    [[nodiscard]] TimePoint now() const noexcept override {
        return now_.load(std::memory_order_relaxed);
    }

    void moveTo(TimePoint moment) noexcept { now_.store(moment, std::memory_order_relaxed); }

  private:
    std::atomic<TimePoint> now_;  // written by the owner's thread alone
};

}  // namespace

/// The clock and the agendas of all queues, shared by the dispatcher, its queues and their timers.
class ManualDispatcher::Core {
  public:
    explicit Core(TimePoint start) : clock_(start) {}

    [[nodiscard]] const Clock& clock() const noexcept { return clock_; }
    [[nodiscard]] asio::execution_context& context() noexcept { return context_; }

    void open(QueueID queue, std::string label) {
        MutexLock lock(mutex_);
        lanes_.try_emplace(queue, std::move(label));
    }

    void close(QueueID queue) {
        decltype(lanes_)::node_type closed;  // destroyed once the lock is let go
        {
            MutexLock lock(mutex_);
            closed = lanes_.extract(queue);
            if (!closed.empty()) countAsNeverRun(closed.mapped());
        }
        if (!closed.empty()) closed.mapped().agenda.releaseTimers();
    }

    /// Takes on a block or a timer. What comes after the dispatcher's end is destroyed unrun.
    template <typename Work>
    void add(QueueID queue, TimePoint deadline, Work work) {
        MutexLock lock(mutex_);
        const auto lane = lanes_.find(queue);
        if (lane != lanes_.end()) lane->second.agenda.add({deadline, sequence_++}, std::move(work));
    }

    void withdraw(QueueID queue, const RepeatingTimer& timer) {
        MutexLock lock(mutex_);
        const auto lane = lanes_.find(queue);
        if (lane != lanes_.end()) lane->second.agenda.withdraw(timer);
    }

    /// Stops the process unless the caller may move the clock and run things.
    void requireOutside(std::string_view operation) const {
        requireOwner(operation);
        if (!running_.empty()) {
            stop(fmt::format("ManualDispatcher: {} was called from within a block", operation));
        }
    }

    std::size_t advanceTo(TimePoint moment) {
        std::size_t count = 0;
        while (runNext(moment))
            ++count;
        clock_.moveTo(moment);
        return count;
    }

    /// Runs what comes next of all queues, with the clock moved on to it, if it is due by `limit`.
    bool runNext(TimePoint limit) {
        return run([&]() -> std::optional<Runnable> {
            MutexLock lock(mutex_);
            const auto lane = earliestLane();
            if (lane == lanes_.end()) return std::nullopt;
            const auto deadline = lane->second.agenda.next().deadline;
            if (deadline > limit) return std::nullopt;
            if (deadline > clock_.now()) clock_.moveTo(deadline);
            return take(*lane);
        }());
    }

    void drain(QueueID queue, const std::string& label) {
        requireOwner("drain()");
        if (std::ranges::find(running_, queue) != running_.end()) {
            stop(fmt::format("drain() of {} was called from within one of its blocks", label));
        }
        const auto end = placeOfABlockPostedNow();
        const auto takeBeforeEnd = [&]() -> std::optional<Runnable> {
            MutexLock lock(mutex_);
            const auto lane = lanes_.find(queue);
            if (lane == lanes_.end() || lane->second.agenda.isEmpty()) return std::nullopt;
            if (lane->second.agenda.next() > end) return std::nullopt;
            return take(*lane);
        };
        while (run(takeBeforeEnd()))
            continue;
    }

    [[nodiscard]] std::size_t pendingCount() {
        MutexLock lock(mutex_);
        std::size_t count = 0;
        for (const auto& [queue, lane] : lanes_)
            count += lane.agenda.blockCount();
        return count;
    }

    [[nodiscard]] std::optional<TimePoint> nextDeadline() {
        MutexLock lock(mutex_);
        const auto lane = earliestLane();
        if (lane == lanes_.end()) return std::nullopt;
        return lane->second.agenda.next().deadline;
    }

    void discardBlocks() {
        for (bool found = true; found;) {
            std::vector<DispatchQueue::Block> discarded;  // their destructors may post again
            MutexLock lock(mutex_);
            neverRun_.clear();
            for (auto& [queue, lane] : lanes_) {
                std::ranges::move(lane.agenda.takeBlocks(), std::back_inserter(discarded));
            }
            found = !discarded.empty();
        }
    }

    /// Ends all queues. Returns a sentence that says which blocks never ran, or nothing.
    [[nodiscard]] std::string closeAll() {
        decltype(lanes_) closed;  // destroyed once the lock is let go
        {
            MutexLock lock(mutex_);
            closed.swap(lanes_);
            for (const auto& [queue, lane] : closed)
                countAsNeverRun(lane);
        }
        for (auto& [queue, lane] : closed)
            lane.agenda.releaseTimers();

        MutexLock lock(mutex_);
        if (neverRun_.empty()) return {};
        std::vector<std::string> counts;
        for (const auto& [label, count] : neverRun_) {
            counts.push_back(fmt::format("{} on {}", count, label));
        }
        return fmt::format("The dispatcher ended with blocks that never ran: {}.",
                           fmt::join(counts, ", "));
    }

  private:
    struct Lane {
        explicit Lane(std::string named) : label(std::move(named)) {}
        const std::string label;
        Agenda agenda;
    };
    using Lanes = std::map<QueueID, Lane>;

    struct Runnable {
        QueueID queue;
        DispatchQueue::Block block;
    };

    void countAsNeverRun(const Lane& lane) TESSARA_REQUIRES(mutex_) {
        const auto count = lane.agenda.blockCount();
        if (count > 0) neverRun_[lane.label] += count;
    }

    void requireOwner(std::string_view operation) const {
        if (std::this_thread::get_id() != owner_) {
            stop(
                fmt::format("ManualDispatcher: {} was called from another thread than the one that "
                            "made the dispatcher",
                            operation));
        }
    }

    [[nodiscard]] Lanes::iterator earliestLane() TESSARA_REQUIRES(mutex_) {
        auto earliest = lanes_.end();
        for (auto lane = lanes_.begin(); lane != lanes_.end(); ++lane) {
            if (lane->second.agenda.isEmpty()) continue;
            if (earliest == lanes_.end() ||
                lane->second.agenda.next() < earliest->second.agenda.next()) {
                earliest = lane;
            }
        }
        return earliest;
    }

    [[nodiscard]] Due placeOfABlockPostedNow() {
        MutexLock lock(mutex_);
        return {clock_.now(), sequence_++};
    }

    [[nodiscard]] Runnable take(Lanes::value_type& lane) TESSARA_REQUIRES(mutex_) {
        return {lane.first, lane.second.agenda.takeNext(clock_.now(), sequence_++)};
    }

    /// A block that throws ends the process here, as it does on a thread.
    bool run(std::optional<Runnable> runnable) noexcept {
        if (!runnable) return false;
        running_.push_back(runnable->queue);
        {
            const RunningIn scope(runnable->queue);
            runnable->block();
            runnable.reset();
        }
        running_.pop_back();
        return true;
    }

    const std::thread::id owner_ = std::this_thread::get_id();
    VirtualClock clock_;               // moved by the owner's thread
    std::vector<QueueID> running_;     // the owner's thread; more than one when a block drains
    asio::execution_context context_;  // has its own lock

    Mutex mutex_;
    std::uint64_t sequence_ TESSARA_GUARDED_BY(mutex_) = 0;
    Lanes lanes_ TESSARA_GUARDED_BY(mutex_);
    std::map<std::string, std::size_t> neverRun_ TESSARA_GUARDED_BY(mutex_);  // by label
};

class ManualDispatcher::Queue final : public DispatchQueue,
                                      public std::enable_shared_from_this<Queue> {
  public:
    Queue(std::shared_ptr<Core> core, std::string label)
        : core_(std::move(core)), label_(std::move(label)) {
        core_->open(id_, label_);
    }
    ~Queue() override { core_->close(id_); }

    void post(Block block) override { core_->add(id_, core_->clock().now(), std::move(block)); }

    void postAt(TimePoint deadline, Block block) override {
        core_->add(id_, deadline, std::move(block));
    }

    std::unique_ptr<DispatchTimer> startTimer(TimePoint first, std::chrono::nanoseconds interval,
                                              std::chrono::nanoseconds leeway,
                                              std::move_only_function<void()> handler) override {
        auto timer = std::make_shared<RepeatingTimer>(interval, leeway, std::move(handler));
        core_->add(id_, first, timer);
        return std::make_unique<RepeatingTimerHandle>(
            std::move(timer), [core = core_, id = id_](const RepeatingTimer& withdrawn) noexcept {
                core->withdraw(id, withdrawn);
            });
    }

    void drain() override { core_->drain(id_, label_); }

    bool isCurrent() const noexcept override { return RunningIn::current() == id_; }

    asio::any_io_executor executor() override {
        return QueueExecutor(shared_from_this(), core_->context());
    }

    const Clock& clock() const noexcept override { return core_->clock(); }
    const std::string& label() const noexcept override { return label_; }

  private:
    const std::shared_ptr<Core> core_;
    const QueueID id_ = makeQueueID();
    const std::string label_;
};

ManualDispatcher::ManualDispatcher(TimePoint start, LeftoverHandler onLeftover)
    : core_(std::make_shared<Core>(start)), onLeftover_(std::move(onLeftover)) {}

ManualDispatcher::~ManualDispatcher() {
    core_->requireOutside("its destructor");
    const auto leftovers = core_->closeAll();
    if (leftovers.empty()) return;
    if (!onLeftover_) stop(leftovers);
    onLeftover_(leftovers);
}

std::shared_ptr<DispatchQueue> ManualDispatcher::makeQueue(std::string label, QualityOfService) {
    return std::make_shared<Queue>(core_, std::move(label));
}

const Clock& ManualDispatcher::clock() const noexcept {
    return core_->clock();
}

TimePoint ManualDispatcher::now() const noexcept {
    return core_->clock().now();
}

std::size_t ManualDispatcher::runReady() {
    core_->requireOutside("runReady()");
    return core_->advanceTo(now());
}

std::size_t ManualDispatcher::advance(std::chrono::nanoseconds duration) {
    core_->requireOutside("advance()");
    if (duration < duration.zero()) stop("ManualDispatcher: advance() by less than nothing");
    const auto end = laterBy(now(), duration);
    if (!end) stop("ManualDispatcher: advance() past the end of time");
    return core_->advanceTo(*end);
}

std::size_t ManualDispatcher::advanceTo(TimePoint moment) {
    core_->requireOutside("advanceTo()");
    if (moment < now()) stop("ManualDispatcher: advanceTo() a moment that has passed");
    return core_->advanceTo(moment);
}

bool ManualDispatcher::runUntilIdle(TimePoint limit) {
    core_->requireOutside("runUntilIdle()");
    while (core_->pendingCount() > 0) {
        if (!core_->runNext(limit)) return false;
    }
    return true;
}

std::size_t ManualDispatcher::pendingCount() const {
    return core_->pendingCount();
}

std::optional<TimePoint> ManualDispatcher::nextDeadline() const {
    return core_->nextDeadline();
}

void ManualDispatcher::discard() {
    core_->discardBlocks();
}

}  // namespace tessara
