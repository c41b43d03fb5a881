#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace tessara {

/// Names one queue for the process's life. Unlike an address it is never used again, so that a
/// queue which ends within its own block cannot be taken for the next one.
enum class QueueID : std::uint64_t { none = 0 };

[[nodiscard]] inline QueueID makeQueueID() noexcept {
    static std::atomic<std::uint64_t> last{0};
    return QueueID{last.fetch_add(1, std::memory_order_relaxed) + 1};
}

/// Says, for a scope, whose block the calling thread runs. Scopes nest when a block drains another
/// queue in virtual time; the innermost counts, as it would with a thread for each queue.
class RunningIn {
  public:
    explicit RunningIn(QueueID queue) noexcept : outer_(std::exchange(current_, queue)) {}
    ~RunningIn() { current_ = outer_; }

    RunningIn(const RunningIn&) = delete;
    RunningIn& operator=(const RunningIn&) = delete;

    [[nodiscard]] static QueueID current() noexcept { return current_; }

  private:
    inline static thread_local QueueID current_ = QueueID::none;
    const QueueID outer_;
};

}  // namespace tessara
