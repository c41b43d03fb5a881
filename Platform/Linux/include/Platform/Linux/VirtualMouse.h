#pragma once

#include <cstdint>
#include <expected>
#include <span>
#include <system_error>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/Linux/ScrollToDetents.h"
#include "Platform/Linux/VirtualDevice.h"

namespace tessara {

/// The mouse that the rest of the system sees in place of the grabbed one: what the tap lets pass
/// is written to it, and what the program makes up.
///
/// It does not exist until `open`. Make it before the grab, so that the desktop has met it when the
/// first event comes; it may stay when a tap goes. Any thread; a lock is held across the write, for
/// no longer than the kernel takes to hand a frame on.
class VirtualMouse {
  public:
    /// Button n is `BTN_LEFT + n`, as the kernel has it for real mice.
    static constexpr std::int64_t buttonCount = 16;

    /// A mouse of the kernel's.
    VirtualMouse();
    /// A mouse on another output, such as a test's.
    explicit VirtualMouse(VirtualDevice::Opener opener);

    /// Makes the device; success when it is there already.
    [[nodiscard]] std::expected<void, std::error_code> open();

    /// Releases what is held and takes the device away. Frames that come later are dropped.
    void close();

    /// Writes a frame, its `SYN_REPORT` last, in one piece. False when it is no whole frame, when
    /// there is no device or when the write fails; the frame is then lost. Allocates nothing.
    [[nodiscard]] bool write(std::span<const input_event> frame);

    /// Scrolls by so many pixels, positive up and to the left. A step too small for the wheel's
    /// finest unit writes nothing and counts in the next one. A frame that cannot be written is
    /// dropped.
    void scroll(std::int64_t verticalPixels, std::int64_t horizontalPixels);

    /// Presses or releases a button. A number that is no button's does nothing; a frame that cannot
    /// be written is dropped.
    void setButton(std::int64_t number, bool isDown);

    /// Releases every button that this mouse holds, passed on or made up: for when the real mouse
    /// is let go of, whose own releases will come from itself.
    void releaseAll();

    /// Whether the button is down on this mouse. Waits for nothing.
    [[nodiscard]] bool isButtonDown(std::int64_t number) const;

  private:
    /// The buttons that are down. Read without a lock.
    KeyboardState held_;

    Mutex mutex_;
    VirtualDevice device_ TESSARA_GUARDED_BY(mutex_);
    ScrollToDetents vertical_ TESSARA_GUARDED_BY(mutex_);
    ScrollToDetents horizontal_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
