#pragma once

#include "Platform/WallClock.h"

namespace tessara {

/// The system's clock and time zone, for names of files and dates that a person reads. Nothing is
/// timed by it: it jumps when somebody sets it. Any thread.
class PosixWallClock final : public WallClock {
  public:
    [[nodiscard]] std::chrono::sys_seconds now() const override;
    [[nodiscard]] std::string localStamp(std::chrono::sys_seconds moment) const override;
};

}  // namespace tessara
