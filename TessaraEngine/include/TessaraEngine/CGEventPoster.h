#pragma once

#include <cstdint>
#include <optional>

#include "Platform/CGEvent.h"
#include "TessaraEngine/EventPosting.h"
#include "TessaraEngine/KeyboardEventPoster.h"

namespace tessara {

class EventServices;

/// Posts what the pipelines make into the system's event stream. Every event carries the tag by
/// which the tap knows it again and lets it through.
///
/// Glides and buttons share no state, so that the queues that post them do not wait for each other;
/// each event is made from a source of its own. Keys go through one `KeyboardEventPoster`.
///
/// Nothing is reported: an event that the system does not make is dropped. Any thread but the
/// tap's. What to post, and when, is not decided here.
class CGEventPoster final : public EventPosting {
  public:
    /// Events enter the stream at `postLocation`. `services` must outlive the poster.
    CGEventPoster(EventServices& services, CGEventTapLocation postLocation);

    /// The event of one scroll step, continuous and in pixels, with its gesture's phase; nothing
    /// when the system makes none. A `pixelDelta` beyond 32 bits is limited where the event's
    /// making has no room for it, and whole in the pixel fields. Any thread.
    [[nodiscard]] std::optional<CGEvent> makeScrollEvent(ScrollAxis axis, std::int64_t pixelDelta,
                                                         ScrollPhase phase,
                                                         ModifierFlags modifiers) const;

    void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                        ModifierFlags modifiers) override;
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) override;
    /// The button goes down or up where the cursor is. A number above 2^32 - 1 stops the process.
    void postMouseButton(std::int64_t number, bool isDown) override;

  private:
    EventServices& services_;
    const CGEventTapLocation postLocation_;
    KeyboardEventPoster keyboard_;
};

}  // namespace tessara
