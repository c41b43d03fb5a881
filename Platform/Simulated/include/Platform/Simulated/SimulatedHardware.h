#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/CGEvent.h"

namespace tessara {

class Clock;
class SimulatedDevices;
class SimulatedDisplays;
class SimulatedEventStream;
class SimulatedHIDDevice;
class SimulatedInputState;

/// What every device of the simulated desktop works with: where its events go and what they are
/// made from. Scripts have no use for it: they act with the devices. Constant after construction.
class SimulatedHardware {
  public:
    /// Completes an event that shows the present. False when there is nothing to send after all.
    using Completion = std::move_only_function<bool(CGEvent& event)>;

    /// The clock outlives it.
    SimulatedHardware(const Clock& clock, std::shared_ptr<SimulatedDevices> devices,
                      std::shared_ptr<SimulatedDisplays> displays,
                      std::shared_ptr<SimulatedInputState> hardwareState,
                      std::shared_ptr<SimulatedEventStream> stream);

    /// Sends an event of the device. Its time is now; the rest is made when its turn in the stream
    /// has come: the location is the cursor's, the flags are the hardware's, the sender is named as
    /// `SimulatedDevices::senderReporting` says, and `complete` adds what is particular to it. A
    /// device that is not attached stops the process. Any thread.
    void send(const SimulatedHIDDevice& device, Completion complete) const;

    [[nodiscard]] const std::shared_ptr<SimulatedDisplays>& displays() const { return displays_; }
    [[nodiscard]] const std::shared_ptr<SimulatedInputState>& state() const { return state_; }
    [[nodiscard]] SimulatedDevices& devices() const { return *devices_; }

  private:
    const Clock& clock_;
    const std::shared_ptr<SimulatedDevices> devices_;
    const std::shared_ptr<SimulatedDisplays> displays_;
    const std::shared_ptr<SimulatedInputState> state_;
    const std::shared_ptr<SimulatedEventStream> stream_;
};

}  // namespace tessara
