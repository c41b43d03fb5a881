#pragma once

#include <cstddef>

namespace tessara::testing {

/// How many file descriptors this process has open.
[[nodiscard]] std::size_t openFileDescriptorCount();

/// How many threads this process has. One that was joined a moment ago may still be counted.
[[nodiscard]] std::size_t threadCount();

/// Fails the running test if, at the scope's end, the process has other numbers of file descriptors
/// or threads than at its beginning. Put it ahead of whatever opens or starts some. Gives the
/// system the instant that it takes to bury a thread which was joined.
class NoLeakedResources final {
  public:
    NoLeakedResources();
    ~NoLeakedResources();

    NoLeakedResources(const NoLeakedResources&) = delete;
    NoLeakedResources& operator=(const NoLeakedResources&) = delete;

  private:
    const std::size_t fileDescriptorsBefore_;
    const std::size_t threadsBefore_;
};

}  // namespace tessara::testing
