#pragma once

#include <cstdint>
#include <vector>

#include "Platform/CursorService.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Simulated/SimulatedRefusal.h"

namespace tessara {

/// The displays of the simulated desktop and the cursor on them, which never leaves them. There may
/// be gaps between displays. All operations may be called from any thread.
class SimulatedDisplays final : public CursorService {
  public:
    /// One display of 1920 by 1080 points at (0, 0), the cursor in its middle.
    SimulatedDisplays();

    /// Replaces the displays, the main one first, under new numbers; a cursor that is on none of
    /// them moves to the nearest. An empty list is a desktop without displays, on which the cursor
    /// stays where it is.
    void arrange(const std::vector<CGRect>& displays);

    /// Where the cursor is, in points of the global desktop.
    [[nodiscard]] CGPoint cursor() const;

    /// Moves the cursor to the point, or to the nearest one that a cursor can reach.
    void moveCursor(CGPoint target);

    /// The point itself when it is on a display, else the nearest point of the nearest display: the
    /// last pixel column or row of it, where that is what is nearest.
    [[nodiscard]] CGPoint nearestReachable(CGPoint point) const;

    /// Makes the next `count` warps fail.
    void refuseWarps(std::int64_t count = SimulatedRefusal::always);

    /// Makes the next `count` questions after displays fail.
    void refuseDisplayQueries(std::int64_t count = SimulatedRefusal::always);

    [[nodiscard]] bool warp(CGPoint target) override;
    [[nodiscard]] std::optional<std::size_t> displaysWithPoint(CGPoint point,
                                                               std::span<DisplayID> found) override;
    [[nodiscard]] std::optional<std::size_t> activeDisplays(std::span<DisplayID> found) override;
    [[nodiscard]] CGRect displayBounds(DisplayID display) override;

  private:
    struct Display {
        DisplayID id = 0;
        CGRect bounds;
    };

    /// Writes the numbers of the displays for whose bounds the condition holds.
    template <typename Condition>
    std::optional<std::size_t> list(std::span<DisplayID> found, Condition holds);

    [[nodiscard]] CGPoint nearestReachableLocked(CGPoint point) const TESSARA_REQUIRES(mutex_);

    SimulatedRefusal warps_;
    SimulatedRefusal queries_;
    mutable Mutex mutex_;
    std::vector<Display> displays_ TESSARA_GUARDED_BY(mutex_);
    DisplayID lastID_ TESSARA_GUARDED_BY(mutex_) = 0;
    CGPoint cursor_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
