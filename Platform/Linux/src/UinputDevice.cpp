#include "Platform/Linux/UinputDevice.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/LinuxKeyTable.h"
#include "Platform/Linux/VirtualDeviceIdentity.h"
#include "Platform/Linux/VirtualMouse.h"

namespace tessara {
namespace {

using Description = std::unique_ptr<libevdev, decltype(&libevdev_free)>;

Description describe(const VirtualDeviceIdentity& identity) {
    Description description(libevdev_new(), &libevdev_free);
    if (!description) return description;
    libevdev_set_name(description.get(), identity.name);
    libevdev_set_id_bustype(description.get(), VirtualDeviceIdentity::bus);
    libevdev_set_id_vendor(description.get(), VirtualDeviceIdentity::vendor);
    libevdev_set_id_product(description.get(), identity.product);
    libevdev_set_id_version(description.get(), VirtualDeviceIdentity::version);
    return description;
}

bool enable(const Description& description, unsigned type, unsigned code) {
    return description && libevdev_enable_event_code(description.get(), type, code, nullptr) == 0;
}

std::error_code systemError(int number) {
    return {number, std::system_category()};
}

}  // namespace

UinputDevice::UinputDevice(libevdev_uinput* device) : device_(device) {}

UinputDevice::~UinputDevice() {
    libevdev_uinput_destroy(device_);
}

std::expected<std::unique_ptr<FrameSink>, std::error_code> UinputDevice::createMouse() {
    const Description description = describe(virtualMouseIdentity);
    bool isComplete = true;
    for (unsigned button = 0; button < VirtualMouse::buttonCount; ++button)
        isComplete &= enable(description, EV_KEY, BTN_LEFT + button);
    for (const int axis :
         {REL_X, REL_Y, REL_WHEEL, REL_HWHEEL, REL_WHEEL_HI_RES, REL_HWHEEL_HI_RES})
        isComplete &= enable(description, EV_REL, static_cast<unsigned>(axis));
    if (!isComplete) return std::unexpected(systemError(ENOMEM));
    return create(description.get());
}

std::expected<std::unique_ptr<FrameSink>, std::error_code> UinputDevice::createKeyboard() {
    const Description description = describe(virtualKeyboardIdentity);
    bool isComplete = true;
    for (const auto& key : LinuxKeyTable::keys)
        isComplete &= enable(description, EV_KEY, key.kernelCode);
    if (!isComplete) return std::unexpected(systemError(ENOMEM));
    return create(description.get());
}

std::expected<std::unique_ptr<FrameSink>, std::error_code> UinputDevice::create(
    const libevdev* description) {
    libevdev_uinput* device = nullptr;
    const int result =
        libevdev_uinput_create_from_device(description, LIBEVDEV_UINPUT_OPEN_MANAGED, &device);
    if (result != 0) return std::unexpected(systemError(-result));
    return std::unique_ptr<FrameSink>(new UinputDevice(device));
}

bool UinputDevice::write(std::span<const input_event> frame) {
    auto rest = std::as_bytes(frame);
    while (!rest.empty()) {
        const ssize_t written = ::write(libevdev_uinput_get_fd(device_), rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        rest = rest.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool canOpenUinput() {
    return FileDescriptor::open("/dev/uinput", O_WRONLY | O_NONBLOCK).has_value();
}

}  // namespace tessara
