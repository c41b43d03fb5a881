#pragma once

#include "Platform/WallClock.h"

namespace tessara {

/// The system's clock and time zone.
class PosixWallClock final : public WallClock {
  public:
    [[nodiscard]] std::chrono::sys_seconds now() const override;
    [[nodiscard]] std::string localStamp(std::chrono::sys_seconds moment) const override;
};

}  // namespace tessara
