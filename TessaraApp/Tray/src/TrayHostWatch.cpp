#include "TrayHostWatch.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QSystemTrayIcon>

namespace tessara {
namespace {

/// The watcher's name on the bus, and that of its interface.
const QString& watcherName() {
    static const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
    return name;
}

const QString& watcherPath() {
    static const QString path = QStringLiteral("/StatusNotifierWatcher");
    return path;
}

constexpr int answerTimeoutMillis = 1000;

/// Asks the watcher whether a host has made itself known to it.
QDBusPendingCall askForHost() {
    QDBusMessage get = QDBusMessage::createMethodCall(
        watcherName(), watcherPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << watcherName() << QStringLiteral("IsStatusNotifierHostRegistered");
    get.setAutoStartService(false);
    return QDBusConnection::sessionBus().asyncCall(get, answerTimeoutMillis);
}

bool saysYes(const QDBusPendingReply<QDBusVariant>& answer) {
    return answer.isValid() && answer.value().variant().toBool();
}

}  // namespace

TrayHostWatch::TrayHostWatch() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        hasTray_ = QSystemTrayIcon::isSystemTrayAvailable();
        return;
    }
    // The bus is asked rather than Qt, which remembers a "no" for the rest of the run.
    watcher_ =
        new QDBusServiceWatcher(watcherName(), bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayHostWatch::askAgain);
    for (const char* const change :
         {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(watcherName(), watcherPath(), watcherName(), QLatin1String(change), this,
                    SLOT(askAgain()));
    }
    // What is shown first depends on this one.
    QDBusPendingCall first = askForHost();
    first.waitForFinished();
    hasTray_ = saysYes(first);
}

void TrayHostWatch::askAgain() {
    auto* call = new QDBusPendingCallWatcher(askForHost(), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        setHasTray(saysYes(*call));
        call->deleteLater();
    });
}

void TrayHostWatch::setHasTray(bool hasTray) {
    if (hasTray == hasTray_) return;
    hasTray_ = hasTray;
    Q_EMIT hasTrayChanged();
}

}  // namespace tessara
