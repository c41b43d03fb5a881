#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Simulated/SimulatedHIDDevice.h"

namespace tessara {

class SimulatedHardware;

/// The keyboard under the user's fingers. Keys are virtual key codes. A modifier key sends
/// `flagsChanged`, any other `keyDown` and `keyUp`, with the flags in force. Keys do not repeat by
/// themselves, and a key may go down twice or up without having been down: what the script says is
/// what is sent. All operations may be called from any thread and return at once.
class SimulatedKeyboard {
  public:
    SimulatedKeyboard(std::shared_ptr<const SimulatedHardware> hardware,
                      std::shared_ptr<SimulatedHIDDevice> device);

    /// The keyboard as the event system has it.
    [[nodiscard]] SimulatedHIDDevice& hid() const { return *device_; }

    /// Pressing Caps Lock turns it on or off; its release says nothing.
    void press(std::uint16_t code);
    void release(std::uint16_t code);
    /// A press and a release.
    void strike(std::uint16_t code);
    /// Turns Caps Lock on or off, by the hardware's account.
    void toggleCapsLock();

  private:
    void sendKey(std::uint16_t code, bool isDown);

    const std::shared_ptr<const SimulatedHardware> hardware_;
    const std::shared_ptr<SimulatedHIDDevice> device_;
};

}  // namespace tessara
