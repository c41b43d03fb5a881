#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include <linux/input.h>

namespace tessara {

/// A small frame for a virtual device, put together without the heap. The kernel sets the time.
class InputFrame {
  public:
    static constexpr std::size_t capacity = 4;  // two wheels of two resolutions

    /// More than `capacity` events stop the process.
    void add(std::uint16_t type, std::uint16_t code, std::int32_t value) {
        if (size_ == capacity) std::abort();
        events_[size_++] = event(type, code, value);
    }

    [[nodiscard]] bool isEmpty() const { return size_ == 0; }

    /// The events with their `SYN_REPORT`, as long as the frame is neither changed nor destroyed.
    [[nodiscard]] std::span<const input_event> finish() {
        events_[size_] = event(EV_SYN, SYN_REPORT, 0);
        return std::span(events_).first(size_ + 1);
    }

  private:
    static input_event event(std::uint16_t type, std::uint16_t code, std::int32_t value) {
        return {.time = {}, .type = type, .code = code, .value = value};
    }

    std::array<input_event, capacity + 1> events_{};
    std::size_t size_ = 0;
};

}  // namespace tessara
