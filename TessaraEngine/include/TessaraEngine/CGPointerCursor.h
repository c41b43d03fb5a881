#pragma once

#include <memory>
#include <optional>

#include "TessaraEngine/PointerCursorMoving.h"

namespace tessara {

class CursorService;
class EventServices;
class EventSource;

/// Moves the system's cursor and keeps it on the displays: a step that leaves them all ends at the
/// nearest point that is on one, which is at most its last column or row. It knows nothing of
/// curves and fractions; the steps are whole points. For the tap thread alone: nothing is
/// allocated.
class CGPointerCursor final : public PointerCursorMoving {
  public:
    /// The references must outlive the cursor. When the system gives no event source, no move will
    /// succeed.
    CGPointerCursor(EventServices& services, CursorService& cursor);
    ~CGPointerCursor() override;

    [[nodiscard]] std::optional<CGPoint> move(std::int64_t dx, std::int64_t dy) override;

  private:
    [[nodiscard]] std::optional<CGPoint> onDisplay(CGPoint point);

    EventServices& services_;
    CursorService& cursor_;
    /// Keeps a warp from muting the user's own events; nothing is made from it.
    const std::unique_ptr<EventSource> source_;
};

}  // namespace tessara
