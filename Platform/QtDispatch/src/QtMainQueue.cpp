#include "Platform/QtDispatch/QtMainQueue.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QScopedValueRollback>
#include <QThread>
#include <QTimerEvent>
#include <algorithm>
#include <cstdint>
#include <future>
#include <limits>
#include <optional>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/execution_context.hpp>
#include <fmt/format.h>

#include "Agenda.h"
#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/Mutex.h"
#include "QueueExecutor.h"
#include "RepeatingTimer.h"
#include "RunningIn.h"
#include "Stop.h"

namespace tessara {
namespace {

/// Blocks that run one after the other before Qt's loop gets its turn again.
constexpr int blocksPerRound = 64;

/// What `wakeUp_` is while the loop is at work, or has been told to go to work.
constexpr TimePoint atWork = TimePoint::min();

int millisecondsUntil(TimePoint moment, TimePoint now) {
    if (moment <= now) return 0;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(moment - now).count();
    return static_cast<int>(std::min<std::int64_t>(wait, std::numeric_limits<int>::max()));
}

}  // namespace

/// What Qt's loop calls. It lives on the loop's thread, and its queue, its timers and a round that
/// is running share it.
class QtMainQueue::Loop final : public QObject, public std::enable_shared_from_this<Loop> {
  public:
    /// The way in and out of an owner on whatever thread the last one is.
    static std::shared_ptr<Loop> make() {
        return {new Loop, [](Loop* loop) {
                    if (loop->thread() == QThread::currentThread() && !loop->isInRound_) {
                        delete loop;
                    } else {
                        loop->deleteLater();
                    }
                }};
    }

    template <typename Work>
    void add(TimePoint deadline, Work work) {
        {
            MutexLock lock(mutex_);
            agenda_.add({deadline, sequence_++}, std::move(work));
            const TimePoint wanted = agenda_.wakeUpTime();
            if (wakeUp_ == atWork || wanted >= wakeUp_) return;
            wakeUp_ = atWork;
        }
        wake();
    }

    void addNow(Block block) { add(clock_.now(), std::move(block)); }

    void withdraw(const RepeatingTimer& timer) {
        MutexLock lock(mutex_);
        agenda_.withdraw(timer);
    }

    /// Destroys what has not run. Nothing runs afterwards but the block that is running.
    void end() {
        Agenda neverRun;  // destroyed once the lock is let go
        {
            MutexLock lock(mutex_);
            std::swap(neverRun, agenda_);
        }
        neverRun.releaseTimers();
    }

    /// Runs what is due now, and nothing that it makes due.
    void runDueOnce() {
        const QScopedValueRollback inRound(isInRound_, true);
        const Due end = [this] {
            MutexLock lock(mutex_);
            wakeUp_ = atWork;
            return Due{clock_.now(), sequence_++};
        }();
        while (auto block = takeDueBefore(end))
            run(*block);
        wake();  // for what is left, whose own call a loop within a block may have ignored
    }

    [[nodiscard]] bool isCurrent() const noexcept { return RunningIn::current() == id_; }
    [[nodiscard]] asio::execution_context& context() noexcept { return context_; }
    [[nodiscard]] const Clock& clock() const noexcept { return clock_; }

  protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) return QObject::event(event);
        runRound();
        return true;
    }

    void timerEvent(QTimerEvent*) override { runRound(); }

  private:
    Loop() = default;

    void wake() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

    void runRound() {
        // A loop within a block: the round that it belongs to goes on when the block has ended.
        if (isInRound_) return;
        const QScopedValueRollback inRound(isInRound_, true);
        const auto self = weak_from_this().lock();  // a block may let the queue go
        if (!self) return;                          // it has gone already
        timer_.stop();
        for (int i = 0; i < blocksPerRound; ++i) {
            auto block = takeDue();
            if (!block) return;
            run(*block);
        }
        wake();
    }

    /// A block that throws ends the process here; Qt's loop is not left by an exception.
    void run(Block& block) noexcept {
        const RunningIn running(id_);
        block();
        block = nullptr;
    }

    /// The next block, or nothing and the timer set for the one that lies ahead.
    std::optional<Block> takeDue() {
        MutexLock lock(mutex_);
        if (agenda_.isEmpty()) {
            wakeUp_ = TimePoint::max();
            return std::nullopt;
        }
        const TimePoint now = clock_.now();
        if (agenda_.next().deadline > now) {
            wakeUp_ = agenda_.wakeUpTime();
            timer_.start(millisecondsUntil(wakeUp_, now), Qt::PreciseTimer, this);
            return std::nullopt;
        }
        wakeUp_ = atWork;
        return agenda_.takeNext(now, sequence_++);
    }

    std::optional<Block> takeDueBefore(Due end) {
        MutexLock lock(mutex_);
        if (agenda_.isEmpty() || agenda_.next() > end) return std::nullopt;
        return agenda_.takeNext(clock_.now(), sequence_++);
    }

    const SystemClock clock_;
    const QueueID id_ = makeQueueID();
    asio::execution_context context_;

    // Owned by the loop's thread.
    QBasicTimer timer_;
    bool isInRound_ = false;

    Mutex mutex_;
    std::uint64_t sequence_ TESSARA_GUARDED_BY(mutex_) = 0;
    Agenda agenda_ TESSARA_GUARDED_BY(mutex_);
    /// When the loop looks at the agenda next without being told.
    TimePoint wakeUp_ TESSARA_GUARDED_BY(mutex_) = TimePoint::max();
};

QtMainQueue::QtMainQueue(std::string label) : label_(std::move(label)), loop_(Loop::make()) {}

QtMainQueue::~QtMainQueue() {
    loop_->end();
}

// What is posted may be the last to hold the queue, and may have run before the call is over: from
// then on there is only the loop that the call holds itself.

void QtMainQueue::post(Block block) {
    const auto loop = loop_;
    loop->addNow(std::move(block));
}

void QtMainQueue::postAt(TimePoint deadline, Block block) {
    const auto loop = loop_;
    loop->add(deadline, std::move(block));
}

std::unique_ptr<DispatchTimer> QtMainQueue::startTimer(TimePoint first,
                                                       std::chrono::nanoseconds interval,
                                                       std::chrono::nanoseconds leeway,
                                                       std::move_only_function<void()> handler) {
    auto timer = std::make_shared<RepeatingTimer>(interval, leeway, std::move(handler));
    const auto loop = loop_;
    loop->add(first, timer);
    return std::make_unique<RepeatingTimerHandle>(
        std::move(timer),
        [weakLoop = std::weak_ptr(loop)](const RepeatingTimer& withdrawn) noexcept {
            if (const auto live = weakLoop.lock()) live->withdraw(withdrawn);
        });
}

void QtMainQueue::drain() {
    if (isCurrent()) {
        stop(fmt::format("drain() of {} was called from within one of its blocks", label_));
    }
    if (loop_->thread() == QThread::currentThread()) {
        loop_->runDueOnce();
        return;
    }
    std::promise<void> reached;
    auto isReached = reached.get_future();
    post([reached = std::move(reached)]() mutable { reached.set_value(); });
    isReached.wait();
}

bool QtMainQueue::isCurrent() const noexcept {
    return loop_->isCurrent();
}

asio::any_io_executor QtMainQueue::executor() {
    return QueueExecutor(shared_from_this(), loop_->context());
}

const Clock& QtMainQueue::clock() const noexcept {
    return loop_->clock();
}

}  // namespace tessara
