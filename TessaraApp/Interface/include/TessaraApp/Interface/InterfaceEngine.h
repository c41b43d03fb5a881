#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QVariantMap>
#include <memory>

#include "TessaraApp/Style/Theme.h"

class QQuickWindow;

namespace tessara {

/// Loads the windows of the interface and gives them their view-models. One for a program, after
/// its `QGuiApplication`; main thread.
class InterfaceEngine {
  public:
    InterfaceEngine();
    ~InterfaceEngine();
    InterfaceEngine(const InterfaceEngine&) = delete;
    InterfaceEngine& operator=(const InterfaceEngine&) = delete;

    /// Makes the window of the type `name` of a module of the program's own, hidden. `properties`
    /// are its required ones; the objects in them outlive the window. A window that cannot be made
    /// stops the process with the reason: its QML is a part of the program.
    [[nodiscard]] std::unique_ptr<QQuickWindow> makeWindow(
        const QString& name, const QVariantMap& properties,
        const QString& module = QStringLiteral("Tessara.Interface"));

    /// The look of all its windows.
    [[nodiscard]] Theme& theme();

  private:
    QQmlEngine engine_;
};

}  // namespace tessara
