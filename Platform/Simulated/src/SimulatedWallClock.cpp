#include "Platform/Simulated/SimulatedWallClock.h"

#include <array>
#include <cstdio>

namespace tessara {

std::string SimulatedWallClock::localStamp(std::chrono::sys_seconds stamped) const {
    const auto day = std::chrono::floor<std::chrono::days>(stamped);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(stamped - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u-%02d%02d%02d",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

}  // namespace tessara
