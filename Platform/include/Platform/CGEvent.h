#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// The one event value that the program knows, with its vocabulary: types, numbered fields, flags
/// and places in the stream. Numbers and names are those of the system on which the program was at
/// home first; a platform translates its own events into them and back (`MouseEvents.h`,
/// `ModifierKeys.h` and `ScrollDeltas.h` say how those of one kind are made up). What the program
/// does with an event is not told here.

namespace tessara {

/// A point of the global desktop, in points; y grows downward.
struct CGPoint {
    double x = 0;
    double y = 0;
    bool operator==(const CGPoint&) const = default;
};

/// A display's place on the global desktop, in points. `minX` and `minY` belong to it, `maxX` and
/// `maxY` do not.
struct CGRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    // The first and the last edge in either direction; the last is not part of the display.
    [[nodiscard]] double minX() const { return x; }
    [[nodiscard]] double minY() const { return y; }
    [[nodiscard]] double maxX() const { return x + width; }
    [[nodiscard]] double maxY() const { return y + height; }
    [[nodiscard]] bool isEmpty() const { return width <= 0 || height <= 0; }
    [[nodiscard]] bool contains(CGPoint point) const {
        return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
    }
    bool operator==(const CGRect&) const = default;
};

/// What kind of event it is. Other numbers than these occur, and pass through the program
/// untouched.
enum class CGEventType : std::uint32_t {
    null = 0,
    leftMouseDown = 1,
    leftMouseUp = 2,
    rightMouseDown = 3,
    rightMouseUp = 4,
    /// Motion while no button is down; while one is, it is the drag of such a button.
    mouseMoved = 5,
    leftMouseDragged = 6,
    rightMouseDragged = 7,
    keyDown = 10,
    keyUp = 11,
    /// A modifier key went down or up, or Caps Lock was turned on or off.
    flagsChanged = 12,
    /// A wheel turned, by lines, or something scrolled by pixels.
    scrollWheel = 22,
    otherMouseDown = 25,
    otherMouseUp = 26,
    otherMouseDragged = 27,
    // No events of the user's: notices to a tap that the system has taken it out of the stream.
    tapDisabledByTimeout = 0xFFFFFFFE,
    tapDisabledByUserInput = 0xFFFFFFFF,
};

/// The numbered fields that the program reads or writes. A platform may fill in more of them than
/// an event of its type has use for, and leaves at 0 what it does not know. To the right and down,
/// and for a scroll to the left and up, is above zero.
enum class CGEventField : std::uint32_t {
    /// From 0, the left button, on; on presses, releases and drags.
    mouseEventButtonNumber = 3,
    /// How far the cursor was to move as the system would have it, edges not regarded.
    mouseEventDeltaX = 4,
    mouseEventDeltaY = 5,
    /// A virtual key code: the place of the key on the keyboard, whatever is printed on it.
    keyboardEventKeycode = 9,
    scrollWheelEventDeltaAxis1 = 11,  ///< lines, vertical
    scrollWheelEventDeltaAxis2 = 12,  ///< lines, horizontal
    /// What the poster of an event left in it to know it by; 0 on events of devices.
    eventSourceUserData = 42,
    mouseEventSenderID = 87,  ///< the sending device, on button and drag events of some systems
    /// 0 for a wheel with steps, anything else for scrolling by pixels.
    scrollWheelEventIsContinuous = 88,
    /// Lines with their fraction, as a double.
    scrollWheelEventFixedPtDeltaAxis1 = 93,
    scrollWheelEventFixedPtDeltaAxis2 = 94,
    scrollWheelEventPointDeltaAxis1 = 96,  ///< pixels, vertical
    scrollWheelEventPointDeltaAxis2 = 97,  ///< pixels, horizontal
    /// Of a gesture: `scrollPhaseBegan` and so on; 0 outside of one.
    scrollWheelEventScrollPhase = 99,
    /// Of the run-out behind a gesture; 0 outside of one.
    scrollWheelEventMomentumPhase = 123,
    unacceleratedPointerMovementX = 170,  ///< sensor counts
    unacceleratedPointerMovementY = 171,  ///< sensor counts
};

/// One input event, as it travels between a platform, the tap and the posters: a flat value that is
/// copied freely and never allocates.
///
/// A field holds either an integer or a double, whichever was written last, and can be read as
/// both: an integer reads as the double of the same value, a double as its integer part (limited to
/// the integer's range; 0 when it is not a number). A field that was never written reads as 0.
class CGEvent {
  public:
    CGEventType type = CGEventType::null;
    /// The modifier bits, generic and device-dependent (`CGEventFlagMask`).
    std::uint64_t flags = 0;
    /// Where the cursor is once the event has happened.
    CGPoint location;
    /// When it happened, in nanoseconds on the program's time line; 0 when nobody said.
    std::uint64_t timestampNanos = 0;
    /// Whatever the platform needs to know the event's device again (`HIDEventSystem`); 0 when no
    /// HID event stands behind it. Nobody else reads it.
    std::uint64_t hidEventReference = 0;

    // Reading and writing one field, without a search and without an allocation. A number that is
    // not one of `CGEventField` stops the process.
    [[nodiscard]] std::int64_t integerValue(CGEventField field) const;
    [[nodiscard]] double doubleValue(CGEventField field) const;
    void setIntegerValue(CGEventField field, std::int64_t value);
    void setDoubleValue(CGEventField field, double value);

    /// Fields are the same when their bits are: a not-a-number equals itself, and 0 is not -0.
    bool operator==(const CGEvent&) const = default;

    /// Every field, in rising order of number: what a platform or a printer walks.
    static constexpr std::array allFields{
        CGEventField::mouseEventButtonNumber,
        CGEventField::mouseEventDeltaX,
        CGEventField::mouseEventDeltaY,
        CGEventField::keyboardEventKeycode,
        CGEventField::scrollWheelEventDeltaAxis1,
        CGEventField::scrollWheelEventDeltaAxis2,
        CGEventField::eventSourceUserData,
        CGEventField::mouseEventSenderID,
        CGEventField::scrollWheelEventIsContinuous,
        CGEventField::scrollWheelEventFixedPtDeltaAxis1,
        CGEventField::scrollWheelEventFixedPtDeltaAxis2,
        CGEventField::scrollWheelEventPointDeltaAxis1,
        CGEventField::scrollWheelEventPointDeltaAxis2,
        CGEventField::scrollWheelEventScrollPhase,
        CGEventField::scrollWheelEventMomentumPhase,
        CGEventField::unacceleratedPointerMovementX,
        CGEventField::unacceleratedPointerMovementY,
    };

  private:
    static constexpr std::size_t fieldNumberLimit = 172;
    static constexpr std::uint8_t noSlot = 0xFF;
    static const std::array<std::uint8_t, fieldNumberLimit> slotOfField;

    static constexpr std::size_t slotIndex(CGEventField field);
    [[noreturn]] static void fieldIsUnknown(CGEventField field);
    static std::int64_t integerPart(double value);

    /// One slot per field, holding the bits of the integer or of the double.
    std::array<std::uint64_t, allFields.size()> slots_{};
    /// Bit n is set while slot n holds a double.
    std::uint32_t doubles_ = 0;
};

/// From field number to slot, so that the tap thread finds a field without a search.
inline constexpr std::array<std::uint8_t, CGEvent::fieldNumberLimit> CGEvent::slotOfField = [] {
    std::array<std::uint8_t, fieldNumberLimit> table{};
    table.fill(noSlot);
    for (std::size_t slot = 0; slot < allFields.size(); ++slot)
        table[static_cast<std::size_t>(allFields[slot])] = static_cast<std::uint8_t>(slot);
    return table;
}();

constexpr std::size_t CGEvent::slotIndex(CGEventField field) {
    const auto number = static_cast<std::size_t>(field);
    if (number >= fieldNumberLimit || slotOfField[number] == noSlot) [[unlikely]]
        fieldIsUnknown(field);
    return slotOfField[number];
}

inline std::int64_t CGEvent::integerValue(CGEventField field) const {
    const std::size_t slot = slotIndex(field);
    const bool isDouble = ((doubles_ >> slot) & 1U) != 0;
    return isDouble ? integerPart(std::bit_cast<double>(slots_[slot]))
                    : std::bit_cast<std::int64_t>(slots_[slot]);
}

inline double CGEvent::doubleValue(CGEventField field) const {
    const std::size_t slot = slotIndex(field);
    const bool isDouble = ((doubles_ >> slot) & 1U) != 0;
    return isDouble ? std::bit_cast<double>(slots_[slot])
                    : static_cast<double>(std::bit_cast<std::int64_t>(slots_[slot]));
}

inline void CGEvent::setIntegerValue(CGEventField field, std::int64_t value) {
    const std::size_t slot = slotIndex(field);
    slots_[slot] = std::bit_cast<std::uint64_t>(value);
    doubles_ &= ~(std::uint32_t{1} << slot);
}

inline void CGEvent::setDoubleValue(CGEventField field, double value) {
    const std::size_t slot = slotIndex(field);
    slots_[slot] = std::bit_cast<std::uint64_t>(value);
    doubles_ |= std::uint32_t{1} << slot;
}

/// The bits of `CGEvent::flags` that say which modifier is in force, of whichever key. Below them
/// stands one bit for each physical key (`ModifierKey::deviceFlag`).
namespace CGEventFlagMask {
/// Caps Lock is on. It is a state, not a key that is held.
inline constexpr std::uint64_t alphaShift = 0x10000;
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
/// Option; on most other keyboards Alt.
inline constexpr std::uint64_t alternate = 0x80000;
inline constexpr std::uint64_t command = 0x100000;
/// The Fn key of a keyboard that has one.
inline constexpr std::uint64_t secondaryFn = 0x800000;
}  // namespace CGEventFlagMask

/// Where events enter the stream and where taps look at it, in the order in which an event passes.
enum class CGEventTapLocation : std::uint32_t { hid = 0, session = 1, annotatedSession = 2 };
/// At which end of the taps of one location a new one goes.
enum class CGEventTapPlacement : std::uint32_t { headInsert = 0, tailAppend = 1 };
/// Whether a tap may change and drop events, or only listen.
enum class CGEventTapOptions : std::uint32_t { defaultTap = 0, listenOnly = 1 };

}  // namespace tessara
