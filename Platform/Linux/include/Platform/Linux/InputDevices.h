#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What there is of input devices on this computer, as /sys describes them: which node belongs to
/// what device, and what it is good for. Reading events and taking devices over is for others.

namespace tessara {

class Udev;
class UdevDevice;

/// What an input node is good for, as far as the program cares.
enum class InputRole : std::uint8_t {
    pointer,   ///< relative motion and a left button: a mouse
    keyboard,  ///< modifier keys, whatever else there is
    other,     ///< everything else: power buttons, touch pads, game controllers
};

/// One evdev node and the device behind it. A mouse with keys or with a consumer control has
/// several nodes, which share its numbers and differ in their role.
///
/// It is a description of what was there once, and holds nothing open.
struct InputDevice {
    /// New at each plug, never 0 and never used again until the computer is started anew. It is the
    /// sender of the node's events and the registry number of its service.
    std::uint64_t id = 0;
    std::string node;     ///< "/dev/input/event5"
    std::string sysPath;  ///< the node's folder in /sys, unique to this plug
    std::string name;     ///< the device's own words for itself; may be empty
    std::string phys;     ///< where it is plugged in, in the kernel's words; may be empty
    /// Three numbers of the kernel's `struct input_id`: the bus as one of BUS_USB and the like, and
    /// on USB the two by which makers tell their products apart. 0 where the kernel does not say.
    std::uint16_t bus = 0;
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    InputRole role = InputRole::other;
    /// One of this program's own virtual devices, which are never read.
    bool isOurs = false;
    /// A pointer whose every key is a mouse button and whose every axis is one that the virtual
    /// mouse has too. Others cannot be taken over without losing something.
    bool isPassable = false;
    /// The screen and keyboard that it goes with, by udev's name, where a computer has several.
    std::string seat;
    /// The driver of the HID device above it; empty where there is none.
    std::string hidDriver;

    bool operator==(const InputDevice&) const = default;
};

/// The seat of devices that nobody has put elsewhere, all virtual ones among them.
inline constexpr const char* firstSeat = "seat0";

/// The bits of one of the kernel's capability files, "capabilities/key" and the like: hexadecimal
/// words of `unsigned long`, the highest first, leading words of nothing left out. Bit n stands for
/// the event code n of the file's type.
class CapabilityBits {
  public:
    /// Anything that is no such text counts as no bits.
    explicit CapabilityBits(const std::string& text);

    [[nodiscard]] bool has(unsigned bit) const;
    [[nodiscard]] bool areNone() const;
    /// Whether there is a set bit outside of `first` to `last`.
    [[nodiscard]] bool hasOutside(unsigned first, unsigned last) const;

  private:
    std::vector<std::uint64_t> words_;  // the lowest first
};

/// The number of the input device in a folder of /sys, "…/input/input37/event5", as an identifier:
/// it is known of a device that has gone, too. None for another folder.
[[nodiscard]] std::optional<std::uint64_t> inputDeviceID(const std::string& sysPath);

/// What a device with these keys (buttons among them) and relative axes is good for.
[[nodiscard]] InputRole inputRole(const CapabilityBits& keys, const CapabilityBits& relativeAxes);

/// Describes an evdev node; none for another kind of device, and for one that has gone. Blocks for
/// as long as files of /sys take.
[[nodiscard]] std::optional<InputDevice> describeInputDevice(const UdevDevice& device);

/// All evdev nodes there are now, this program's own too. As above.
[[nodiscard]] std::vector<InputDevice> inputDevices(const Udev& udev);

/// Whether a driver of the kernel's that is made for this device sets the wheel's resolution. The
/// program then leaves it alone, for the two would not know of each other.
[[nodiscard]] bool kernelManagesWheel(const InputDevice& device);

}  // namespace tessara
