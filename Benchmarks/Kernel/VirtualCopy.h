#pragma once

#include <memory>
#include <span>
#include <string>

#include <linux/input.h>

struct libevdev;
struct libevdev_uinput;

namespace tessara::benchmarking {

/// A virtual device with the abilities of a real one, for what the program is measured against.
/// Exists as long as this does. One thread.
class VirtualCopy {
  public:
    /// Of the device behind `node`, which stays open and is not grabbed. Throws
    /// `std::system_error`.
    VirtualCopy(const std::string& node, const std::string& name);
    ~VirtualCopy();

    VirtualCopy(const VirtualCopy&) = delete;
    VirtualCopy& operator=(const VirtualCopy&) = delete;

    /// The descriptor of the real device, blocking.
    [[nodiscard]] int realDevice() const { return fd_; }
    /// As "/dev/input/event7".
    [[nodiscard]] std::string node() const;

    /// Writes events in one piece. Throws `std::system_error`.
    void write(std::span<const input_event> events) const;

  private:
    const int fd_;
    libevdev* device_ = nullptr;
    libevdev_uinput* copy_ = nullptr;
};

}  // namespace tessara::benchmarking
