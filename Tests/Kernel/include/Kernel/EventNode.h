#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Kernel/WaitFor.h"

namespace tessara::testing {

/// One event of an input node, as the kernel reports it.
struct NodeEvent {
    std::uint16_t type = 0;
    std::uint16_t code = 0;
    std::int32_t value = 0;

    bool operator==(const NodeEvent&) const = default;
};

/// The events of one report, without the SYN_REPORT that ends it.
struct NodeFrame {
    std::chrono::nanoseconds time{};  ///< on CLOCK_MONOTONIC
    std::vector<NodeEvent> events;

    /// The sum of the values of that event in the frame; 0 when it has none.
    [[nodiscard]] std::int64_t sumOf(std::uint16_t type, std::uint16_t code) const;
};

/// An input node as an application reads it: opened without a grab, whole reports in order. One
/// thread.
class EventNode {
  public:
    /// Opens "/dev/input/eventN". Throws `std::system_error`.
    explicit EventNode(const std::string& path);
    ~EventNode();

    EventNode(const EventNode&) = delete;
    EventNode& operator=(const EventNode&) = delete;

    /// The path of the input node whose device has this name, waiting until there is one; nothing
    /// when none comes.
    [[nodiscard]] static std::optional<std::string> pathNamed(
        const std::string& name, std::chrono::nanoseconds limit = patience);
    /// Whether some input node has this name now.
    [[nodiscard]] static bool exists(const std::string& name);

    /// The next report; nothing when none comes within the limit. Reports that the kernel dropped
    /// for a slow reader fail the running test.
    [[nodiscard]] std::optional<NodeFrame> next(std::chrono::nanoseconds limit = patience);

    /// Reports until one of them contains `last`, that one included; fails the running test when it
    /// does not come.
    [[nodiscard]] std::vector<NodeFrame> framesUntil(const NodeEvent& last,
                                                     std::chrono::nanoseconds limit = patience);

    /// Reports until none comes for as long as `quiet`.
    [[nodiscard]] std::vector<NodeFrame> framesUntilQuiet(
        std::chrono::nanoseconds quiet = std::chrono::milliseconds(300));

    /// The keys and buttons that are down on the device now, by code.
    [[nodiscard]] std::vector<std::uint16_t> heldKeys() const;

    /// Takes the device for itself alone, or lets it go. Says whether that went well: not while
    /// another has it.
    [[nodiscard]] bool grab(bool wanted) const;

  private:
    const int fd_;
    std::vector<NodeEvent> pending_;
};

}  // namespace tessara::testing
