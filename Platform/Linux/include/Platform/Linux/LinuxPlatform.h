#pragma once

#include <memory>
#include <vector>

#include "Platform/Linux/LinuxEventTapService.h"

namespace tessara {

class DispatchQueue;
class Dispatcher;
class EventServices;
class HIDEventSystem;

/// Everything of this platform, made in the right order and handed out as the seam's interfaces:
/// what a program needs for an engine. It starts nothing that touches the user's input; that begins
/// with a tap. Nothing of it may be asked of after it is gone.
///
/// The desktop's part (applications, Shortcuts, starting at login) and the mouse's own protocol are
/// not in it: a program may do without them.
class LinuxPlatform {
  public:
    /// `mice` are those that taps take over. Runs on real queues, so the dispatcher is a
    /// `ThreadedDispatcher`; it outlives the platform.
    LinuxPlatform(Dispatcher& dispatcher, std::vector<InputDeviceMatch> mice);
    ~LinuxPlatform();

    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    // Each lives as long as the platform, and says itself on which threads it is used.

    [[nodiscard]] EventTapService& eventTaps();
    [[nodiscard]] EventServices& events();
    [[nodiscard]] HIDEventSystem& hidEvents();

    /// Whether a driver of the kernel's sets the wheel's resolution of one of the mice that are
    /// plugged in: the program must leave it alone then. Blocks for as long as files of /sys take.
    [[nodiscard]] bool kernelManagesWheel() const;

    /// Hears when the computer wakes, for whoever has told the mouse something that it may have
    /// forgotten.
    [[nodiscard]] SuspendMonitor& suspend();

    /// The virtual mouse and the virtual keyboard: made by the first tap, released and taken away
    /// with the platform.
    [[nodiscard]] VirtualDevices& output();

  private:
    struct Services;
    const std::unique_ptr<Services> services_;
};

}  // namespace tessara
