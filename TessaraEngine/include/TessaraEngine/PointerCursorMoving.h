#pragma once

#include <cstdint>
#include <optional>

#include "Platform/CGEvent.h"

namespace tessara {

/// Moves the cursor for the router, in place of the system, so that the system's own acceleration
/// has no part in it. A platform on which the rewritten motion event moves the cursor has no need
/// of one.
class PointerCursorMoving {
  public:
    virtual ~PointerCursorMoving() = default;

    PointerCursorMoving(const PointerCursorMoving&) = delete;
    PointerCursorMoving& operator=(const PointerCursorMoving&) = delete;

    /// Moves the cursor by whole points, to the right and down, and answers where it is then;
    /// nothing when it could not be moved, and it is where it was. A cursor that was stopped at an
    /// edge of the desktop has been moved. Called on the tap thread: must not allocate or wait.
    [[nodiscard]] virtual std::optional<CGPoint> move(std::int64_t dx, std::int64_t dy) = 0;

  protected:
    PointerCursorMoving() = default;
};

}  // namespace tessara
