#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "Platform/CGEvent.h"
#include "TessaraEngine/TapMetrics.h"
#include "TessaraEngine/TapVerdict.h"

namespace tessara {

class Dispatcher;
class EventTapService;

/// Owns the tap in the system's event stream and the thread on which it is called back: makes both,
/// times every callback, and puts the tap back in place when the system takes it out.
///
/// The handler is a plain function; what it does with an event is not known here. Nothing on the
/// tap thread waits, since what it waits is what the user feels: a callback over the budget is
/// counted, and that is all. Events that the system
/// lost while the tap was out are not recovered; `onDisabled` is there for resetting what they
/// leave half done.
class EventTapController {
  public:
    /// Called on the tap thread, one event at a time. May rewrite the event in place.
    using Handler = std::move_only_function<TapVerdict(CGEventType type, CGEvent& event)>;
    /// Called on the tap thread, after the tap was enabled again.
    using DisableHandler = std::move_only_function<void(TapDisableReason reason)>;
    using Block = std::move_only_function<void()>;

    /// Where the tap goes, what it sees and what it may do with it.
    struct Configuration {
        /// One bit per `CGEventType` number below 64; see `eventMask`.
        std::uint64_t eventsOfInterest = defaultEventMask;
        /// Whether the tap may change and drop events.
        CGEventTapOptions options = CGEventTapOptions::defaultTap;
        /// At which point of their way events come through.
        CGEventTapLocation location = CGEventTapLocation::session;
        /// Ahead of the other taps there, or behind them.
        CGEventTapPlacement placement = CGEventTapPlacement::headInsert;
        /// What a callback may take before it counts as an overrun. Exactly this is none.
        double budgetMillis = 2.0;

        bool operator==(const Configuration&) const = default;
    };

    /// Why a start came to nothing.
    enum class StartError : std::uint8_t {
        /// The system gave no tap, mostly for want of a permission.
        tapCreationFailed,
        /// There was a start before, and no stop since.
        alreadyRunning
    };

    /// The error in words, for the user.
    [[nodiscard]] static std::string_view description(StartError error);

    /// The mask that asks for these types. Numbers of 64 and above have no bit and are left out.
    [[nodiscard]] static constexpr std::uint64_t eventMask(
        std::initializer_list<CGEventType> types) {
        std::uint64_t mask = 0;
        for (const CGEventType type : types) {
            const auto number = static_cast<std::uint32_t>(type);
            if (number < 64) mask |= std::uint64_t{1} << number;
        }
        return mask;
    }

    /// The wheel, and all buttons going down and up: 0x640001E.
    static const std::uint64_t scrollAndButtonEventMask;
    /// Motion, with and without a button down: 0x80000E0.
    static const std::uint64_t pointerMotionEventMask;
    /// Both.
    static const std::uint64_t defaultEventMask;

    /// The label of the tap thread's queue.
    static constexpr std::string_view threadLabel = "ai.tessara.event-tap";

    /// `taps` and `dispatcher` must outlive the controller. Any thread.
    EventTapController(const Configuration& configuration, EventTapService& taps,
                       Dispatcher& dispatcher, DisableHandler onDisabled, Handler handler);
    /// Stops, and waits for a callback under way: neither handler is called afterwards. Destroyed
    /// on the tap thread itself it does not wait, and the callback under way is the last.
    ~EventTapController();

    EventTapController(const EventTapController&) = delete;
    EventTapController& operator=(const EventTapController&) = delete;

    /// Makes the thread and the tap and returns when the tap is up or has failed. A controller that
    /// runs already goes on undisturbed. A stopped one starts afresh. Any thread.
    [[nodiscard]] std::expected<void, StartError> start();

    /// Takes the tap out of the stream and lets the thread end once it has done what it was given.
    /// Does not wait for it, and may be called on it; a callback under way may outlast the call,
    /// and none begins after it. Harmless when nothing runs. Any thread.
    void stop();

    /// Waits until the tap thread has done what it was given so far. After `stop()` and `drain()`
    /// the handlers are at rest. On the tap thread itself it does nothing. Any thread.
    void drain();

    /// Runs the block on the tap thread, between two callbacks, in the order of the calls. It does
    /// not wait for it. A block that was taken runs, also when a stop follows. False when there is
    /// no tap thread; the block is then dropped. Any thread.
    bool perform(Block block);

    /// Whether there was a start that did not fail, and no stop since. Any thread.
    [[nodiscard]] bool isRunning() const;
    /// Whether events come through the tap now. False without a tap, and once stopped.
    [[nodiscard]] bool isTapEnabled() const;
    /// Whether the caller runs in what a tap thread was given: a callback or a performed block.
    [[nodiscard]] static bool isOnTapThread();

    /// How the callbacks fared since the construction or the last `resetMetrics`, in one moment.
    /// They go on over a stop and a further start. Any thread.
    [[nodiscard]] TapMetrics snapshotMetrics() const;
    /// Begins to count from 0. Any thread.
    void resetMetrics();

    /// What the tap calls for every event, and for notices that it was disabled: true to let the
    /// event through. Public for whoever feeds events of another source; one thread at a time.
    bool dispatch(CGEventType type, CGEvent& event);

  private:
    class Core;
    const std::shared_ptr<Core> core_;  // what the tap's callback holds weakly
};

inline constexpr std::uint64_t EventTapController::scrollAndButtonEventMask =
    EventTapController::eventMask({CGEventType::scrollWheel, CGEventType::leftMouseDown,
                                   CGEventType::leftMouseUp, CGEventType::rightMouseDown,
                                   CGEventType::rightMouseUp, CGEventType::otherMouseDown,
                                   CGEventType::otherMouseUp});
inline constexpr std::uint64_t EventTapController::pointerMotionEventMask =
    EventTapController::eventMask({CGEventType::mouseMoved, CGEventType::leftMouseDragged,
                                   CGEventType::rightMouseDragged, CGEventType::otherMouseDragged});
inline constexpr std::uint64_t EventTapController::defaultEventMask =
    scrollAndButtonEventMask | pointerMotionEventMask;

}  // namespace tessara
