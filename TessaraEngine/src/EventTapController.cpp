#include "TessaraEngine/EventTapController.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <utility>

#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/EventTaps.h"
#include "TessaraCore/Precondition.h"

namespace tessara {
namespace {

/// Marks, for a scope, that the calling thread does the tap's work.
class OnTapThread {
  public:
    OnTapThread() noexcept : outer_(std::exchange(isMarked_, true)) {}
    ~OnTapThread() { isMarked_ = outer_; }

    OnTapThread(const OnTapThread&) = delete;
    OnTapThread& operator=(const OnTapThread&) = delete;

    static bool isMarked() noexcept { return isMarked_; }

  private:
    inline static thread_local bool isMarked_ = false;
    const bool outer_;
};

}  // namespace

/// What the controller shares with a callback that is under way when the controller goes.
class EventTapController::Core : public std::enable_shared_from_this<Core> {
  public:
    Core(const Configuration& configuration, EventTapService& taps, Dispatcher& dispatcher,
         DisableHandler onDisabled, Handler handler)
        : configuration_(configuration),
          taps_(taps),
          dispatcher_(dispatcher),
          clock_(dispatcher.clock()),
          handler_(std::move(handler)),
          onDisabled_(std::move(onDisabled)) {
        TESSARA_PRECONDITION(handler_ != nullptr, "an event tap without a handler");
    }

    std::expected<void, StartError> start();
    void stop();
    void drain();
    bool perform(Block block);
    bool dispatch(CGEventType type, CGEvent& event);

    bool isRunning() const { return running_; }
    bool isTapEnabled() const;
    TapMetrics metrics() const;
    void resetMetrics();

  private:
    bool makeTap(const std::shared_ptr<DispatchQueue>& queue);
    std::shared_ptr<EventTap> machPort() const;
    void tapWasDisabled(TapDisableReason reason);
    void record(double elapsedNanos);

    const Configuration configuration_;
    const double budgetNanos_ = configuration_.budgetMillis * 1e6;
    EventTapService& taps_;
    Dispatcher& dispatcher_;
    const Clock& clock_;
    Handler handler_;            // called on the tap thread only
    DisableHandler onDisabled_;  // called on the tap thread only
    std::atomic<bool> running_ = false;

    mutable Mutex mutex_;
    TapMetrics metrics_ TESSARA_GUARDED_BY(mutex_);
    /// The tap; kept once stopped, disabled.
    std::shared_ptr<EventTap> machPort_ TESSARA_GUARDED_BY(mutex_);
    /// The tap thread, while there is a tap for it.
    std::shared_ptr<DispatchQueue> queue_ TESSARA_GUARDED_BY(mutex_);
    /// The same, for as long as it has something left to do.
    std::weak_ptr<DispatchQueue> lastQueue_ TESSARA_GUARDED_BY(mutex_);
};

std::expected<void, EventTapController::StartError> EventTapController::Core::start() {
    if (running_.exchange(true)) return std::unexpected(StartError::alreadyRunning);
    const auto queue =
        dispatcher_.makeQueue(std::string(threadLabel), QualityOfService::userInteractive);
    bool isUp = false;
    queue->post([&] { isUp = makeTap(queue); });
    queue->drain();
    if (isUp) return {};
    running_ = false;
    return std::unexpected(StartError::tapCreationFailed);
}

bool EventTapController::Core::makeTap(const std::shared_ptr<DispatchQueue>& queue) {
    const OnTapThread here;
    const EventTapRequest request{.location = configuration_.location,
                                  .placement = configuration_.placement,
                                  .options = configuration_.options,
                                  .eventsOfInterest = configuration_.eventsOfInterest};
    std::shared_ptr<EventTap> tap =
        taps_.makeTap(request, queue, [weak = weak_from_this()](CGEventType type, CGEvent& event) {
            const OnTapThread inCallback;
            const auto core = weak.lock();
            // An event still on its way when the tap was stopped goes on as it came.
            if (!core || !core->running_) return true;
            return core->dispatch(type, event);
        });
    if (!tap) return false;

    std::shared_ptr<EventTap> former = tap;
    {
        MutexLock lock(mutex_);
        machPort_.swap(former);
        queue_ = queue;
        lastQueue_ = queue;
    }
    tap->setEnabled(true);
    if (!running_) stop();  // somebody stopped it while it was being made
    return true;
}

void EventTapController::Core::stop() {
    running_ = false;
    std::shared_ptr<DispatchQueue> queue;
    {
        MutexLock lock(mutex_);
        queue_.swap(queue);
    }
    if (const auto tap = machPort()) tap->setEnabled(false);
    // The thread ends with its queue's last holder: this block, behind all that was performed.
    if (queue) queue->post([queue] {});
}

void EventTapController::Core::drain() {
    std::shared_ptr<DispatchQueue> queue;
    {
        MutexLock lock(mutex_);
        queue = lastQueue_.lock();
    }
    if (queue && !queue->isCurrent()) queue->drain();
}

bool EventTapController::Core::perform(Block block) {
    std::shared_ptr<DispatchQueue> queue;
    {
        MutexLock lock(mutex_);
        queue = queue_;
    }
    if (!queue) return false;
    queue->post([block = std::move(block)]() mutable {
        const OnTapThread here;
        block();
    });
    return true;
}

bool EventTapController::Core::dispatch(CGEventType type, CGEvent& event) {
    if (type == CGEventType::tapDisabledByTimeout) {
        tapWasDisabled(TapDisableReason::timeout);
        return true;
    }
    if (type == CGEventType::tapDisabledByUserInput) {
        tapWasDisabled(TapDisableReason::userInput);
        return true;
    }
    const TimePoint begin = clock_.now();
    const TapVerdict verdict = handler_(type, event);
    const auto elapsed = clock_.now() - begin;
    record(static_cast<double>(elapsed.count()));
    return verdict == TapVerdict::pass;
}

void EventTapController::Core::tapWasDisabled(TapDisableReason reason) {
    std::shared_ptr<EventTap> tap;
    {
        MutexLock lock(mutex_);
        (reason == TapDisableReason::timeout ? metrics_.disabledByTimeout
                                             : metrics_.disabledByUserInput) += 1;
        metrics_.reEnables += 1;
        tap = machPort_;
    }
    if (tap) {
        tap->setEnabled(true);
        if (!running_) tap->setEnabled(false);  // a stop came in between
    }
    if (onDisabled_) onDisabled_(reason);
}

void EventTapController::Core::record(double elapsedNanos) {
    MutexLock lock(mutex_);
    metrics_.events += 1;
    metrics_.maxCallbackNanos = std::max(metrics_.maxCallbackNanos, elapsedNanos);
    metrics_.totalCallbackNanos += elapsedNanos;
    if (elapsedNanos > budgetNanos_) {
        metrics_.budgetOverruns += 1;
        metrics_.worstOverrunNanos = std::max(metrics_.worstOverrunNanos, elapsedNanos);
    }
}

std::shared_ptr<EventTap> EventTapController::Core::machPort() const {
    MutexLock lock(mutex_);
    return machPort_;
}

bool EventTapController::Core::isTapEnabled() const {
    const auto tap = machPort();
    return tap && tap->isEnabled();
}

TapMetrics EventTapController::Core::metrics() const {
    MutexLock lock(mutex_);
    return metrics_;
}

void EventTapController::Core::resetMetrics() {
    MutexLock lock(mutex_);
    metrics_ = {};
}

EventTapController::EventTapController(const Configuration& configuration, EventTapService& taps,
                                       Dispatcher& dispatcher, DisableHandler onDisabled,
                                       Handler handler)
    : core_(std::make_shared<Core>(configuration, taps, dispatcher, std::move(onDisabled),
                                   std::move(handler))) {}

EventTapController::~EventTapController() {
    stop();
    drain();
}

std::string_view EventTapController::description(StartError error) {
    switch (error) {
        case StartError::tapCreationFailed:
            return "CGEvent.tapCreate returned nil — Accessibility (and Input Monitoring) must be "
                   "granted";
        case StartError::alreadyRunning:
            return "the tap is already running";
    }
    preconditionFailed("a start error that is none of the cases");
}

std::expected<void, EventTapController::StartError> EventTapController::start() {
    return core_->start();
}

void EventTapController::stop() {
    core_->stop();
}

void EventTapController::drain() {
    core_->drain();
}

bool EventTapController::perform(Block block) {
    return core_->perform(std::move(block));
}

bool EventTapController::isRunning() const {
    return core_->isRunning();
}

bool EventTapController::isTapEnabled() const {
    return core_->isTapEnabled();
}

bool EventTapController::isOnTapThread() {
    return OnTapThread::isMarked();
}

TapMetrics EventTapController::snapshotMetrics() const {
    return core_->metrics();
}

void EventTapController::resetMetrics() {
    core_->resetMetrics();
}

bool EventTapController::dispatch(CGEventType type, CGEvent& event) {
    return core_->dispatch(type, event);
}

}  // namespace tessara
