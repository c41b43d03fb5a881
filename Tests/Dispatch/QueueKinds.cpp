#include "QueueKinds.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <future>
#include <optional>

#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/QtDispatch/QtMainQueue.h"
#include "Support/ProcessResources.h"
#include "Support/TestDispatcher.h"

namespace tessara::testing {
namespace {

class ManualKind final : public QueueKind {
  public:
    std::shared_ptr<DispatchQueue> makeQueue(const std::string& label) override {
        return dispatcher_->makeQueue(label, QualityOfService::standard);
    }
    void runUntil(DispatchQueue&, TimePoint moment) override { dispatcher_->advanceTo(moment); }
    void runReady(DispatchQueue&) override { dispatcher_->runReady(); }
    void discard() override { dispatcher_->discard(); }
    void end() override { dispatcher_.reset(); }

  private:
    std::optional<ManualDispatcher> dispatcher_{std::in_place, TimePoint(std::chrono::seconds(1)),
                                                failOnLeftovers()};
};

class ThreadedKind final : public QueueKind {
  public:
    std::shared_ptr<DispatchQueue> makeQueue(const std::string& label) override {
        return dispatcher_->makeQueue(label, QualityOfService::userInteractive);
    }
    void runUntil(DispatchQueue& queue, TimePoint moment) override {
        std::promise<void> reached;
        queue.postAt(moment, [&] { reached.set_value(); });
        reached.get_future().wait();
        queue.drain();
    }
    void runReady(DispatchQueue& queue) override { queue.drain(); }
    void discard() override {}
    void end() override { dispatcher_.reset(); }

  private:
    const NoLeakedResources resources_;
    std::optional<ThreadedDispatcher> dispatcher_{std::in_place};
};

/// Turns Qt's loop by hand, on the test's own thread.
class QtKind final : public QueueKind {
  public:
    std::shared_ptr<DispatchQueue> makeQueue(const std::string& label) override {
        return std::make_shared<QtMainQueue>(label);
    }
    void runUntil(DispatchQueue& queue, TimePoint moment) override {
        bool isReached = false;
        queue.postAt(moment, [&] { isReached = true; });
        while (!isReached)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void runReady(DispatchQueue& queue) override {
        queue.drain();
        QEventLoop loop;
        while (loop.processEvents())
            continue;
    }
    void discard() override {}
    void end() override {}

  private:
    int argc_ = 0;
    QCoreApplication application_{argc_, nullptr};
};

}  // namespace

std::vector<NamedKind> allKinds() {
    return {{"manual", [] { return std::make_unique<ManualKind>(); }},
            {"threaded", [] { return std::make_unique<ThreadedKind>(); }},
            {"qt", [] { return std::make_unique<QtKind>(); }}};
}

std::string nameOfKind(const ::testing::TestParamInfo<NamedKind>& kind) {
    return kind.param.name;
}

}  // namespace tessara::testing
