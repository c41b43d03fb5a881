#include "AppWiring/SimulatedAppHost.h"

namespace tessara {

AppPlatform SimulatedAppHost::appPlatform() {
    return {.engine = enginePlatform(),
            .files = files,
            .defaults = defaults,
            .wallClock = wallClock,
            .loginItem = loginItem,
            .updater = updater,
            .shell = shell,
            .supportDirectory = supportDirectory,
            .version = {.version = "0.1.0", .build = 1},
            .activateApplication = {}};
}

}  // namespace tessara
