#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Platform/PlainEventServices.h"
#include "Platform/Simulated/SimulatedRefusal.h"

namespace tessara {

class Clock;
class SimulatedDisplays;
class SimulatedEventStream;
class SimulatedInputState;
class SimulatedPermissions;

/// Makes and posts events on the simulated desktop, as a program does; what devices send comes from
/// `SimulatedPointingDevice` and `SimulatedKeyboard`. A posted event without a time gets the
/// present one; without Accessibility it goes nowhere. A source's private state knows of no key and
/// no flag. All operations may be called from any thread.
class SimulatedEventServices final : public PlainEventServices {
  public:
    /// Where posted events enter (`stream`), and what questions are answered from: the hardware's
    /// account of keys and flags, and the session's. The clock outlives it.
    SimulatedEventServices(const Clock& clock, std::shared_ptr<SimulatedPermissions> permissions,
                           std::shared_ptr<SimulatedDisplays> displays,
                           std::shared_ptr<SimulatedInputState> hardwareState,
                           std::shared_ptr<SimulatedInputState> sessionState,
                           std::shared_ptr<SimulatedEventStream> stream);

    /// Makes the next `count` sources fail: none are made, and callers drop what they had in mind.
    void refuseSources(std::int64_t count = SimulatedRefusal::always);

    /// Makes the next `count` events fail, of whatever kind.
    void refuseEvents(std::int64_t count = SimulatedRefusal::always);

    [[nodiscard]] std::unique_ptr<EventSource> makeSource(EventSourceState state) override;
    void post(const CGEvent& event, CGEventTapLocation location) override;
    [[nodiscard]] bool keyState(EventSourceState state, std::uint16_t code) override;
    [[nodiscard]] std::uint64_t flagsState(EventSourceState state) override;

  protected:
    [[nodiscard]] std::optional<CGEvent> makeBlankEvent() override;

  private:
    const Clock& clock_;
    const std::shared_ptr<SimulatedPermissions> permissions_;
    const std::shared_ptr<SimulatedDisplays> displays_;
    const std::shared_ptr<SimulatedInputState> hardwareState_;
    const std::shared_ptr<SimulatedInputState> sessionState_;
    const std::shared_ptr<SimulatedEventStream> stream_;
    SimulatedRefusal sources_;
    SimulatedRefusal events_;
};

}  // namespace tessara
