#pragma once

#include <QObject>
#include <optional>
#include <string>

#include "Platform/LoginItemService.h"

namespace tessara {

/// Whether the program starts at login, as the interface shows and switches it. What it says is
/// always what the system said last, never what was asked of it. How programs are started is the
/// service's to know; that the system is asked now and then is `AppModel`'s to see to.
///
/// Main executor only. A value that stays equal tells nobody.
class LaunchAtLogin : public QObject {
    Q_OBJECT
    /// What a switch shows: off while the system waits for the user's approval.
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setEnabled NOTIFY statusChanged)

  public:
    /// Asks nothing yet: the status is `unknown` until the first `refresh`. The service outlives
    /// this.
    explicit LaunchAtLogin(LoginItemService& service);

    [[nodiscard]] LoginItemStatus status() const { return status_; }
    [[nodiscard]] bool isEnabled() const { return status_ == LoginItemStatus::enabled; }

    /// Why the last `setEnabled` failed, in the system's words; nothing when it did not.
    [[nodiscard]] const std::optional<std::string>& lastError() const { return lastError_; }

    /// The status in a sentence for the user.
    [[nodiscard]] std::string statusText() const;

    /// Reads the status anew.
    void refresh();

    /// Registers the program or takes it off, and reads the status anew, whether or not that
    /// worked. Success need not mean that it is on: the user may have to allow it first.
    void setEnabled(bool isEnabled);

  Q_SIGNALS:
    void statusChanged();
    void lastErrorChanged();

  private:
    void setLastError(std::optional<std::string> error);

    LoginItemService& service_;
    LoginItemStatus status_ = LoginItemStatus::unknown;
    std::optional<std::string> lastError_;
};

}  // namespace tessara
