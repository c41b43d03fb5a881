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
    unaccelerated,  ///< what the sensor counted
    accelerated     ///< what the system has made of it
};

/// The wheel event as a click of the transformer's. Nothing when the event moves by nothing, and
/// nothing for a continuous scroll: trackpads and free-spinning wheels bring an easing of their
/// own. Of an event that moves on both axes the vertical one counts.
[[nodiscard]] std::optional<ScrollInput> scrollInput(const CGEvent& event, DeviceID deviceID,
                                                     const MonotonicClock& clock);

/// The press or release of a mouse button; nothing for an event of another type.
[[nodiscard]] std::optional<ButtonEvent> buttonEvent(const CGEvent& event,
                                                     const MonotonicClock& clock);

/// The motion that the event carries; nothing when it is none, or not finite.
[[nodiscard]] std::optional<PointerMotion> pointerMotion(const CGEvent& event, DeviceID deviceID,
                                                         MotionSource source,
                                                         const MonotonicClock& clock);

}  // namespace tessara
