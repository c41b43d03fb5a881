#pragma once

#include <chrono>
#include <string>

#include "Platform/WallClock.h"

namespace tessara {

/// A time of day that stands where a script puts it. Its time zone is UTC.
class SimulatedWallClock final : public WallClock {
  public:
    std::chrono::sys_seconds moment{std::chrono::sys_days{std::chrono::January / 2 / 2026}};

    [[nodiscard]] std::chrono::sys_seconds now() const override { return moment; }
    [[nodiscard]] std::string localStamp(std::chrono::sys_seconds stamped) const override;
};

}  // namespace tessara
