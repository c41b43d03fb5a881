#pragma once

#include <cstdint>
#include <optional>

#include "Platform/PlainEventServices.h"

namespace tessara {

class KeyboardState;
class VirtualKeyboard;
class VirtualMouse;

/// Makes events as plain values, and posts them by way of the virtual devices.
///
/// A scroll event turns the virtual mouse's wheels, a button event presses its buttons, a key
/// event or a modifier's change of flags presses the keys of the virtual keyboard; each post is one
/// frame. Other events are not for this way, and a post of them does nothing. Modifiers that an
/// event shows in its flags, and its location, cannot be told to the desktop: it goes by the keys
/// that are down and by its own cursor.
///
/// There is one way in, below the whole desktop: the location of a post makes no difference. The
/// hardware's state is that of the real keyboards, the session's that and the virtual keyboard's.
///
/// Scrolling counts as in the events: positive is up, and left. A continuous event gives pixels
/// (`ScrollToDetents` says how many are a detent), any other one lines, each a detent.
///
/// Any thread, except that posts are not for the tap's: they wait for the lock of a virtual device.
class LinuxEventServices final : public PlainEventServices {
  public:
    /// `hardware` tells of the real keyboards. All must outlive the services.
    LinuxEventServices(VirtualMouse& mouse, VirtualKeyboard& keyboard,
                       const KeyboardState& hardware);

    void post(const CGEvent& event, CGEventTapLocation location) override;
    void leaveToUser(std::uint16_t code) override;
    [[nodiscard]] bool keyState(EventSourceState state, std::uint16_t code) override;
    [[nodiscard]] std::uint64_t flagsState(EventSourceState state) override;

  protected:
    /// The desktop tells nobody where its cursor is: the location is always the origin.
    [[nodiscard]] std::optional<CGEvent> makeBlankEvent() override;

  private:
    VirtualMouse& mouse_;
    VirtualKeyboard& keyboard_;
    const KeyboardState& hardware_;
};

}  // namespace tessara
