#include "TessaraEngine/MacroExecutor.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <map>
#include <utility>
#include <variant>

#include "HeldInput.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/Checked.h"
#include "TessaraCore/Overloaded.h"
#include "TessaraEngine/EventPosting.h"
#include "TessaraEngine/MacroSideEffects.h"

namespace tessara {

namespace {

/// A list that is being played, shared by the blocks that play it.
using IntentList = std::shared_ptr<const std::vector<ButtonIntent>>;

using TimersByID = std::map<std::int64_t, std::unique_ptr<DispatchTimer>>;

constexpr std::chrono::milliseconds repeatLeeway{2};
/// Longer than any hand holds a button, and short enough that a deadline never overflows.
constexpr double longestRepeatSeconds = 1e9;

IntentList makeList(std::vector<ButtonIntent> intents) {
    return std::make_shared<const std::vector<ButtonIntent>>(std::move(intents));
}

std::chrono::nanoseconds repeatInterval(const RepeatToken& token) {
    const double seconds =
        std::min(std::max(token.intervalMillis, 1.0) / 1000, longestRepeatSeconds);
    return std::chrono::nanoseconds(checkedInt64(seconds * 1e9));
}

TimePoint deadlineAfter(const Clock& clock, double millis) {
    const std::chrono::nanoseconds wait = nanosecondsFromMillis(millis < 0 ? 0 : millis);
    const auto now = clock.now().time_since_epoch();
    return TimePoint(std::chrono::nanoseconds(checkedAdd<std::int64_t>(now.count(), wait.count())));
}

bool isKey(const ButtonIntent& intent) {
    return std::holds_alternative<KeyDownIntent>(intent) ||
           std::holds_alternative<KeyUpIntent>(intent);
}

bool isMouseButton(const ButtonIntent& intent) {
    return std::holds_alternative<MouseButtonDownIntent>(intent) ||
           std::holds_alternative<MouseButtonUpIntent>(intent) ||
           std::holds_alternative<PassThroughButtonIntent>(intent);
}

/// Whether the intent lets go of something that is not in the executor's own account: a button that
/// the system's own event has pressed, or a shift of the resolution.
bool settlesForeignDebt(const ButtonIntent& intent) {
    if (std::holds_alternative<SetDPIIntent>(intent)) return true;
    const auto* passed = std::get_if<PassThroughButtonIntent>(&intent);
    return passed != nullptr && !passed->isDown;
}

template <typename Container>
std::int64_t count(const Container& container) {
    return static_cast<std::int64_t>(container.size());
}

}  // namespace

struct MacroExecutor::Core : std::enable_shared_from_this<Core> {
    Core(std::shared_ptr<EventPosting> sink, std::shared_ptr<MacroSideEffects> outside,
         std::shared_ptr<DispatchQueue> ownQueue)
        : poster(std::move(sink)), sideEffects(std::move(outside)), queue(std::move(ownQueue)) {}

    /// Plays a list from its start, behind what is on the queue.
    void enqueue(std::vector<ButtonIntent> intents, std::uint64_t ofEpoch) {
        queue->post([weak = weak_from_this(), list = makeList(std::move(intents)), ofEpoch] {
            if (const auto self = weak.lock()) self->run(list, 0, ofEpoch);
        });
    }

    /// On the queue, as all below: plays on until the end, a delay, or the end of the list's epoch.
    void run(const IntentList& list, std::size_t index, std::uint64_t ofEpoch) {
        for (; index < list->size(); ++index) {
            if (isPast(ofEpoch, list->size() - index)) return;
            const ButtonIntent& intent = (*list)[index];
            if (const auto* delay = std::get_if<DelayIntent>(&intent)) {
                if (index + 1 < list->size()) continueAfter(*delay, list, index + 1, ofEpoch);
                return;
            }
            if (admit(intent, ofEpoch)) perform(intent, ofEpoch);
        }
    }

    /// Hands to a reset's list what the list of the one before has not come to: that will not be
    /// played any more, and its button would stay down or its resolution in force.
    void takeOverDebts(std::vector<ButtonIntent>& list) TESSARA_REQUIRES(mutex) {
        std::erase_if(owed, [&](const ButtonIntent& intent) {
            return std::ranges::find(list, intent) != list.end();
        });
        list.insert(list.begin(), owed.begin(), owed.end());
        owed.clear();
        std::ranges::copy_if(list, std::back_inserter(owed), settlesForeignDebt);
    }

    /// Whether the epoch has passed; the intents that are left of it are then given up.
    bool isPast(std::uint64_t ofEpoch, std::size_t intentsLeft) {
        MutexLock lock(mutex);
        if (epoch == ofEpoch) return false;
        metrics.intentsAbandoned += static_cast<std::int64_t>(intentsLeft);
        return true;
    }

    void continueAfter(const DelayIntent& delay, const IntentList& list, std::size_t next,
                       std::uint64_t ofEpoch) {
        queue->postAt(deadlineAfter(queue->clock(), delay.millis),
                      [weak = weak_from_this(), list, next, ofEpoch] {
                          if (const auto self = weak.lock()) self->run(list, next, ofEpoch);
                      });
    }

    /// Counts an intent, and what it holds or releases, if its epoch is still the present one. From
    /// then on a reset releases what the intent presses, also when it is not posted yet: the
    /// release goes out behind it.
    bool admit(const ButtonIntent& intent, std::uint64_t ofEpoch) {
        MutexLock lock(mutex);
        if (epoch != ofEpoch) {
            ++metrics.intentsAbandoned;
            return false;
        }
        ++metrics.intentsExecuted;
        if (isKey(intent)) ++metrics.keysPosted;
        if (isMouseButton(intent)) ++metrics.mouseButtonsPosted;
        if (std::holds_alternative<SetDPIIntent>(intent)) ++metrics.dpiRequests;
        held.note(intent);
        std::erase(owed, intent);
        return true;
    }

    void perform(const ButtonIntent& intent, std::uint64_t ofEpoch) {
        std::visit(
            Overloaded{
                [&](const PassThroughButtonIntent& button) {
                    poster->postMouseButton(button.number, button.isDown);
                },
                [&](const KeyDownIntent& key) { poster->postKey(key.code, true, key.modifiers); },
                [&](const KeyUpIntent& key) { poster->postKey(key.code, false, key.modifiers); },
                [](const DelayIntent&) {},  // `run` waits it out
                [&](const MouseButtonDownIntent& button) {
                    poster->postMouseButton(button.number, true);
                },
                [&](const MouseButtonUpIntent& button) {
                    poster->postMouseButton(button.number, false);
                },
                [&](const StartRepeatIntent& start) { startRepeat(start.token, ofEpoch); },
                [&](const StopRepeatIntent& stop) { stopRepeat(stop.id); },
                [&](const SetDPIIntent& dpi) { sideEffects->requestDPI(dpi.dpi); },
                [&](const LaunchAppIntent& app) { sideEffects->launchApp(app.bundleID); },
                [&](const RunShortcutIntent& shortcut) { sideEffects->runShortcut(shortcut.name); },
            },
            intent);
    }

    /// The press has played the step once, so the first firing is one interval away.
    void startRepeat(const RepeatToken& token, std::uint64_t ofEpoch) {
        const std::chrono::nanoseconds interval = repeatInterval(token);
        auto timer = queue->startTimer(
            queue->clock().now() + interval, interval, repeatLeeway,
            [weak = weak_from_this(), list = makeList(intents(token.step)), ofEpoch] {
                if (const auto self = weak.lock()) self->repeat(list, ofEpoch);
            });
        // `timer` outlives the lock: with it goes the timer that was replaced, or the new one when
        // a reset came first.
        MutexLock lock(mutex);
        if (epoch != ofEpoch) return;
        repeatTimers[token.id].swap(timer);
        ++metrics.repeatsStarted;
    }

    void repeat(const IntentList& list, std::uint64_t ofEpoch) {
        {
            MutexLock lock(mutex);
            if (epoch != ofEpoch) return;
            ++metrics.repeatIterations;
        }
        run(list, 0, ofEpoch);
    }

    void stopRepeat(std::int64_t id) {
        TimersByID::node_type stopped;  // cancelled by its end, after the lock
        MutexLock lock(mutex);
        stopped = repeatTimers.extract(id);
        if (stopped) ++metrics.repeatsStopped;
    }

    const std::shared_ptr<EventPosting> poster;
    const std::shared_ptr<MacroSideEffects> sideEffects;
    const std::shared_ptr<DispatchQueue> queue;

    mutable Mutex mutex;
    /// The running repeats by token id.
    TimersByID repeatTimers TESSARA_GUARDED_BY(mutex);
    Metrics metrics TESSARA_GUARDED_BY(mutex);
    /// Grows with each reset; work of an earlier one does nothing.
    std::uint64_t epoch TESSARA_GUARDED_BY(mutex) = 0;
    HeldInput held TESSARA_GUARDED_BY(mutex);
    /// What the last reset's list has yet to let go of and `held` does not know.
    std::vector<ButtonIntent> owed TESSARA_GUARDED_BY(mutex);
};

MacroExecutor::MacroExecutor(std::shared_ptr<EventPosting> poster,
                             std::shared_ptr<MacroSideEffects> sideEffects, Dispatcher& dispatcher)
    : core_(std::make_shared<Core>(
          std::move(poster), std::move(sideEffects),
          dispatcher.makeQueue("ai.tessara.macro", QualityOfService::userInteractive))) {}

MacroExecutor::~MacroExecutor() = default;

std::uint64_t MacroExecutor::epoch() const {
    MutexLock lock(core_->mutex);
    return core_->epoch;
}

void MacroExecutor::execute(std::vector<ButtonIntent> intents, std::uint64_t ofEpoch) {
    if (!intents.empty()) core_->enqueue(std::move(intents), ofEpoch);
}

void MacroExecutor::reset(std::vector<ButtonIntent> thenExecuting) {
    HeldInput toRelease;
    TimersByID timers;  // cancelled by their end, after the lock
    std::uint64_t epoch = 0;
    {
        MutexLock lock(core_->mutex);
        epoch = ++core_->epoch;
        core_->takeOverDebts(thenExecuting);
        toRelease = core_->held.takeAllBut(thenExecuting);
        timers.swap(core_->repeatTimers);
        Metrics& metrics = core_->metrics;
        ++metrics.resets;
        metrics.repeatsStopped += count(timers);
        metrics.keysForceReleased += count(toRelease.keys());
        metrics.mouseButtonsForceReleased += count(toRelease.mouseButtons());
    }
    timers.clear();

    if (!toRelease.keys().empty() || !toRelease.mouseButtons().empty()) {
        // Holds the sink and the queue themselves and asks for no epoch: a release always happens.
        core_->queue->post(
            [poster = core_->poster, queue = core_->queue, released = std::move(toRelease)] {
                for (const HeldKey& key : released.keys()) {
                    poster->postKey(key.code, false, key.modifiers);
                }
                for (const std::int64_t number : released.mouseButtons()) {
                    poster->postMouseButton(number, false);
                }
            });
    }
    if (!thenExecuting.empty()) core_->enqueue(std::move(thenExecuting), epoch);
}

void MacroExecutor::stopAllRepeats() {
    TimersByID timers;  // cancelled by their end, after the lock
    MutexLock lock(core_->mutex);
    timers.swap(core_->repeatTimers);
    core_->metrics.repeatsStopped += count(timers);
}

void MacroExecutor::drain() {
    core_->queue->drain();
}

MacroExecutor::Metrics MacroExecutor::snapshotMetrics() const {
    MutexLock lock(core_->mutex);
    return core_->metrics;
}

void MacroExecutor::resetMetrics() {
    MutexLock lock(core_->mutex);
    core_->metrics = {};
}

std::int64_t MacroExecutor::activeRepeatCount() const {
    MutexLock lock(core_->mutex);
    return count(core_->repeatTimers);
}

std::int64_t MacroExecutor::heldKeyCount() const {
    MutexLock lock(core_->mutex);
    return count(core_->held.keys());
}

std::int64_t MacroExecutor::heldMouseButtonCount() const {
    MutexLock lock(core_->mutex);
    return count(core_->held.mouseButtons());
}

}  // namespace tessara
