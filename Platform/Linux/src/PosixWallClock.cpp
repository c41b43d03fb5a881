#include "Platform/Linux/PosixWallClock.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace tessara {

std::chrono::sys_seconds PosixWallClock::now() const {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string PosixWallClock::localStamp(std::chrono::sys_seconds moment) const {
    const std::time_t seconds = moment.time_since_epoch().count();
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 64> text{};
    // strftime would follow the locale's digits.
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d-%02d%02d%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text.data();
}

}  // namespace tessara
