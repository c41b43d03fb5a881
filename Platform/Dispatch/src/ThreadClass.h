#pragma once

#include <string>
#include <string_view>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

/// Gives the calling thread the queue's name and asks the system for the scheduling that `quality`
/// stands for. What the system refuses is left as it was.
void adoptThreadClass(std::string_view label, QualityOfService quality) noexcept;

/// What of a reverse-domain label fits a thread's name: its last words, whole ones where possible.
[[nodiscard]] std::string threadNameOf(std::string_view label);

}  // namespace tessara
