#pragma once

#include <cstdint>

#include <linux/input.h>

namespace tessara {

/// When the event happened, in nanoseconds on the clock that its node was set to.
[[nodiscard]] inline std::uint64_t nanosecondsOf(const input_event& event) {
    return static_cast<std::uint64_t>(event.input_event_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(event.input_event_usec) * 1'000U;
}

}  // namespace tessara
