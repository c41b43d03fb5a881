#pragma once

#include <cstdint>
#include <set>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {

/// Which keys and buttons are down and which modifiers are in force by one account: the hardware's
/// (`EventSourceState::hidSystem`) or the session's (`EventSourceState::combinedSession`).
///
/// It follows events and judges none: a key that goes up without having gone down is up. All
/// operations may be called from any thread.
class SimulatedInputState {
  public:
    /// Takes note of a key, modifier or button event; any other changes nothing.
    void apply(const CGEvent& event);

    /// Forgets the buttons, as if their releases had been seen.
    void releaseButtons(const std::set<std::int64_t>& buttons);

    [[nodiscard]] bool isKeyDown(std::uint16_t code) const;

    /// The modifier bits, generic and device-dependent, and Caps Lock.
    [[nodiscard]] std::uint64_t flags() const;

    /// What `flags` would be once the key had gone down, or up.
    [[nodiscard]] std::uint64_t flagsAfter(std::uint16_t code, bool isDown) const;

    /// The keys that are down, modifiers included.
    [[nodiscard]] std::set<std::uint16_t> keysDown() const;

    /// The buttons that are down, by number.
    [[nodiscard]] std::set<std::int64_t> buttonsDown() const;

  private:
    [[nodiscard]] std::uint64_t flagsOf(const std::set<std::uint16_t>& keys) const
        TESSARA_REQUIRES(mutex_);

    mutable Mutex mutex_;
    std::set<std::uint16_t> keys_ TESSARA_GUARDED_BY(mutex_);
    std::set<std::int64_t> buttons_ TESSARA_GUARDED_BY(mutex_);
    bool isCapsLockOn_ TESSARA_GUARDED_BY(mutex_) = false;
};

}  // namespace tessara
