#include "TessaraEngine/PermissionState.h"

#include "Platform/HIDTransport.h"
#include "Platform/PermissionService.h"

namespace tessara {
namespace {

HIDPPInputMonitoringAccess toAccess(HIDListenEventAccess access) {
    switch (access) {
        case HIDListenEventAccess::granted:
            return HIDPPInputMonitoringAccess::granted;
        case HIDListenEventAccess::denied:
            return HIDPPInputMonitoringAccess::denied;
        case HIDListenEventAccess::unknown:
            break;
    }
    return HIDPPInputMonitoringAccess::unknown;
}

}  // namespace

PermissionState PermissionState::current(const PermissionService& permissions,
                                         const HIDTransport& transport) {
    return {.accessibility = permissions.isProcessTrusted(),
            .inputMonitoring = permissions.preflightListenEventAccess(),
            .hidInputMonitoring = toAccess(transport.listenEventAccess())};
}

}  // namespace tessara
