#pragma once

#include <expected>
#include <memory>
#include <string>
#include <system_error>

#include "Platform/Linux/FrameSink.h"

struct libevdev;
struct libevdev_uinput;

namespace tessara {

/// A virtual input device of the kernel's, made through /dev/uinput (Documentation/input/uinput.rst
/// of the kernel). The kernel takes it away, and releases what it holds, when this object goes, and
/// also when the process dies in whatever way: its descriptor closes then. Programs that are
/// started do not inherit it.
///
/// With the device goes what its readers have not read yet, the releases too: a node that has gone
/// answers nothing but that it has. Desktops let go of what was down on it by themselves. For other
/// readers' sake a device stays for a moment after the last release, which is for its owner to see
/// to.
///
/// It keeps no account of what is down; `VirtualDevice` does.
class UinputDevice final : public FrameSink {
  public:
    // The node is there when these return, but the desktop hears of it from udev a little later.
    // The error is errno's: ENOENT without the kernel's module, EACCES without the right.

    /// A mouse with the buttons of `VirtualMouse`, two axes and two wheels of both resolutions.
    [[nodiscard]] static std::expected<std::unique_ptr<FrameSink>, std::error_code> createMouse();

    /// A keyboard with all keys of `LinuxKeyTable`.
    [[nodiscard]] static std::expected<std::unique_ptr<FrameSink>, std::error_code>
    createKeyboard();

    ~UinputDevice() override;

    UinputDevice(const UinputDevice&) = delete;
    UinputDevice& operator=(const UinputDevice&) = delete;

    // In one write(2), unless the kernel takes less.
    [[nodiscard]] bool write(std::span<const input_event> frame) override;

  private:
    explicit UinputDevice(libevdev_uinput* device);
    static std::expected<std::unique_ptr<FrameSink>, std::error_code> create(
        const libevdev* description);

    libevdev_uinput* const device_;
};

/// Whether this user may make virtual devices: whether /dev/uinput can be opened for writing now.
[[nodiscard]] bool canOpenUinput();

}  // namespace tessara
