#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Platform/CGEvent.h"

namespace tessara {

struct EngineStatus;

/// What an application received, in a line for each kind of thing: glides with their steps and
/// pixels, keys and buttons in their order, motion.
[[nodiscard]] std::string receivedText(std::string_view application,
                                       std::span<const CGEvent> events);

/// The status at the end: the tap with its measured times, and the counters.
[[nodiscard]] std::string statusText(const EngineStatus& status);

}  // namespace tessara
