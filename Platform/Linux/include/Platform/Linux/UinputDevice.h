#pragma once

#include <expected>
#include <memory>
#include <string>
#include <system_error>

#include "Platform/Linux/FrameSink.h"

struct libevdev;
struct libevdev_uinput;

namespace tessara {

/// A virtual input device of the kernel's, made through uinput. The kernel takes it away, and
/// releases what it holds, when this object goes, and also when the process dies in whatever way:
/// its descriptor closes then.
class UinputDevice final : public FrameSink {
  public:
    /// A mouse with the buttons of `VirtualMouse`, two axes and two wheels of both resolutions.
    [[nodiscard]] static std::expected<std::unique_ptr<FrameSink>, std::error_code> createMouse();

    /// A keyboard with all keys of `LinuxKeyTable`.
    [[nodiscard]] static std::expected<std::unique_ptr<FrameSink>, std::error_code>
    createKeyboard();

    ~UinputDevice() override;

    UinputDevice(const UinputDevice&) = delete;
    UinputDevice& operator=(const UinputDevice&) = delete;

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
