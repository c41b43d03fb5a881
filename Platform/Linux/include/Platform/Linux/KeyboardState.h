#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <cstddef>
#include <cstdint>

#include <linux/input-event-codes.h>

namespace tessara {

/// Which keys are down on a set of devices, by the kernel's codes; buttons are keys to the kernel.
/// A key is down while any of the devices holds it. Read without a lock on any thread; each device
/// writes its share through a `PressedKeys` of its own.
///
/// Of several keys that change together a reader may see one before the other. It knows nothing of
/// keys that were down before their device was read, unless that is told it with `replace`.
class KeyboardState {
  public:
    static constexpr std::size_t keyCount = KEY_CNT;

    KeyboardState() = default;
    KeyboardState(const KeyboardState&) = delete;
    KeyboardState& operator=(const KeyboardState&) = delete;

    /// Whether any device holds the key of that code of the kernel's; false for a code that is
    /// none.
    [[nodiscard]] bool isDown(std::uint16_t kernelCode) const;

    /// Whether any device shows Caps Lock with its light: the lock is the desktop's, and the light
    /// is all that devices know of it.
    [[nodiscard]] bool isCapsLockOn() const;

    /// The modifiers in force as bits of `CGEvent::flags`: for each key of `modifierKeys` that is
    /// down its generic bit and its device-dependent one, and the bit of Caps Lock.
    [[nodiscard]] std::uint64_t flags() const;

  private:
    friend class PressedKeys;

    /// How many of the devices hold each key.
    std::array<std::atomic<std::uint16_t>, keyCount> holders_{};
    /// How many of the devices show Caps Lock.
    std::atomic<std::uint16_t> capsLockHolders_{0};
};

/// One device's share of a `KeyboardState`: what it holds, given back when the device goes. One
/// thread at a time; no operation allocates.
class PressedKeys {
  public:
    using Keys = std::bitset<KeyboardState::keyCount>;

    /// Holds nothing. `state` must outlive it.
    explicit PressedKeys(KeyboardState& state) : state_(state) {}
    ~PressedKeys() { clear(); }

    PressedKeys(const PressedKeys&) = delete;
    PressedKeys& operator=(const PressedKeys&) = delete;

    /// A repeated press or release changes nothing; neither does a code that is none.
    void set(std::uint16_t kernelCode, bool isDown);

    /// Makes it hold just these: what the kernel says after events were lost.
    void replace(const Keys& down);

    /// Whether the device's light for Caps Lock is on.
    void setCapsLock(bool isOn);

    /// Lets go of everything, Caps Lock included.
    void clear();

    /// What this device holds, by the kernel's codes.
    [[nodiscard]] const Keys& down() const { return down_; }

  private:
    KeyboardState& state_;
    Keys down_;
    bool isCapsLockOn_ = false;
};

}  // namespace tessara
