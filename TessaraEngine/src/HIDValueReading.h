#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/HIDEventSystem.h"

/// What a device's properties say, where they say what is expected. A value of another type is
/// taken as absent.
namespace tessara {

/// A number as an integer, the fraction of a double cut off. Nothing for a double that no integer
/// can hold.
[[nodiscard]] std::optional<std::int64_t> integerFrom(const HIDValue& value);

[[nodiscard]] std::optional<std::string> textFrom(HIDValue value);

/// The number that a service's events carry as their sender; 0 is none.
[[nodiscard]] std::optional<std::uint64_t> registryIDFrom(const HIDValue& value);

}  // namespace tessara
