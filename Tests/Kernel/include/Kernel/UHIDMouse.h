#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Kernel/UHIDDevice.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {
class SimulatedMouse;
}

namespace tessara::testing {

/// What one report of a pointer tells.
struct PointerReport {
    std::uint16_t buttons = 0;  ///< bit i: button i is down
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::int8_t wheel = 0;  ///< clicks, away from the user above zero
    std::int8_t pan = 0;    ///< clicks, to the right above zero
};

/// A mouse's pointer interface in the kernel: 16 buttons, 16-bit motion, a wheel and a tilt. It
/// remembers which buttons are down, as a mouse does, so that each operation is one whole report.
/// Plugged in as long as it exists. Any thread.
class UHIDPointer {
  public:
    UHIDPointer(Dispatcher& dispatcher, UHIDDescription description);

    /// A mouse that the program is not for.
    static UHIDDescription foreignMouse();

    void press(unsigned button);
    void release(unsigned button);
    void move(std::int16_t x, std::int16_t y);
    void spin(std::int8_t clicks);
    void tilt(std::int8_t clicks);
    /// A report as it is; its buttons are what is down from here on.
    void send(const PointerReport& report);

    [[nodiscard]] const std::string& eventNode() const { return device_.eventNode(); }
    [[nodiscard]] const std::string& hidrawNode() const { return device_.hidrawNode(); }

  private:
    friend class UHIDMouse;

    void sendWithButtons(PointerReport report, std::uint16_t pressed, std::uint16_t released);

    UHIDDevice device_;
    Mutex mutex_;
    std::uint16_t buttons_ TESSARA_GUARDED_BY(mutex_) = 0;
};

/// A keyboard in the kernel, with keys by their HID usage (4 is the letter A, 0xE1 left Shift). Of
/// the keys that are no modifiers six can be down. Any thread.
class UHIDKeyboard {
  public:
    UHIDKeyboard(Dispatcher& dispatcher, UHIDDescription description);

    /// A keyboard of no concern to the program but for what is held on it.
    static UHIDDescription foreignKeyboard();

    void press(std::uint8_t usage);
    void release(std::uint8_t usage);

    [[nodiscard]] const std::string& eventNode() const { return device_.eventNode(); }

  private:
    friend class UHIDMouse;

    void change(std::uint8_t usage, bool isDown);

    UHIDDevice device_;
    Mutex mutex_;
    std::vector<std::uint8_t> keys_ TESSARA_GUARDED_BY(mutex_);
};

/// The mouse that the program is for, as the kernel sees it: pointer, keyboard and vendor interface
/// under the mouse's real ids, and behind the last one the model of its firmware.
class UHIDMouse {
  public:
    static constexpr std::uint16_t vendorID = 0x046D;
    static constexpr std::uint16_t productID = 0xC099;

    /// Not plugged in yet. Dispatcher and firmware outlive it.
    UHIDMouse(Dispatcher& dispatcher, SimulatedMouse& firmware);
    /// Unplugs it.
    ~UHIDMouse();

    UHIDMouse(const UHIDMouse&) = delete;
    UHIDMouse& operator=(const UHIDMouse&) = delete;

    /// Gives the firmware its power, makes the three interfaces one after the other, and returns
    /// when the kernel and udev have them ready. One that is plugged in stays as it is.
    void plug();
    /// Returns when the nodes are gone.
    void unplug();
    [[nodiscard]] bool isPlugged() const { return pointer_ != nullptr; }

    // Of a mouse that is plugged in.

    [[nodiscard]] UHIDPointer& pointer() { return *pointer_; }
    [[nodiscard]] UHIDKeyboard& keyboard() { return *keyboard_; }
    [[nodiscard]] const std::string& vendorNode() const { return vendor_->hidrawNode(); }

  private:
    Dispatcher& dispatcher_;
    SimulatedMouse& firmware_;
    /// Sends what the firmware is late with.
    const std::shared_ptr<DispatchQueue> queue_;
    std::unique_ptr<UHIDPointer> pointer_;
    std::unique_ptr<UHIDKeyboard> keyboard_;
    std::shared_ptr<UHIDDevice> vendor_;
};

}  // namespace tessara::testing
