#pragma once

#include <expected>
#include <system_error>

#include "Platform/Linux/VirtualKeyboard.h"
#include "Platform/Linux/VirtualMouse.h"

namespace tessara {

/// The two virtual devices of a session. They are made before the first grab, so that the desktop
/// knows them when the first event comes, and stay until the session ends: what the engine
/// releases after its tap is gone still finds them there.
struct VirtualDevices {
    VirtualMouse mouse;
    VirtualKeyboard keyboard;

    /// Makes both, as far as they are not there already. The error is that of the first that
    /// cannot be made.
    [[nodiscard]] std::expected<void, std::error_code> open() {
        if (auto opened = mouse.open(); !opened) return opened;
        return keyboard.open();
    }

    /// Releases what they hold and takes both away.
    void close() {
        keyboard.close();
        mouse.close();
    }
};

}  // namespace tessara
