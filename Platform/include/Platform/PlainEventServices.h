#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Platform/EventServices.h"

namespace tessara {

/// The making of events on a platform whose system has no maker of its own: an event is a plain
/// value there, and its fields are all there is to it. What is special to a platform is where the
/// cursor is, what may refuse, and everything about posting and state.
///
/// A source is one of these services' own; another's ends in `std::bad_cast`. Any thread.
class PlainEventServices : public EventServices {
  public:
    /// Sources of these services never keep the user's own input away: what is said about
    /// suppression has no effect.
    [[nodiscard]] std::unique_ptr<EventSource> makeSource(EventSourceState state) override;
    [[nodiscard]] std::optional<CGEvent> makeEvent() override;
    [[nodiscard]] std::optional<CGEvent> makeScrollWheelEvent(const EventSource& source,
                                                              ScrollEventUnit unit,
                                                              std::int32_t wheel1,
                                                              std::int32_t wheel2) override;
    [[nodiscard]] std::optional<CGEvent> makeMouseEvent(const EventSource& source, CGEventType type,
                                                        CGPoint location,
                                                        std::uint32_t button) override;
    [[nodiscard]] std::optional<CGEvent> makeKeyboardEvent(const EventSource& source,
                                                           std::uint16_t code,
                                                           bool isDown) override;

  protected:
    /// An event without a type, where the cursor is; nothing to refuse. Any thread.
    [[nodiscard]] virtual std::optional<CGEvent> makeBlankEvent() = 0;

  private:
    [[nodiscard]] std::optional<CGEvent> makeFrom(const EventSource& source, CGEventType type);
};

}  // namespace tessara
