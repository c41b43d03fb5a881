#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessara {

class DispatchQueue;
class DispatchTimer;

/// Makes one change of each switch between applications. Display servers tell of an instant without
/// any window in front, which would have the profile change twice: that there is none counts only
/// when it lasts. It asks no display server, and does not know what an application is.
///
/// It is made, used and destroyed on its queue.
class SettledFocus {
  public:
    /// Is told the application in front, or that there is none.
    using Handler = std::function<void(const std::optional<std::string>& applicationID)>;

    /// How long there has to be none in front.
    static constexpr std::chrono::milliseconds settlingTime{150};

    /// Calls `handler` on the queue, and only when the application is another than before; at first
    /// there is none. `queue` outlives this.
    SettledFocus(DispatchQueue& queue, Handler handler);
    ~SettledFocus();

    /// Takes what the display server tells: an application, at once; or none, unless an application
    /// follows within `settlingTime` of the first time that none was told.
    void see(std::optional<std::string> applicationID);

  private:
    void settle(std::optional<std::string> applicationID);

    DispatchQueue& queue_;
    const Handler handler_;
    std::optional<std::string> settled_;
    std::unique_ptr<DispatchTimer> untilNone_;
};

}  // namespace tessara
