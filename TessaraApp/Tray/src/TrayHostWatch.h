#pragma once

#include <QObject>

class QDBusServiceWatcher;

namespace tessara {

/// Knows whether the desktop has a tray. With a session bus that is the StatusNotifierWatcher's
/// presence there; without one, what the window system says once.
class TrayHostWatch : public QObject {
    Q_OBJECT

  public:
    TrayHostWatch();

    [[nodiscard]] bool hasTray() const { return hasTray_; }

  Q_SIGNALS:
    void hasTrayChanged();

  private:
    void setHasTray(bool hasTray);

    QDBusServiceWatcher* watcher_ = nullptr;
    bool hasTray_ = false;
};

}  // namespace tessara
