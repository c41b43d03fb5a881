#pragma once

#include <cstdint>

namespace tessara {

/// Counts the heap allocations that the calling thread makes while the counter runs. A program that
/// links this has every `operator new` replaced by one that counts; memory taken by `malloc` itself
/// is not seen.
///
/// For benchmarks: start it around the call that is measured, and report `count()` per iteration.
class AllocationCounter {
  public:
    /// Begins or goes on counting, and pauses again.
    void start() noexcept;
    void stop() noexcept;

    /// Allocations made between all starts and stops.
    [[nodiscard]] std::uint64_t count() const noexcept { return count_; }

  private:
    std::uint64_t startedAt_ = 0;
    std::uint64_t count_ = 0;
};

}  // namespace tessara
