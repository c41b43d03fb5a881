// tessara-headless: the whole application on this computer's mouse, without an interface. The
// document and the preferences are the user's. It takes no options; SIGTERM, SIGINT and SIGHUP end
// it in good order. It ends with 0 then, with 1 when it could not start, and with 2 when it was
// called with arguments.

#include <QCoreApplication>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "LinuxWiring/LinuxHost.h"
#include "LinuxWiring/StopSignals.h"
#include "Platform/EventTaps.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPlatform.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraHeadless/SituationReport.h"

namespace {

constexpr int misused = 2;

/// That nobody reads it, or that it cannot be written, is no reason to end.
void say(const std::string& sentence) {
    std::fputs(fmt::format("tessara-headless: {}\n", sentence).c_str(), stderr);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        say(fmt::format("there are no arguments, and \"{}\" was given", argv[1]));
        return misused;
    }
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    const auto host = tessara::LinuxHost::make();
    if (!host) {
        say(host.error());
        return EXIT_FAILURE;
    }
    const tessara::AppPlatform platform = (*host)->appPlatform();
    tessara::AppModel model(platform);
    (*host)->reapplySettingsOnWaking(model);
    const tessara::StopSignals stopSignals([&model] {
        model.stop();
        QCoreApplication::quit();
    });
    say(fmt::format("started, with the settings in {}", platform.supportDirectory));
    const auto preferencesProblem = (*host)->preferencesProblem();
    if (preferencesProblem) say(*preferencesProblem);
    const tessara::SituationReport report(
        model, platform.engine.mainQueue,
        [&] {
            return tessara::Obstacles{.missingRights = (*host)->missingRights(),
                                      .tap = platform.engine.eventTaps.lastRefusal()};
        },
        say);
    model.start();
    const int result = QCoreApplication::exec();
    if (const auto& why = model.store().lastSaveError()) {
        say(fmt::format("the settings could not be saved: {}", *why));
    }
    if (const auto problem = (*host)->preferencesProblem();
        problem && problem != preferencesProblem)
        say(*problem);
    say("ended");
    return result;
}
