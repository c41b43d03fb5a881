#include "TrayHostWatch.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QSystemTrayIcon>

namespace tessara {
namespace {

const QString& watcherName() {
    static const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
    return name;
}

}  // namespace

TrayHostWatch::TrayHostWatch() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        hasTray_ = QSystemTrayIcon::isSystemTrayAvailable();
        return;
    }
    // The bus is asked rather than Qt, which remembers a "no" for the rest of the run.
    watcher_ =
        new QDBusServiceWatcher(watcherName(), bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher_, &QDBusServiceWatcher::serviceRegistered, this, [this] { setHasTray(true); });
    connect(watcher_, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { setHasTray(false); });
    hasTray_ = bus.interface()->isServiceRegistered(watcherName());
}

void TrayHostWatch::setHasTray(bool hasTray) {
    if (hasTray == hasTray_) return;
    hasTray_ = hasTray;
    Q_EMIT hasTrayChanged();
}

}  // namespace tessara
