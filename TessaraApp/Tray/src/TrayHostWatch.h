#pragma once

#include <QObject>

class QDBusServiceWatcher;

namespace tessara {

/// Knows whether the desktop has a tray that shows items: with a session bus, whether there is a
/// StatusNotifierWatcher there and a host has made itself known to it (the StatusNotifierItem
/// protocol of freedesktop.org); without one, what the window system says once.
class TrayHostWatch : public QObject {
    Q_OBJECT

  public:
    TrayHostWatch();

    [[nodiscard]] bool hasTray() const { return hasTray_; }

  Q_SIGNALS:
    void hasTrayChanged();

  private:
    Q_SLOT void askAgain();
    void setHasTray(bool hasTray);

    QDBusServiceWatcher* watcher_ = nullptr;
    bool hasTray_ = false;
};

}  // namespace tessara
