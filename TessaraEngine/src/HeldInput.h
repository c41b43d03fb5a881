#pragma once

#include <cstdint>
#include <vector>

#include "TessaraCore/ButtonIntent.h"

namespace tessara {

/// A key that is down, with the modifiers it was pressed with.
struct HeldKey {
    std::uint16_t code = 0;
    ModifierFlags modifiers;

    bool operator==(const HeldKey&) const = default;
};

/// Which keys and mouse buttons the executor has pressed and not yet released. A value without a
/// lock.
class HeldInput {
  public:
    /// Takes note of what an intent presses or releases; other intents change nothing. A key or
    /// button that is pressed again is held once, as the newest.
    void note(const ButtonIntent& intent);

    /// Takes out, newest first, all that no intent of `releases` releases. What is left is theirs
    /// to release.
    [[nodiscard]] HeldInput takeAllBut(const std::vector<ButtonIntent>& releases);

    /// In the order of their pressing; newest first in what `takeAllBut` gives.
    [[nodiscard]] const std::vector<HeldKey>& keys() const { return keys_; }
    [[nodiscard]] const std::vector<std::int64_t>& mouseButtons() const { return mouseButtons_; }

  private:
    std::vector<HeldKey> keys_;               // each code once
    std::vector<std::int64_t> mouseButtons_;  // each number once
};

}  // namespace tessara
