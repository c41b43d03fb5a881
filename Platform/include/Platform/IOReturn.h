#pragma once

#include <cstdint>

namespace tessara {

/// The result of a platform call, as the platform interfaces report it.
///
/// The names and numbers are those of the system on which the device's protocol client was at home
/// first. The numbers are part of what the user reads in an error text, so every platform answers
/// with these and translates its own codes into them; a code that has no counterpart here is
/// `error`. Any 32-bit value is legal, named or not: clients compare with the names they know and
/// treat the rest as failures.
enum class IOReturn : std::int32_t {
    success = 0,
    /// Whatever has no name of its own.
    error = static_cast<std::int32_t>(0xE00002BC),
    /// The device is gone; so say `notAttached` and `offline`.
    noDevice = static_cast<std::int32_t>(0xE00002C0),
    /// The user has not granted it; so says `notPermitted`.
    notPrivileged = static_cast<std::int32_t>(0xE00002C1),
    badArgument = static_cast<std::int32_t>(0xE00002C2),
    /// Another has the device to itself, or it is not ready yet; `busy` may say the same.
    exclusiveAccess = static_cast<std::int32_t>(0xE00002C5),
    unsupported = static_cast<std::int32_t>(0xE00002C7),
    notOpen = static_cast<std::int32_t>(0xE00002CD),
    busy = static_cast<std::int32_t>(0xE00002D5),
    /// The device did not take or give what it should in the system's time.
    timeout = static_cast<std::int32_t>(0xE00002D6),
    offline = static_cast<std::int32_t>(0xE00002D7),
    notAttached = static_cast<std::int32_t>(0xE00002D9),
    notPermitted = static_cast<std::int32_t>(0xE00002E2),
};

}  // namespace tessara
