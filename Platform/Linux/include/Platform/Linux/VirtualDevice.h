#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <span>
#include <system_error>

#include "Platform/Linux/FrameSink.h"
#include "Platform/Linux/KeyboardState.h"

namespace tessara {

/// A virtual input device that comes and goes, and what it holds down. Whatever is still held is
/// released before it goes: by `close`, and by the destructor.
///
/// One thread at a time: `VirtualMouse` and `VirtualKeyboard` own one each, behind their lock.
class VirtualDevice {
  public:
    /// Brings the device into being; the error says why it cannot.
    using Opener = std::function<std::expected<std::unique_ptr<FrameSink>, std::error_code>()>;

    /// What the device holds down is shown in `held`, which must outlive it.
    VirtualDevice(Opener opener, KeyboardState& held);
    ~VirtualDevice();

    VirtualDevice(const VirtualDevice&) = delete;
    VirtualDevice& operator=(const VirtualDevice&) = delete;

    /// Makes the device; success when it is there already.
    [[nodiscard]] std::expected<void, std::error_code> open();

    /// Releases what is held, a frame for each, and takes the device away. Who has not read the
    /// releases by then does not get them any more.
    void close();

    /// Whether there is a device, be it one that takes no frames any more.
    [[nodiscard]] bool isOpen() const { return sink_ != nullptr; }

    /// Writes a frame, its `SYN_REPORT` last, and notes which keys and buttons it changes. False
    /// when it is no whole frame, there is no device or the write fails: then nothing has changed.
    [[nodiscard]] bool write(std::span<const input_event> frame);

    /// Releases everything that is held. What cannot be released stays known as held.
    void releaseAll();

  private:
    const Opener opener_;
    std::unique_ptr<FrameSink> sink_;
    PressedKeys pressed_;
};

}  // namespace tessara
