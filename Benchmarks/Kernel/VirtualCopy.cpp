#include "VirtualCopy.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

namespace tessara::benchmarking {
namespace {

void require(int result, const std::string& what) {
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

}  // namespace

VirtualCopy::VirtualCopy(const std::string& node, const std::string& name)
    : fd_(::open(node.c_str(), O_RDONLY | O_CLOEXEC)) {
    require(fd_ < 0 ? -errno : 0, node);
    require(libevdev_new_from_fd(fd_, &device_), "reading what the device can do");
    libevdev_set_name(device_, name.c_str());
    require(libevdev_uinput_create_from_device(device_, LIBEVDEV_UINPUT_OPEN_MANAGED, &copy_),
            "making a virtual device");
}

VirtualCopy::~VirtualCopy() {
    libevdev_uinput_destroy(copy_);
    libevdev_free(device_);
    ::close(fd_);
}

std::string VirtualCopy::node() const {
    return libevdev_uinput_get_devnode(copy_);
}

void VirtualCopy::write(std::span<const input_event> events) const {
    const ssize_t written =
        ::write(libevdev_uinput_get_fd(copy_), events.data(), events.size_bytes());
    require(written < 0 ? -errno : 0, "writing to a virtual device");
}

}  // namespace tessara::benchmarking
