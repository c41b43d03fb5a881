#include "SystemAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace tessara {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");

/// The portal wraps values in variants, some versions twice.
QVariant unwrapped(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

}  // namespace

SystemAppearance::SystemAppearance(QObject* parent) : QObject(parent) {
    qApp->installEventFilter(this);
    update();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    // QtDBus connects to a slot by name, and knows this argument of it only once it is registered.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    askPortal();
}

void SystemAppearance::askPortal() {
    QDBusMessage read =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    read << group << key;
    auto* call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(read), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (reply.isValid()) take(QVariant::fromValue(reply.value()));
        call->deleteLater();
    });
}

void SystemAppearance::portalSettingChanged(const QString& changedGroup, const QString& changedKey,
                                            const QDBusVariant& value) {
    if (changedGroup == group && changedKey == key) take(QVariant::fromValue(value));
}

void SystemAppearance::take(const QVariant& colorScheme) {
    switch (unwrapped(colorScheme).toUInt()) {
        case 1:
            portalIsDark_ = true;
            break;
        case 2:
            portalIsDark_ = false;
            break;
        default:
            portalIsDark_.reset();
            break;
    }
    update();
}

bool SystemAppearance::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) update();
    return QObject::eventFilter(watched, event);
}

void SystemAppearance::update() {
    const bool paletteIsDark = QGuiApplication::palette().window().color().lightness() < 128;
    const bool isDark = portalIsDark_.value_or(paletteIsDark);
    if (isDark == isDark_) return;
    isDark_ = isDark;
    Q_EMIT isDarkChanged();
}

}  // namespace tessara
