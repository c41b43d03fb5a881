#include "TessaraApp/Tray/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>
#include <utility>

namespace tessara {
namespace {

constexpr int answerTimeoutMillis = 1000;

QString objectPath(const QString& name) {
    QString path = name;
    return QLatin1Char('/') + path.replace(QLatin1Char('.'), QLatin1Char('/'));
}

QString inRuntimeFolder(const QString& name) {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1Char('/') +
           name;
}

}  // namespace

SingleInstance::SingleInstance(QString name) : name_(std::move(name)) {}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::claim() {
    return QDBusConnection::sessionBus().isConnected() ? claimOnBus() : claimInRuntimeFolder();
}

bool SingleInstance::claimOnBus() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    // The object is there before the name is: whoever finds the name can call it.
    bus.registerObject(objectPath(name_), this, QDBusConnection::ExportScriptableSlots);
    if (bus.registerService(name_)) return true;
    bus.unregisterObject(objectPath(name_));
    auto call = QDBusMessage::createMethodCall(name_, objectPath(name_),
                                               QStringLiteral("org.freedesktop.Application"),
                                               QStringLiteral("Activate"));
    call << QVariantMap();
    bus.call(call, QDBus::Block, answerTimeoutMillis);
    return false;
}

bool SingleInstance::claimInRuntimeFolder() {
    const QString socket = inRuntimeFolder(name_);
    lock_ = std::make_unique<QLockFile>(socket + QLatin1String(".lock"));
    // Nobody holds it for long by mistake: a lock whose process has gone is taken over.
    lock_->setStaleLockTime(0);
    if (lock_->tryLock()) {
        QLocalServer::removeServer(socket);
        server_ = std::make_unique<QLocalServer>();
        connect(server_.get(), &QLocalServer::newConnection, this, [this] {
            server_->nextPendingConnection()->deleteLater();
            Q_EMIT raiseRequested();
        });
        server_->listen(socket);
        return true;
    }
    // A folder where nothing can be locked is no reason not to run.
    if (lock_->error() != QLockFile::LockFailedError) return true;
    QLocalSocket first;
    first.connectToServer(socket);
    first.waitForConnected(answerTimeoutMillis);
    return false;
}

void SingleInstance::Activate(const QVariantMap& /*platformData*/) {
    Q_EMIT raiseRequested();
}

}  // namespace tessara
