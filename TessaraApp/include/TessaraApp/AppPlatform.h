#pragma once

#include <functional>
#include <string>

#include "Platform/UpdaterService.h"
#include "TessaraEngine/EnginePlatform.h"

namespace tessara {

class DesktopShell;
class FileSystem;
class LoginItemService;
class UserDefaults;
class WallClock;

/// The services of the platform that the application runs on, the engine's included. Chosen once by
/// the program; all of them outlive the application. It owns none of them and makes none.
struct AppPlatform {
    /// With the main executor, which the application and its services live on.
    EnginePlatform engine;
    /// Where the document is kept, and the pointer figures that are to be put back.
    FileSystem& files;
    /// Where the settings of this machine are kept.
    UserDefaults& defaults;
    /// For the stamps of files that are moved aside.
    const WallClock& wallClock;
    /// Whether the program starts at login.
    LoginItemService& loginItem;
    /// Finds, verifies and hands over newer versions; started by the application.
    UpdaterService& updater;
    /// Shows files and links in other programs.
    DesktopShell& shell;
    /// The program's own folder for what it keeps; need not exist. An absolute path.
    std::string supportDirectory;
    /// The version of this copy of the program.
    ProgramVersion version;
    /// Brings the program's windows to the front; empty where it has none.
    std::function<void()> activateApplication;
    /// Whether a driver of the system's sets the resolution of the mouse's wheel; empty where none
    /// does.
    std::function<bool()> systemManagesWheel = {};
};

}  // namespace tessara
