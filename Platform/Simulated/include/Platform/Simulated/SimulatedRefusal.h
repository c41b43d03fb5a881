#pragma once

#include <atomic>
#include <cstdint>
#include <limits>

namespace tessara {

/// How often a service that may refuse is to do so from now on: what stands behind the switches of
/// the simulated services. It knows no reasons and counts no requests. Any thread.
class SimulatedRefusal {
  public:
    /// In place of a count: until told otherwise.
    static constexpr std::int64_t always = std::numeric_limits<std::int64_t>::max();

    /// Refuses the next `count` requests (0 or more); 0 puts an end to refusing.
    void refuseNext(std::int64_t count) { remaining_.store(count); }

    /// Asked by the service at each request; true uses up one refusal.
    [[nodiscard]] bool refuses() {
        std::int64_t remaining = remaining_.load();
        while (remaining > 0) {
            const std::int64_t left = remaining == always ? always : remaining - 1;
            if (remaining_.compare_exchange_weak(remaining, left)) return true;
        }
        return false;
    }

  private:
    std::atomic<std::int64_t> remaining_{0};
};

}  // namespace tessara
