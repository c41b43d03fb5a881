#include "Platform/Linux/Udev.h"

#include <cerrno>

#include <libudev.h>
#include <unistd.h>

namespace tessara {
namespace {

std::string textOf(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

std::optional<std::string> optionalText(const char* text) {
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

struct UnrefEnumerate {
    void operator()(udev_enumerate* enumerate) const noexcept { udev_enumerate_unref(enumerate); }
};

struct UnrefMonitor {
    void operator()(udev_monitor* monitor) const noexcept { udev_monitor_unref(monitor); }
};

}  // namespace

void UdevDevice::Unref::operator()(udev_device* device) const noexcept {
    udev_device_unref(device);
}

std::string UdevDevice::sysPath() const {
    return textOf(udev_device_get_syspath(device_.get()));
}

std::string UdevDevice::sysName() const {
    return textOf(udev_device_get_sysname(device_.get()));
}

std::string UdevDevice::node() const {
    return textOf(udev_device_get_devnode(device_.get()));
}

std::string UdevDevice::subsystem() const {
    return textOf(udev_device_get_subsystem(device_.get()));
}

std::string UdevDevice::action() const {
    return textOf(udev_device_get_action(device_.get()));
}

bool UdevDevice::isInitialized() const {
    return udev_device_get_is_initialized(device_.get()) > 0;
}

std::optional<std::string> UdevDevice::property(const char* name) const {
    return optionalText(udev_device_get_property_value(device_.get(), name));
}

std::optional<std::string> UdevDevice::attribute(const char* name) const {
    return optionalText(udev_device_get_sysattr_value(device_.get(), name));
}

std::optional<UdevDevice> UdevDevice::parent(const char* subsystem, const char* type) const {
    // The child owns the reference that this returns.
    auto* parent = udev_device_get_parent_with_subsystem_devtype(device_.get(), subsystem, type);
    if (parent == nullptr) return std::nullopt;
    return UdevDevice(udev_device_ref(parent));
}

void UdevMonitor::Unref::operator()(udev_monitor* monitor) const noexcept {
    udev_monitor_unref(monitor);
}

int UdevMonitor::fileDescriptor() const noexcept {
    return udev_monitor_get_fd(monitor_.get());
}

std::expected<std::optional<UdevDevice>, int> UdevMonitor::receive() {
    for (;;) {
        errno = 0;
        auto* device = udev_monitor_receive_device(monitor_.get());
        if (device != nullptr) return UdevDevice(device);
        if (errno == EINTR) continue;
        if (errno == EAGAIN || errno == 0) return std::nullopt;
        return std::unexpected(errno);
    }
}

void Udev::Unref::operator()(udev* context) const noexcept {
    udev_unref(context);
}

Udev::Udev() : context_(udev_new()) {}

bool Udev::isDaemonRunning() {
    return ::access("/run/udev/control", F_OK) == 0;
}

std::vector<UdevDevice> Udev::devices(const char* subsystem) const {
    if (!context_) return {};
    const std::unique_ptr<udev_enumerate, UnrefEnumerate> enumerate(
        udev_enumerate_new(context_.get()));
    if (!enumerate || udev_enumerate_add_match_subsystem(enumerate.get(), subsystem) < 0 ||
        udev_enumerate_scan_devices(enumerate.get()) < 0) {
        return {};
    }
    const bool awaitsDaemon = isDaemonRunning();
    std::vector<UdevDevice> found;
    for (auto* entry = udev_enumerate_get_list_entry(enumerate.get()); entry != nullptr;
         entry = udev_list_entry_get_next(entry)) {
        auto* device =
            udev_device_new_from_syspath(context_.get(), udev_list_entry_get_name(entry));
        if (device == nullptr) continue;  // gone since
        UdevDevice owned(device);
        if (awaitsDaemon && !owned.isInitialized()) continue;
        found.push_back(std::move(owned));
    }
    return found;
}

std::optional<UdevMonitor> Udev::monitor(std::span<const char* const> subsystems) const {
    if (!context_) return std::nullopt;
    std::unique_ptr<udev_monitor, UnrefMonitor> made(
        udev_monitor_new_from_netlink(context_.get(), isDaemonRunning() ? "udev" : "kernel"));
    if (!made) return std::nullopt;
    for (const char* subsystem : subsystems) {
        if (udev_monitor_filter_add_match_subsystem_devtype(made.get(), subsystem, nullptr) < 0) {
            return std::nullopt;
        }
    }
    if (udev_monitor_enable_receiving(made.get()) < 0) return std::nullopt;
    return UdevMonitor(made.release());
}

}  // namespace tessara
