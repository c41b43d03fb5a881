#include "Platform/Linux/LinuxPermissionService.h"

#include <utility>

#include "Platform/Linux/LinuxEventTapService.h"

namespace tessara {

LinuxPermissionService::LinuxPermissionService(std::vector<InputDeviceMatch> mice,
                                               LinuxPermissionReport::System system)
    : mice_(std::move(mice)), system_(std::move(system)) {}

LinuxPermissionService::~LinuxPermissionService() = default;

LinuxPermissionReport LinuxPermissionService::report() const {
    return LinuxPermissionReport::read(mice_, system_);
}

bool LinuxPermissionService::isProcessTrusted() const {
    return report().canPost();
}

bool LinuxPermissionService::preflightListenEventAccess() const {
    return report().canListen();
}

}  // namespace tessara
