#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tessara::benchmarking {

/// One way of handing a mouse's reports on to a virtual mouse: a program, or a pipeline of several,
/// that takes the mouse when it is started and gives it back when it is ended.
class Contender {
  public:
    /// `command` is the shell's; the mouse's event node is `$NODE` in it.
    Contender(std::string name, std::string command);
    ~Contender();

    Contender(const Contender&) = delete;
    Contender& operator=(const Contender&) = delete;

    [[nodiscard]] const std::string& name() const { return name_; }

    /// Starts it, and returns at once. Throws `std::system_error`.
    void start(const std::string& node);
    /// Ends it as a session's end would, and waits until it has ended.
    void stop();

    // While it runs, its processes together, without the shell's.

    [[nodiscard]] std::chrono::nanoseconds processorTime() const;
    /// The most physical memory that it ever had.
    [[nodiscard]] std::int64_t peakMemoryKiB() const;

  private:
    void forEachProcess(const std::function<void(pid_t process)>& visit) const;

    const std::string name_;
    const std::string command_;
    pid_t leader_ = 0;  ///< of its process group; 0 when it does not run
};

}  // namespace tessara::benchmarking
