#pragma once

#include <span>

#include <linux/input.h>

namespace tessara {

/// Where the frames of a virtual device go: to the kernel, or to the list of a test. It exists as
/// long as the device does, and a device that goes leaves nothing held. What a frame says is no
/// concern of its: it neither checks nor changes one.
///
/// A frame is what happened at one moment, events and then a `SYN_REPORT` (the kernel's
/// Documentation/input/event-codes.rst). The times of the events do not matter: the kernel sets
/// them.
class FrameSink {
  public:
    virtual ~FrameSink() = default;

    /// Takes a frame whole, its `SYN_REPORT` last; false when it did not, and then an unknown part
    /// of it may have gone through. Allocates nothing and does not wait for readers. One thread at
    /// a time.
    [[nodiscard]] virtual bool write(std::span<const input_event> frame) = 0;
};

}  // namespace tessara
