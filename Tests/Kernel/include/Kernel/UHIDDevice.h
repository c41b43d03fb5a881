#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tessara {
class Dispatcher;
}

namespace tessara::testing {

/// What a HID device tells the kernel of itself when it is plugged in.
struct UHIDDescription {
    std::string name;
    /// Where it is plugged in, as "usb-0000:00:14.0-1/input0"; one place holds one device.
    std::string place;
    std::string serialNumber = {};
    std::uint16_t vendorID = 0;
    std::uint16_t productID = 0;
    std::vector<std::uint8_t> reportDescriptor = {};
};

/// One HID interface that the kernel takes for a device on USB: this side is the device's, the
/// kernel makes the event and hidraw nodes. Plugged in until `unplug` or its end.
///
/// What the kernel asks is answered on a queue of its own; reports may be sent from any thread.
class UHIDDevice {
  public:
    /// Takes a whole output report, its id in front where the device has ids. On the queue.
    using OutputHandler = std::function<void(std::span<const std::uint8_t> report)>;

    /// Plugs it in. Throws `std::system_error` when the kernel takes no such device.
    UHIDDevice(Dispatcher& dispatcher, UHIDDescription description, OutputHandler onOutput);
    /// Unplugs it, and waits until its nodes are gone.
    ~UHIDDevice();

    UHIDDevice(const UHIDDevice&) = delete;
    UHIDDevice& operator=(const UHIDDevice&) = delete;

    /// Waits until the kernel and udev have its nodes ready. Throws `std::runtime_error` when they
    /// do not come.
    void awaitNodes();

    /// Unplugs it without waiting for anything.
    void unplug();

    /// Sends one input report, its id in front where the device has ids. Of a device that is
    /// unplugged it is lost.
    void send(std::span<const std::uint8_t> report) const;

    // Once they are awaited.

    /// As "/dev/input/event3"; empty for an interface that is no input to the kernel.
    [[nodiscard]] const std::string& eventNode() const { return eventNode_; }
    /// As "/dev/hidraw0".
    [[nodiscard]] const std::string& hidrawNode() const { return hidrawNode_; }

  private:
    class Connection;

    const UHIDDescription description_;
    const std::shared_ptr<Connection> connection_;
    std::string eventNode_;
    std::string hidrawNode_;
};

}  // namespace tessara::testing
