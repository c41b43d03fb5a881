#pragma once

#include <chrono>
#include <string>

namespace tessara {

/// The time of day, for stamps that people read. It may jump; nothing is ever timed by it. Any
/// thread. What is timed has a `Clock`.
class WallClock {
  public:
    virtual ~WallClock() = default;

    /// The time of day, in whole seconds of UTC.
    [[nodiscard]] virtual std::chrono::sys_seconds now() const = 0;

    /// The moment as `yyyy-MM-dd-HHmmss` in the user's time zone, in ASCII digits: safe in a file
    /// name, and in the order of time within one zone.
    [[nodiscard]] virtual std::string localStamp(std::chrono::sys_seconds moment) const = 0;
};

}  // namespace tessara
