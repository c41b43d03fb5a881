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

/// Makes and posts events on the simulated desktop. A posted event without a time gets the present
/// one; without Accessibility it goes nowhere. All operations may be called from any thread.
class SimulatedEventServices final : public PlainEventServices {
  public:
    SimulatedEventServices(const Clock& clock, std::shared_ptr<SimulatedPermissions> permissions,
                           std::shared_ptr<SimulatedDisplays> displays,
                           std::shared_ptr<SimulatedInputState> hardwareState,
                           std::shared_ptr<SimulatedInputState> sessionState,
                           std::shared_ptr<SimulatedEventStream> stream);

    /// Makes the next `count` sources fail.
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
