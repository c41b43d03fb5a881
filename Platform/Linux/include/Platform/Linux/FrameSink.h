#pragma once

#include <span>

#include <linux/input.h>

namespace tessara {

/// Where the frames of a virtual device go: to the kernel, or to the list of a test. It exists as
/// long as the device does, and a device that goes leaves nothing held.
class FrameSink {
  public:
    virtual ~FrameSink() = default;

    /// Takes a frame whole, its `SYN_REPORT` last; false when it did not. Allocates nothing. One
    /// thread at a time.
    [[nodiscard]] virtual bool write(std::span<const input_event> frame) = 0;
};

}  // namespace tessara
