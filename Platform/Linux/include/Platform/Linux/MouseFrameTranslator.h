#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include <linux/input.h>

#include "Platform/CGEvent.h"
#include "Platform/EventTaps.h"
#include "Platform/Linux/ScrollToDetents.h"

namespace tessara {

/// Between the kernel's frames and the engine's events, for one mouse: shows each event of a frame
/// to a tap and says what of the frame goes on, in the order in which it came. It reads and writes
/// nothing itself.
///
/// A button that changes is an event, all motion of a frame is one, and each wheel that turns is
/// one. What the frame says besides passes, but for a scan code, which goes with its button. The
/// tap sees the raw counts; of a motion that it lets pass the deltas go on as it has left them.
///
/// Motion with buttons held is a drag of the lowest of them, whether the tap let them pass or not:
/// it is the hand that drags.
///
/// A wheel's high-resolution value, of which the kernel counts 120 for a line, goes with the line
/// in its frame. One without a line is passed while the lines of that wheel are, and is otherwise
/// kept until the next line: lost with that line, or passed together with it. A line that comes
/// without one gets its 120, because readers of a device with such a wheel look at nothing else.
///
/// The release of a button whose press was let through goes through whatever the tap says: it would
/// be held for good.
///
/// One thread at a time. No operation allocates.
class MouseFrameTranslator {
  public:
    /// The most events that a frame may have, its `SYN_REPORT` included. 16 buttons with a scan
    /// code each, two axes and two wheels of both resolutions come to 39.
    static constexpr std::size_t frameCapacity = 64;
    /// How many buttons there are: button n is `BTN_LEFT + n`, as the kernel has the buttons of HID
    /// mice. Other keys pass.
    static constexpr std::size_t buttonCount = 16;

    using Frame = std::span<const input_event>;

    /// `senderID` is the device that the events are of. Types outside of `eventsOfInterest`, a set
    /// as in `EventTapRequest`, are not shown and pass.
    MouseFrameTranslator(std::uint64_t senderID, std::uint64_t eventsOfInterest);

    /// Takes a whole frame, its `SYN_REPORT` last, and answers with the one to write: with one of
    /// the same kind, or with an empty one when nothing is left. The answer is valid until the next
    /// call. `flags` are the modifiers in force.
    [[nodiscard]] Frame translate(Frame frame, std::uint64_t flags, EventTapService::Callback& tap);

    /// The same for a mouse that has gone: its buttons are released. `timestampNanos` is when.
    [[nodiscard]] Frame releaseHeld(std::uint64_t timestampNanos, std::uint64_t flags,
                                    EventTapService::Callback& tap);

    /// Forgets the mouse's state and answers with a frame that releases the buttons whose press was
    /// let through and whose release was not. Shows nothing to a tap.
    [[nodiscard]] Frame releasePassed();

  private:
    /// One of the two wheels.
    struct Wheel {
        WheelCodes codes{};
        CGEventField field{};  ///< of the lines, in the event that is shown
        bool passesHighResolution = false;
        std::int64_t heldBack = 0;  ///< 120ths of a line
    };

    /// What a frame says of motion and wheels, and whether it has been taken care of.
    struct Turn {
        std::int64_t lines = 0;
        std::int64_t highResolution = 0;
        bool hasHighResolution = false;
        bool isDone = false;
    };
    struct Motion {
        std::int64_t x = 0;
        std::int64_t y = 0;
        bool isDone = false;
    };

    /// Room for what is added to a full frame: a second axis, and the high-resolution values.
    static constexpr std::size_t outputCapacity = frameCapacity + 8;

    void changeButton(std::size_t button, const input_event& event);
    void move(Motion& motion);
    void turn(Wheel& wheel, Turn& turn);
    [[nodiscard]] bool show(CGEvent& event);
    [[nodiscard]] CGEvent makeEvent(CGEventType type) const;

    void append(std::uint16_t type, std::uint16_t code, std::int64_t value);
    [[nodiscard]] Frame finished();

    const std::uint64_t senderID_;
    const std::uint64_t eventsOfInterest_;
    std::bitset<buttonCount> held_;    ///< on the mouse
    std::bitset<buttonCount> passed_;  ///< of those, down for whoever reads what is written
    Wheel vertical_{.codes = verticalWheel, .field = CGEventField::scrollWheelEventDeltaAxis1};
    Wheel horizontal_{.codes = horizontalWheel, .field = CGEventField::scrollWheelEventDeltaAxis2};

    // Of the frame in work.
    EventTapService::Callback* tap_ = nullptr;
    std::uint64_t flags_ = 0;
    std::uint64_t timestampNanos_ = 0;
    std::array<input_event, outputCapacity> output_{};
    std::size_t outputSize_ = 0;
};

}  // namespace tessara
