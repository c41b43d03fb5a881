#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <memory>

class QLocalServer;
class QLockFile;

namespace tessara {

/// Lets one copy of a program run in a session: a second one brings the first one's window to the
/// front instead. The claim is a well-known name on the session bus, with the `Activate` call of
/// the Desktop Entry standard's D-Bus activation; without a bus, a lock file and a local socket in
/// the user's runtime folder.
///
/// Main thread.
class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    /// `name` is the program's, in reverse-domain form.
    explicit SingleInstance(QString name);
    ~SingleInstance() override;

    /// True when this is the first copy, which it is from then on for as long as this lives. When
    /// it is not, the first one has been told; one that does not answer is waited for for a second.
    /// Where nothing can be claimed, every copy is the first. Once.
    [[nodiscard]] bool claim();

    // NOLINTNEXTLINE(readability-redundant-access-specifiers): what follows is for the bus.
  public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the call's name is the standard's.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);

  Q_SIGNALS:
    /// Another copy was started and went away again.
    void raiseRequested();

  private:
    [[nodiscard]] bool claimOnBus();
    [[nodiscard]] bool claimInRuntimeFolder();

    const QString name_;
    std::unique_ptr<QLockFile> lock_;
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace tessara
