#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {

class SimulatedApplication;
class SimulatedDisplays;
class SimulatedEventTaps;
class SimulatedInputState;
class SimulatedTap;
class SimulatedWorkspace;

/// What became of one event that entered the stream.
struct SimulatedPassage {
    /// The event as it entered.
    CGEvent entered;
    CGEventTapLocation location = CGEventTapLocation::hid;
    /// True for what a program posted, false for what a device sent.
    bool isPosted = false;
    /// The event as it came out; nothing when a tap dropped it.
    std::optional<CGEvent> delivered;
    /// The application that received it; null when none was in front or nothing came out.
    const SimulatedApplication* application = nullptr;
};

/// What of the desktop the event stream reads and changes.
struct SimulatedEventStreamParts {
    std::shared_ptr<SimulatedEventTaps> taps;
    std::shared_ptr<SimulatedInputState> hardwareState;
    std::shared_ptr<SimulatedInputState> sessionState;
    std::shared_ptr<SimulatedDisplays> displays;
    std::shared_ptr<SimulatedWorkspace> workspace;
};

/// The window server of the simulated desktop: takes events in one line, leads each through the
/// taps before it and hands what is left to the application in front. The next event begins only
/// when the one before is through, so all taps see all events in one order.
///
/// An event waits for the verdict of a tap without keeping a thread: the tap's callback is a block
/// on the tap's queue, and what follows is a block on the window server's. No lock is held while
/// a callback runs. A listen-only tap is given a copy, and nobody waits for it.
///
/// What an event changes: one that enters at `hid` counts for the hardware's key, button and flag
/// state as it enters. Any that comes through the taps counts for the session's, moves the cursor
/// if it is a mouse event, and goes to the application in front. One that is dropped does neither.
///
/// All operations may be called from any thread.
class SimulatedEventStream : public std::enable_shared_from_this<SimulatedEventStream> {
  public:
    /// Makes an event once its turn has come, when all before it are through; nothing, when there
    /// is none to enter after all. Called on the window server's queue.
    using Maker = std::move_only_function<std::optional<CGEvent>()>;

    SimulatedEventStream(std::shared_ptr<DispatchQueue> windowServer,
                         SimulatedEventStreamParts parts);
    ~SimulatedEventStream();

    SimulatedEventStream(const SimulatedEventStream&) = delete;
    SimulatedEventStream& operator=(const SimulatedEventStream&) = delete;

    /// Lets a device's event enter, at `hid`.
    void enterFromDevice(Maker make);

    /// Lets a posted event enter at `location`, as it is.
    void enterPosted(const CGEvent& event, CGEventTapLocation location);

    /// The system takes all enabled taps that may change events out of the stream, `reason` being
    /// `tapDisabledByTimeout` or `tapDisabledByUserInput`; their callbacks are told so. An event
    /// that waits for the verdict of one of them goes on unchanged, and the verdict is ignored when
    /// it comes.
    void disableTaps(CGEventType reason);

    /// Runs the desktop until every event that has entered is through, in virtual time too. What
    /// listen-only taps were given may still wait in their queues. Not to be called on the window
    /// server's queue or on a tap's.
    void settle();

    /// What became of every event so far, oldest first. It grows until it is taken: a program that
    /// runs for long takes it now and then.
    [[nodiscard]] std::vector<SimulatedPassage> journal() const;

    /// As `journal`, and forgets it.
    std::vector<SimulatedPassage> takeJournal();

  private:
    struct Arrival {
        Maker make;
        CGEventTapLocation location = CGEventTapLocation::hid;
        bool isPosted = false;
    };
    struct Journey;
    struct Wait;

    void enter(Arrival arrival);
    void pump();
    void begin(Arrival arrival);
    void walk();
    void waitFor(std::shared_ptr<SimulatedTap> tap);
    void resumeLater(std::shared_ptr<Wait> wait, bool passes, std::optional<CGEvent> changed);
    void resume(const Wait& wait, bool passes, const std::optional<CGEvent>& changed);
    void releaseFrom(const SimulatedTap& tap);
    void finish(bool isThrough);
    void deliver(SimulatedPassage& passage);

    const std::shared_ptr<DispatchQueue> windowServer_;
    const SimulatedEventStreamParts parts_;

    // Owned by the window server's queue.
    std::deque<Arrival> arrivals_;
    std::unique_ptr<Journey> journey_;  // null between two events

    mutable Mutex mutex_;
    std::shared_ptr<Wait> wait_ TESSARA_GUARDED_BY(mutex_);  // null unless a verdict is awaited
    std::vector<SimulatedPassage> journal_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
