#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Platform/CGEvent.h"

namespace tessara {

/// A display, as the system numbers it; the number means nothing after a reconfiguration, and 0 is
/// no display.
using DisplayID = std::uint32_t;

/// Moves the cursor and knows the displays. Called on the tap thread: nothing here allocates or
/// waits. A platform on which rewriting a motion event moves the cursor by itself has no need of
/// one. It does not say where the cursor is: a fresh event does (`EventServices::makeEvent`).
class CursorService {
  public:
    virtual ~CursorService() = default;

    /// Puts the cursor there, without an event that would tell of it, or at the nearest place that
    /// it can reach. False when the system refuses.
    [[nodiscard]] virtual bool warp(CGPoint target) = 0;

    /// Writes the displays that hold the point into `found`, as many as fit, and answers how many
    /// it wrote; nothing when the system fails.
    [[nodiscard]] virtual std::optional<std::size_t> displaysWithPoint(
        CGPoint point, std::span<DisplayID> found) = 0;

    /// The same for all active displays, the main one first.
    [[nodiscard]] virtual std::optional<std::size_t> activeDisplays(std::span<DisplayID> found) = 0;

    /// The display's place on the global desktop, in points; empty for a display that is not there.
    [[nodiscard]] virtual CGRect displayBounds(DisplayID display) = 0;
};

}  // namespace tessara
