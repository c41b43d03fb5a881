#pragma once

#include <expected>
#include <system_error>

#include "Platform/Linux/VirtualKeyboard.h"
#include "Platform/Linux/VirtualMouse.h"

namespace tessara {

/// The two virtual devices of a session. They are made before the first grab, so that the desktop
/// knows them when the first event comes, and stay until the session ends: what the engine
/// releases after its tap is gone still finds them there. Any thread, as each of them.
struct VirtualDevices {
    /// For what the taps let pass, glides, and buttons of macros.
    VirtualMouse mouse;
    /// For keys and modifiers of bindings.
    VirtualKeyboard keyboard;

    /// Makes both, as far as they are not there already; a mouse without a keyboard
    /// does not stay. The error is that of the first that cannot be made.
    [[nodiscard]] std::expected<void, std::error_code> open() {
        if (auto opened = mouse.open(); !opened) return opened;
        auto opened = keyboard.open();
        if (!opened) mouse.close();
        return opened;
    }

    /// Releases what they hold and takes both away, as the destructor does.
    void close() {
        keyboard.close();
        mouse.close();
    }
};

}  // namespace tessara
