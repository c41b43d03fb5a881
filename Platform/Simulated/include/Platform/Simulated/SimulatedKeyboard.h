#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Simulated/SimulatedHIDDevice.h"

namespace tessara {

class SimulatedHardware;

/// The keyboard under the user's fingers. Keys are virtual key codes. A modifier key sends
/// `flagsChanged`, any other `keyDown` and `keyUp`, with the flags in force. All operations may be
/// called from any thread and return at once.
class SimulatedKeyboard {
  public:
    SimulatedKeyboard(std::shared_ptr<const SimulatedHardware> hardware,
                      std::shared_ptr<SimulatedHIDDevice> device);

    [[nodiscard]] SimulatedHIDDevice& hid() const { return *device_; }

    /// Pressing Caps Lock turns it on or off; its release says nothing.
    void press(std::uint16_t code);
    void release(std::uint16_t code);
    /// A press and a release.
    void strike(std::uint16_t code);
    void toggleCapsLock();

  private:
    void sendKey(std::uint16_t code, bool isDown);

    const std::shared_ptr<const SimulatedHardware> hardware_;
    const std::shared_ptr<SimulatedHIDDevice> device_;
};

}  // namespace tessara
