#pragma once

#include <cstdint>

#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"
#include "TessaraCore/ScrollPlan.h"

namespace tessara {

/// The sink for all input that the program makes itself: glides, keys and buttons.
///
/// The pipelines know nothing beyond it, so that they run without a platform. It is not for input
/// that is merely passed on: that never leaves the system's own event. Nothing is reported back,
/// since on the event path there is nobody to tell. An event that cannot be posted is dropped.
///
/// All operations may be called from any thread. The pipelines call them on their own queues only,
/// never on the tap thread and never with a lock held, so that a slow sink cannot stall the user's
/// input.
class EventPosting {
  public:
    virtual ~EventPosting() = default;

    EventPosting(const EventPosting&) = delete;
    EventPosting& operator=(const EventPosting&) = delete;

    /// Scrolls by `pixelDelta` pixels along `axis`, in one step of a gesture. The sign is the
    /// direction. A step that ends a gesture moves by 0, and no other does.
    virtual void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                                ModifierFlags modifiers) = 0;

    /// Presses or releases the key with the virtual key code `code` under these modifiers. A
    /// release undoes what its press did to the modifiers.
    virtual void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) = 0;

    /// Presses or releases a mouse button: 0 left, 1 right, 2 middle, 3 and up the extra buttons.
    virtual void postMouseButton(std::int64_t number, bool isDown) = 0;

  protected:
    EventPosting() = default;
};

}  // namespace tessara
