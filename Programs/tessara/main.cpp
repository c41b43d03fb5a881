// tessara [--at-login]: the program with its windows and its tray item, on this computer's mouse.
// The desktop that starts it at login says so, and it waits for a tray before it shows a window.
// SIGTERM, SIGINT and SIGHUP end it in good order. It ends with 0 then, with 1 when it could not
// start, and with 2 when it was called with other arguments.

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fmt/format.h>

#include "DesktopProgram/DesktopProgram.h"
#include "LinuxWiring/LinuxHost.h"
#include "LinuxWiring/StopSignals.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraApp/Tray/SingleInstance.h"

namespace {

constexpr int misused = 2;
constexpr const char* applicationID = "ai.tessara.Tessara";

/// That it cannot be written, as when the terminal has gone, is no reason to end.
void say(const std::string& sentence) {
    std::fputs(fmt::format("tessara: {}\n", sentence).c_str(), stderr);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tessara;
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    const bool isAtLogin = arguments == QStringList{QStringLiteral("--at-login")};
    if (!arguments.isEmpty() && !isAtLogin) {
        fmt::print(stderr, "usage: tessara [--at-login]\n");
        return misused;
    }
    QApplication::setApplicationName(QStringLiteral("Tessara"));
    QApplication::setDesktopFileName(QStringLiteral("tessara"));
    QApplication::setQuitOnLastWindowClosed(false);

    SingleInstance instance(QString::fromLatin1(applicationID));
    if (!instance.claim()) return EXIT_SUCCESS;  // the other one has come forward

    const auto host = LinuxHost::make();
    if (!host) {
        say(host.error());
        return EXIT_FAILURE;
    }
    if (const auto problem = (*host)->preferencesProblem()) say(*problem);
    DesktopProgram program((*host)->appPlatform(), &(*host)->permissionHelp());
    (*host)->reapplySettingsOnWaking(program.model());
    const StopSignals stopSignals([] { QApplication::quit(); });
    QObject::connect(&instance, &SingleInstance::raiseRequested, &program, &DesktopProgram::raise);
    program.start(isAtLogin ? DesktopProgram::Launch::atLogin : DesktopProgram::Launch::byUser);
    const int result = QApplication::exec();
    if (const auto& why = program.model().store().lastSaveError()) {
        say(fmt::format("the settings could not be saved: {}", *why));
    }
    return result;
}
