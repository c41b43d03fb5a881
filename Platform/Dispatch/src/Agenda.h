#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

class RepeatingTimer;

/// The place of a block among others: by deadline, then by the order of posting.
struct Due {
    TimePoint deadline;
    std::uint64_t sequence = 0;
    auto operator<=>(const Due&) const = default;
};

/// What one queue has yet to run, in the order in which it will: blocks, and the next firing of
/// each live timer. Both kinds of queue keep one. It locks nothing and runs nothing, and never
/// destroys a block: blocks are handed out, for their destructors may come back to the queue.
class Agenda {
  public:
    void add(Due due, DispatchQueue::Block block);
    void add(Due due, std::shared_ptr<RepeatingTimer> timer);

    [[nodiscard]] bool isEmpty() const noexcept { return items_.empty(); }

    /// The place of what comes next. Not for an empty agenda.
    [[nodiscard]] const Due& next() const noexcept { return items_.front().due; }

    /// When to look here again: the next deadline, or later as far as the timers' leeways permit.
    [[nodiscard]] TimePoint wakeUpTime() const noexcept;

    /// Takes out what comes next, which is due at `now`. A timer is put back in the same step at
    /// the multiple after `now`, in the order of `sequence`.
    [[nodiscard]] DispatchQueue::Block takeNext(TimePoint now, std::uint64_t sequence);

    /// Takes the next firing of `timer` off the agenda, if it is on it.
    void withdraw(const RepeatingTimer& timer);

    /// Takes out all blocks and leaves the timers.
    [[nodiscard]] std::vector<DispatchQueue::Block> takeBlocks();

    /// Makes every timer here let go of its handler. For an agenda whose queue has ended.
    void releaseTimers() noexcept;

    /// How many blocks there are, timers not counted.
    [[nodiscard]] std::size_t blockCount() const noexcept { return items_.size() - timerCount_; }

  private:
    struct Item {
        Due due;
        DispatchQueue::Block block;             // empty for a timer
        std::shared_ptr<RepeatingTimer> timer;  // null for a block
    };

    struct ComesLater {
        bool operator()(const Item& a, const Item& b) const noexcept { return a.due > b.due; }
    };

    void push(Item item);

    std::vector<Item> items_;  // a heap whose front comes next
    std::size_t timerCount_ = 0;
};

}  // namespace tessara
