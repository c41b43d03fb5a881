#pragma once

#include <optional>

#include "TessaraCore/ButtonEvent.h"
#include "TessaraCore/DeviceID.h"
#include "TessaraCore/ScrollInput.h"
#include "TessaraEngine/PointerPipeline.h"

/// From the system's event to the model's value: reading of fields and nothing else. What is done
/// with the value is not decided here. None of these allocates.
namespace tessara {

class CGEvent;
class MonotonicClock;

/// Which numbers of a motion event are read.
enum class MotionSource : std::uint8_t {
    /// What the sensor counted: fields 170 and 171.
    unaccelerated,
    /// What the system has made of it: fields 4 and 5.
    accelerated
};

/// The wheel event as a click of the transformer's. Nothing when the event moves by nothing, and
/// nothing for a continuous scroll: trackpads and free-spinning wheels bring an easing of their
/// own. Of an event that moves on both axes the vertical one counts, and the other is lost. The
/// delta is in lines, the time in milliseconds on the clock's time line.
[[nodiscard]] std::optional<ScrollInput> scrollInput(const CGEvent& event, DeviceID deviceID,
                                                     const MonotonicClock& clock);

/// The press or release of a mouse button, with the modifiers of its flags; nothing for an event of
/// another type. Buttons are numbered from 0: left, right, middle, and the extra ones.
[[nodiscard]] std::optional<ButtonEvent> buttonEvent(const CGEvent& event,
                                                     const MonotonicClock& clock);

/// The motion that the event carries; nothing when it is by exactly 0 on both axes, or not finite
/// on one. The type of the event is not looked at.
[[nodiscard]] std::optional<PointerMotion> pointerMotion(const CGEvent& event, DeviceID deviceID,
                                                         MotionSource source,
                                                         const MonotonicClock& clock);

}  // namespace tessara
