#include "TessaraEngine/PermissionState.h"

#include "HIDPlusPlus/HIDPPDevice.h"
#include "Platform/PermissionService.h"

namespace tessara {

PermissionState PermissionState::current(const PermissionService& permissions,
                                         const HIDTransport& transport) {
    return {.accessibility = permissions.isProcessTrusted(),
            .inputMonitoring = permissions.preflightListenEventAccess(),
            .hidInputMonitoring = HIDPPDevice::inputMonitoringAccess(transport)};
}

}  // namespace tessara
