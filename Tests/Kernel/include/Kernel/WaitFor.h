#pragma once

#include <chrono>
#include <thread>

namespace tessara::testing {

/// How long a kernel test waits for anything before it gives up: far longer than anything takes,
/// also in an emulated machine.
inline constexpr std::chrono::seconds patience{10};

/// Waits until `condition()` holds, and says whether it came to that. For what the kernel, udev or
/// other threads bring about and nothing can be waited on; what has a descriptor is polled instead.
template <typename Condition>
[[nodiscard]] bool waitFor(Condition condition, std::chrono::nanoseconds limit = patience) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace tessara::testing
