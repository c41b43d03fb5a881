#pragma once

#include <cstdint>
#include <expected>
#include <system_error>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/VirtualDevice.h"

namespace tessara {

/// The keyboard on which the program presses keys. It does not exist until `open`. Any thread but
/// the tap's; a lock is held across the write.
///
/// It repeats nothing by itself: that a held key repeats is the desktop's doing, as with any
/// keyboard.
class VirtualKeyboard {
  public:
    /// A keyboard of the kernel's.
    VirtualKeyboard();
    /// A keyboard on another output, such as a test's.
    explicit VirtualKeyboard(VirtualDevice::Opener opener);

    /// Makes the device; success when it is there already.
    [[nodiscard]] std::expected<void, std::error_code> open();

    /// Releases what is held and takes the device away. Keys that come later are dropped.
    void close();

    /// Presses or releases the key with that virtual key code, in a frame of its own. A code that
    /// the kernel has no key for does nothing; a frame that cannot be written is dropped.
    void setKey(std::uint16_t virtualCode, bool isDown);

    /// The keys that this keyboard holds, modifiers included: what has been written to it, which a
    /// desktop reads a moment later. Read without a lock on any thread.
    [[nodiscard]] const KeyboardState& held() const { return held_; }

  private:
    KeyboardState held_;

    Mutex mutex_;
    VirtualDevice device_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
