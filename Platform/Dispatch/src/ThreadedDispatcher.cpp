#include "Platform/Dispatch/ThreadedDispatcher.h"

#include <future>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <fmt/format.h>

#include "QueueExecutor.h"
#include "RepeatingTimer.h"
#include "RunLoop.h"
#include "Stop.h"

namespace tessara {

class ThreadedDispatcher::Queue final : public DispatchQueue,
                                        public std::enable_shared_from_this<Queue> {
  public:
    Queue(std::shared_ptr<DepartingThreads> departing, std::string label, QualityOfService quality)
        : loop_(std::make_shared<RunLoop>(std::move(departing), quality)),
          label_(std::move(label)) {
        loop_->start(label_);
    }
    ~Queue() override { loop_->end(); }

    // What is posted may be the last to hold the queue, and may have run before the call is over:
    // from then on there is only the loop that the call holds itself.

    void post(Block block) override {
        const auto loop = loop_;
        loop->addNow(std::move(block));
    }

    void postAt(TimePoint deadline, Block block) override {
        const auto loop = loop_;
        loop->add(deadline, std::move(block));
    }

    std::unique_ptr<DispatchTimer> startTimer(TimePoint first, std::chrono::nanoseconds interval,
                                              std::chrono::nanoseconds leeway,
                                              std::move_only_function<void()> handler) override {
        auto timer = std::make_shared<RepeatingTimer>(interval, leeway, std::move(handler));
        const auto loop = loop_;
        loop->add(first, timer);
        return std::make_unique<RepeatingTimerHandle>(
            std::move(timer),
            [loop](const RepeatingTimer& withdrawn) noexcept { loop->withdraw(withdrawn); });
    }

    void drain() override {
        if (isCurrent()) {
            stop(fmt::format("drain() of {} was called from within one of its blocks", label_));
        }
        std::promise<void> reached;
        auto isReached = reached.get_future();
        post([reached = std::move(reached)]() mutable { reached.set_value(); });
        isReached.wait();
    }

    bool isCurrent() const noexcept override { return loop_->isCurrent(); }

    asio::any_io_executor executor() override {
        return QueueExecutor(shared_from_this(), loop_->context());
    }

    const Clock& clock() const noexcept override { return loop_->clock(); }
    const std::string& label() const noexcept override { return label_; }

  private:
    const std::shared_ptr<RunLoop> loop_;
    const std::string label_;
};

ThreadedDispatcher::ThreadedDispatcher() : departing_(std::make_shared<DepartingThreads>()) {}

ThreadedDispatcher::~ThreadedDispatcher() {
    departing_->await();
}

std::shared_ptr<DispatchQueue> ThreadedDispatcher::makeQueue(std::string label,
                                                             QualityOfService quality) {
    return std::make_shared<Queue>(departing_, std::move(label), quality);
}

const Clock& ThreadedDispatcher::clock() const noexcept {
    return clock_;
}

}  // namespace tessara
