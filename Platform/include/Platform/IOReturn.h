#pragma once

#include <cstdint>

namespace tessara {

/// The result of a platform call, as the platform interfaces report it.
///
/// The numbers are part of what the user reads in an error text, so every platform answers with
/// these and translates its own codes into them; a code that has no counterpart here is `error`.
/// Any 32-bit value is legal, named or not: clients compare with the names they know and treat the
/// rest as failures.
enum class IOReturn : std::int32_t {
    success = 0,
    error = static_cast<std::int32_t>(0xE00002BC),
    noDevice = static_cast<std::int32_t>(0xE00002C0),
    notPrivileged = static_cast<std::int32_t>(0xE00002C1),
    badArgument = static_cast<std::int32_t>(0xE00002C2),
    exclusiveAccess = static_cast<std::int32_t>(0xE00002C5),
    unsupported = static_cast<std::int32_t>(0xE00002C7),
    notOpen = static_cast<std::int32_t>(0xE00002CD),
    busy = static_cast<std::int32_t>(0xE00002D5),
    timeout = static_cast<std::int32_t>(0xE00002D6),
    offline = static_cast<std::int32_t>(0xE00002D7),
    notAttached = static_cast<std::int32_t>(0xE00002D9),
    notPermitted = static_cast<std::int32_t>(0xE00002E2),
};

}  // namespace tessara
