#include "Desk/DeskProgram.h"

#include <QApplication>
#include <QQuickWindow>

#include "AppWiring/SimulatedAppHost.h"
#include "Desk/DeskModel.h"
#include "DesktopProgram/DesktopProgram.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/QtDispatch/QtMainQueue.h"
#include "TessaraApp/Tray/SingleInstance.h"

// Made by Qt's tools for the module. It is named here so that the linker keeps it.
// NOLINTNEXTLINE(misc-use-internal-linkage): it is defined in another file.
void qml_register_types_Tessara_Desk();

namespace tessara {

void registerDeskTypes() {
    void (*volatile kept)() = &qml_register_types_Tessara_Desk;
    static_cast<void>(kept);
}

int runDesk(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tessara Demo"));
    QApplication::setDesktopFileName(QStringLiteral("ai.tessara.TessaraDemo"));
    // The way out is to close the Desk.
    QApplication::setQuitOnLastWindowClosed(false);
    registerDeskTypes();

    SingleInstance instance(QStringLiteral("ai.tessara.TessaraDemo"));
    if (!instance.claim()) return 0;

    ThreadedDispatcher dispatcher;
    SimulatedAppHost host(dispatcher, std::make_shared<QtMainQueue>("ai.tessara.main"));
    DeskModel desk(host);
    DesktopProgram program(host.appPlatform(), nullptr);
    QObject::connect(&instance, &SingleInstance::raiseRequested, &program, &DesktopProgram::raise);
    program.start(DesktopProgram::Launch::byUser);
    program.showSettings();
    const auto window = program.interface().makeWindow(
        QStringLiteral("DeskWindow"), {{QStringLiteral("desk"), QVariant::fromValue(&desk)}},
        QStringLiteral("Tessara.Desk"));
    QObject::connect(window.get(), &QQuickWindow::visibleChanged, &application, [](bool isVisible) {
        if (!isVisible) QApplication::quit();
    });
    window->show();
    return QApplication::exec();
}

}  // namespace tessara
