#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "Platform/CGEvent.h"

namespace tessara {

/// Whose idea of the keys and modifiers an event source or a question is about.
enum class EventSourceState : std::int32_t {
    privateState = -1,    ///< the source's own
    combinedSession = 0,  ///< everything in the session, posted events included
    hidSystem = 1,        ///< the hardware's, and events posted at the HID location
};

/// What an event is made from. Events inherit the source's user data in field 42.
class EventSource {
  public:
    virtual ~EventSource() = default;

    /// Marks the events that are made from it from now on.
    virtual void setUserData(std::int64_t value) = 0;

    /// Which local events stay permitted while events of this source are posted: a set of bits (1
    /// mouse, 2 keyboard, 4 system-defined) for one suppression state (0 within the suppression
    /// interval, 1 during a remote drag). A platform whose posting never mutes the user's own input
    /// does nothing here.
    virtual void setLocalEventsFilterDuringSuppressionState(std::uint32_t filter,
                                                            std::uint32_t state) = 0;

    /// How long a post or a warp keeps local events away, in seconds. As above.
    virtual void setLocalEventsSuppressionInterval(double seconds) = 0;
};

/// The unit in which a scroll event's deltas are given at its making.
enum class ScrollEventUnit : std::uint32_t { pixel = 0, line = 1 };

/// Makes and posts events, and says which keys are down. Every operation may be called from any
/// thread, from several at once. Anything that makes a thing may refuse: the caller then drops what
/// it had in mind, silently.
class EventServices {
  public:
    virtual ~EventServices() = default;

    /// A source with the user data 0; null when it is refused. Its events begin with the flags that
    /// are in force by the state's account.
    [[nodiscard]] virtual std::unique_ptr<EventSource> makeSource(EventSourceState state) = 0;

    /// A bare event that shows the present: its location is the cursor's.
    [[nodiscard]] virtual std::optional<CGEvent> makeEvent() = 0;

    /// A scroll event with two wheels, `wheel1` vertical and `wheel2` horizontal, in `unit`s.
    [[nodiscard]] virtual std::optional<CGEvent> makeScrollWheelEvent(const EventSource& source,
                                                                      ScrollEventUnit unit,
                                                                      std::int32_t wheel1,
                                                                      std::int32_t wheel2) = 0;

    /// A mouse event at a place of the caller's choice, with `button` (from 0, the left one) as its
    /// number. Posted, it takes the cursor there.
    [[nodiscard]] virtual std::optional<CGEvent> makeMouseEvent(const EventSource& source,
                                                                CGEventType type, CGPoint location,
                                                                std::uint32_t button) = 0;

    /// `code` is a virtual key code. The type is `keyDown` or `keyUp`; the caller may change it to
    /// `flagsChanged` for a modifier.
    [[nodiscard]] virtual std::optional<CGEvent> makeKeyboardEvent(const EventSource& source,
                                                                   std::uint16_t code,
                                                                   bool isDown) = 0;

    /// Sends the event into the stream at `location`; taps further down see it. Does not wait for
    /// them, keeps the order of the posts of one thread, and tells of no failure: what the system
    /// does not take is gone.
    virtual void post(const CGEvent& event, CGEventTapLocation location) = 0;

    /// Gives up a key that the program has pressed and the user holds by now: it stays down until
    /// the user lets go. Where a key is down or up, whoever pressed it, there is nothing to do;
    /// where the program has a keyboard of its own, the key goes up on that one.
    virtual void leaveToUser(std::uint16_t /*code*/) {}

    /// Whether the key is down by that state's account. What was posted a moment ago may not count
    /// yet.
    [[nodiscard]] virtual bool keyState(EventSourceState state, std::uint16_t code) = 0;

    /// The modifier bits in force by that state's account.
    [[nodiscard]] virtual std::uint64_t flagsState(EventSourceState state) = 0;
};

}  // namespace tessara
