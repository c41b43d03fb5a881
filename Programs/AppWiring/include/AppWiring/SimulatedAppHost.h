#pragma once

#include "EngineWiring/SimulatedHost.h"
#include "Platform/Simulated/SimulatedDesktopShell.h"
#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Platform/Simulated/SimulatedLoginItem.h"
#include "Platform/Simulated/SimulatedUpdater.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "TessaraApp/AppPlatform.h"

namespace tessara {

/// A simulated computer for the whole application: the engine's, with a disk and the services that
/// stand around a program.
class SimulatedAppHost : public SimulatedHost {
  public:
    using SimulatedHost::SimulatedHost;

    /// Where the application keeps its files.
    static constexpr const char* supportDirectory = "/home/user/.local/share/tessara";
    static constexpr const char* configPath = "/home/user/.local/share/tessara/config.json";

    /// What an application is given.
    [[nodiscard]] AppPlatform appPlatform();

    SimulatedFileSystem files;
    SimulatedUserDefaults defaults;
    SimulatedWallClock wallClock;
    SimulatedLoginItem loginItem;
    SimulatedUpdater updater;
    SimulatedDesktopShell shell;
};

}  // namespace tessara
