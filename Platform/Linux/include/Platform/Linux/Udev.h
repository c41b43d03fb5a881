#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct udev;
struct udev_device;
struct udev_monitor;

/// libudev with owners for its objects and values for its answers. It finds devices and hears of
/// them; what a device is good for is for others to judge.
///
/// libudev's objects are not made for several threads: a `Udev` and everything that came of it
/// belong to one thread at a time. Several threads take a `Udev` each; it costs next to nothing.

namespace tessara {

/// One entry of the device tree, as it was when it was looked up or announced.
class UdevDevice final {
  public:
    /// Owns one reference of `device`, which is not null.
    explicit UdevDevice(udev_device* device) noexcept : device_(device) {}

    /// The folder in /sys, which is there no longer after a removal.
    [[nodiscard]] std::string sysPath() const;
    /// The last component of that folder: "event5", "1-1.2".
    [[nodiscard]] std::string sysName() const;
    /// The device node, "/dev/hidraw3"; empty when there is none.
    [[nodiscard]] std::string node() const;
    [[nodiscard]] std::string subsystem() const;
    /// What a monitor announced: "add", "remove", "change", "bind", "unbind", "move". Empty for a
    /// device that was looked up.
    [[nodiscard]] std::string action() const;
    /// Whether the udev daemon has done with it: its rules have run, and permissions are set. Never
    /// true where no daemon runs.
    [[nodiscard]] bool isInitialized() const;

    /// A property of the device's uevent or of udev's database, as "HID_NAME".
    [[nodiscard]] std::optional<std::string> property(const char* name) const;
    /// A text file of the device's folder, without the line's end. None when it cannot be read.
    [[nodiscard]] std::optional<std::string> attribute(const char* name) const;

    /// The nearest ancestor of a subsystem and, unless it is null, of a type: ("usb",
    /// "usb_device").
    [[nodiscard]] std::optional<UdevDevice> parent(const char* subsystem,
                                                   const char* type = nullptr) const;

  private:
    struct Unref {
        void operator()(udev_device* device) const noexcept;
    };

    std::unique_ptr<udev_device, Unref> device_;
};

/// Hears of devices that come and go. It queues what happens from its making on.
class UdevMonitor final {
  public:
    /// Owns one reference of `monitor`, which is not null and listens already.
    explicit UdevMonitor(udev_monitor* monitor) noexcept : monitor_(monitor) {}

    /// Readable when there may be something to receive. It stays the monitor's to close.
    [[nodiscard]] int fileDescriptor() const noexcept;

    /// The next announcement; none when there is none waiting. Never blocks. An error is errno's;
    /// ENOBUFS says that announcements were lost, and that only a new enumeration tells how things
    /// stand.
    [[nodiscard]] std::expected<std::optional<UdevDevice>, int> receive();

  private:
    struct Unref {
        void operator()(udev_monitor* monitor) const noexcept;
    };

    std::unique_ptr<udev_monitor, Unref> monitor_;
};

/// The way in.
class Udev final {
  public:
    Udev();

    /// Whether the udev daemon runs. Where it does not, the kernel's own announcements are what
    /// there is, nodes have the permissions that the kernel gives them, and no device ever counts
    /// as initialised.
    [[nodiscard]] static bool isDaemonRunning();

    /// All devices of a subsystem that are there now, in the order of their folders. Those that the
    /// daemon has not done with are left out where it runs: it announces each when it has.
    [[nodiscard]] std::vector<UdevDevice> devices(const char* subsystem) const;

    /// Listens for devices of these subsystems: to the daemon, which announces a device when its
    /// permissions are set, or to the kernel where no daemon runs. None when the system refuses.
    [[nodiscard]] std::optional<UdevMonitor> monitor(std::span<const char* const> subsystems) const;

  private:
    struct Unref {
        void operator()(udev* context) const noexcept;
    };

    std::unique_ptr<udev, Unref> context_;  // null when there is no memory: nothing is found then
};

}  // namespace tessara
