#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/EventTaps.h"

namespace tessara {

class KeyboardState;
class SuspendMonitor;
class TapCircumstances;
struct VirtualDevices;

/// A kind of input device by its numbers on USB.
struct InputDeviceMatch {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    bool operator==(const InputDeviceMatch&) const = default;
};

/// Taps on the kernel's mice. While a tap is enabled, each pointer node of the wanted mice is
/// grabbed: nobody else hears of it any more, its frames go through the tap's callback, and what
/// the callback lets pass is written to the virtual mouse. Every other node is left alone; the
/// keyboards are read along, without a grab, for the modifiers of the events.
///
/// - All of it happens on the tap's queue, which must be one of a `ThreadedDispatcher`. No event
///   allocates or waits there.
/// - A mouse is grabbed when none of its buttons is down, so that nobody is left with a button that
///   is never released; until then it works as if there were no tap. So it does when it cannot be
///   opened or grabbed, which is tried again every few seconds and at each change of the devices.
/// - A mouse whose node this user may not read any more is given back within seconds, and told as
///   `tapDisabledByUserInput`. The system takes the right away when somebody else's session comes
///   to the front, and hands it out again when this one does.
/// - A mouse with more than buttons, motion and wheels on its pointer node is not grabbed: the rest
///   would be lost. Neither is one of another seat than the first, to which the virtual mouse
///   belongs, nor any while the virtual mouse cannot be written to.
/// - When a grab ends, buttons that are down on the virtual mouse because the tap let them pass are
///   released there. A finger that is still on one has then let go as far as the desktop knows; the
///   release that the mouse itself reports later finds no press to go with, and does nothing.
/// - A mouse that goes away counts as having its buttons released, through the tap.
/// - Reports that the kernel dropped because the queue was late cannot be had again. The callback
///   is told `tapDisabledByTimeout`, and then gets the buttons' changes as a frame. A node that
///   somebody revoked, while its mouse is still there, is told as `tapDisabledByUserInput`.
///
/// After a sleep of the computer the devices are enumerated anew.
class LinuxEventTapService final : public EventTapService {
  public:
    /// Taps are for mice of these numbers, each node of which is treated alone. What they let pass
    /// goes to `output`. The state of the keyboards is kept in `keyboards` while a tap is enabled,
    /// as far as this user may read them: modifiers of others are never seen. `wakings` may be null
    /// and outlives the service otherwise.
    LinuxEventTapService(std::vector<InputDeviceMatch> mice, std::shared_ptr<VirtualDevices> output,
                         std::shared_ptr<KeyboardState> keyboards, SuspendMonitor* wakings);
    ~LinuxEventTapService() override;

    LinuxEventTapService(const LinuxEventTapService&) = delete;
    LinuxEventTapService& operator=(const LinuxEventTapService&) = delete;

    /// Makes the virtual devices, if they are not there. Nothing when that fails, of which
    /// `lastRefusal` tells, and for a tap that only listens, of which there are none here. Where in
    /// the stream it is to be makes no difference: there is one place, ahead of all readers.
    [[nodiscard]] std::unique_ptr<EventTap> makeTap(const EventTapRequest& request,
                                                    std::shared_ptr<DispatchQueue> queue,
                                                    Callback callback) override;

    /// Names the node and the system's reason, and of a node that another program has grabbed the
    /// programs that have it open, as far as this user may see them.
    [[nodiscard]] std::optional<std::string> lastRefusal() const override;

  private:
    const std::shared_ptr<TapCircumstances> circumstances_;
    SuspendMonitor* const wakings_;
};

}  // namespace tessara
